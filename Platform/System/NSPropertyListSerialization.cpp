#include "Platform/System/NSPropertyListSerialization.h"

#include <string>

#include "Platform/Collections/NSDictionary.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/System/detail/PropertyListReader.h"
#include "Platform/System/detail/PropertyListWalk.h"
#include "Platform/System/detail/PropertyListWriters.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/NSError.h"
#include "Platform/Values/NSString.h"

namespace qz {
namespace {

Ref<NSObject> read(NSData* data, std::uint32_t mutability, NSPropertyListFormat* format,
                   std::string& problem) {
  if (data == nullptr) {
    problem = "there is no data";
    return nullptr;
  }
  NSPropertyListFormat found;
  detail::PropertyListFault fault;
  const detail::OldStyleOptions options{mutability, /*isTable=*/false};
  Ref<NSObject> list = detail::readPropertyList(data->view(), options, &found, &fault);
  if (format != nullptr) *format = found;
  if (!list) problem = fault.text();
  return list;
}

Ref<NSData> write(NSObject* list, NSPropertyListFormat format, std::string& problem) {
  try {
    switch (format) {
      case NSPropertyListXMLFormat:
        return detail::writeXmlPropertyList(list);
      case NSPropertyListBinaryFormat:
        return detail::writeBinaryPropertyList(list);
      case NSPropertyListOldStyleFormat:
        return detail::writeOldStylePropertyList(list);
    }
    problem = "there is no property-list format " + std::to_string(format);
  } catch (const detail::PropertyListRefusal& refusal) {
    problem = refusal.reason;
  } catch (const Raised& raised) {
    // More bytes than Data can have is something that the list brings about, not its caller.
    if (!raised.is(NSMallocException)) throw;
    problem = raised->reason()->UTF8String();
  }
  return nullptr;
}

void tell(Ref<NSString>* description, const std::string& problem) {
  if (description == nullptr) return;
  *description = problem.empty() ? nullptr : NSString::stringWithUTF8String(problem);
}

void tell(Ref<NSError>* error, std::int32_t code, const std::string& problem) {
  if (error == nullptr || problem.empty()) return;
  *error = NSError::errorWithDomain_code_userInfo(
      NSCocoaErrorDomain, code,
      NSDictionary::dictionaryWithObject_forKey(NSString::stringWithUTF8String(problem),
                                                NSLocalizedDescriptionKey));
}

}  // namespace

void NSPropertyListSerialization::describe(ClassDescription<NSPropertyListSerialization>& is) {
  using Self = NSPropertyListSerialization;
  is.named("NSPropertyListSerialization")
      .classMethod<&Self::propertyListFromData_mutabilityOption_format_errorDescription>(
          "propertyListFromData:mutabilityOption:format:errorDescription:")
      .classMethod<&Self::dataFromPropertyList_format_errorDescription>(
          "dataFromPropertyList:format:errorDescription:")
      .classMethod<&Self::propertyListWithData_options_format_error>(
          "propertyListWithData:options:format:error:")
      .classMethod<&Self::dataWithPropertyList_format_options_error>(
          "dataWithPropertyList:format:options:error:")
      .classMethod<&Self::propertyList_isValidForFormat>("propertyList:isValidForFormat:");
}

Ref<NSObject>
NSPropertyListSerialization::propertyListFromData_mutabilityOption_format_errorDescription(
    NSData* data, std::uint32_t mutabilityOption, NSPropertyListFormat* format,
    Ref<NSString>* errorDescription) {
  std::string problem;
  Ref<NSObject> list = read(data, mutabilityOption, format, problem);
  tell(errorDescription, problem);
  return list;
}

Ref<NSData> NSPropertyListSerialization::dataFromPropertyList_format_errorDescription(
    NSObject* propertyList, NSPropertyListFormat format, Ref<NSString>* errorDescription) {
  std::string problem;
  Ref<NSData> data = write(propertyList, format, problem);
  tell(errorDescription, problem);
  return data;
}

Ref<NSObject> NSPropertyListSerialization::propertyListWithData_options_format_error(
    NSData* data, std::uint32_t mutabilityOption, NSPropertyListFormat* format,
    Ref<NSError>* error) {
  std::string problem;
  Ref<NSObject> list = read(data, mutabilityOption, format, problem);
  tell(error, NSPropertyListReadCorruptError, problem);
  return list;
}

Ref<NSData> NSPropertyListSerialization::dataWithPropertyList_format_options_error(
    NSObject* propertyList, NSPropertyListFormat format, std::uint32_t /*options*/,
    Ref<NSError>* error) {
  std::string problem;
  Ref<NSData> data = write(propertyList, format, problem);
  tell(error, NSPropertyListWriteInvalidError, problem);
  return data;
}

bool NSPropertyListSerialization::propertyList_isValidForFormat(NSObject* propertyList,
                                                                NSPropertyListFormat format) {
  std::string problem;
  return write(propertyList, format, problem) != nullptr;
}

}  // namespace qz
