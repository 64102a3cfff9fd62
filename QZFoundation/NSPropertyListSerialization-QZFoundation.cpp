#include "QZFoundation/NSPropertyListSerialization-QZFoundation.h"

#include "Platform/Collections/NSDictionary.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Values/NSData.h"
#include "QZFoundation/NSError-QZFoundation.h"
#include "QZFoundation/QZFunctions.h"

namespace qz {
namespace {

void store(Ref<NSError>* place, Ref<NSError> error) {
  if (place != nullptr) *place = std::move(error);
}

Ref<NSData> serialized(NSObject* list, NSPropertyListFormat format, Ref<NSString>& problem) {
  return NSPropertyListSerialization::dataFromPropertyList_format_errorDescription(list, format,
                                                                                   &problem);
}

Ref<NSError> write(NSData* data, NSString* path, std::uint32_t options) {
  Ref<NSError> error;
  data->writeToFile_options_error(path, options, &error);
  return error;
}

}  // namespace

Ref<NSObject> propertyListFromFile_mutabilityOptions_format_error(NSString* path,
                                                                  std::uint32_t mutability,
                                                                  NSPropertyListFormat* format,
                                                                  Ref<NSError>* error) {
  Ref<NSError> failure;
  const Ref<NSData> data = NSData::initWithContentsOfFile_options_error(path, 0, &failure);
  Ref<NSObject> list;
  if (!failure) {
    Ref<NSString> problem;
    list =
        NSPropertyListSerialization::propertyListFromData_mutabilityOption_format_errorDescription(
            data, mutability, format, &problem);
    if (problem)
      failure = errorWithDescription(
          QZLocalizedString("A property list could not be read from the file %@ (%@)"_ns,
                            "Property list reading error"_ns, path, problem));
  }
  store(error, failure);
  return list;
}

Ref<NSError> writePropertyList_toFile_format(NSObject* propertyList, NSString* path,
                                             NSPropertyListFormat format) {
  Ref<NSString> problem;
  const Ref<NSData> data = serialized(propertyList, format, problem);
  if (problem)
    return errorWithDescription(QZLocalizedString("Could not create property list data. (%@)"_ns,
                                                  "Property list writing error"_ns, problem));
  return write(data, path, NSDataWritingAtomic);
}

bool writeToFile_atomically_error(NSDictionary* self, NSString* path, bool atomically,
                                  Ref<NSError>* error) {
  Ref<NSString> problem;
  const Ref<NSData> data = serialized(self, NSPropertyListXMLFormat, problem);
  const Ref<NSError> failure =
      problem ? errorWithDescription(QZLocalizedString("Could not create XML for dictionary: %@"_ns,
                                                       "Dictionary file writing error message"_ns,
                                                       problem))
              : write(data, path, atomically ? std::uint32_t{NSDataWritingAtomic} : 0);
  store(error, failure);
  return failure == nullptr;
}

void detail::registerNSPropertyListSerializationQZFoundation() {
  extend<NSPropertyListSerialization>("QZFoundation")
      .classMethod<&propertyListFromFile_mutabilityOptions_format_error>(
          "propertyListFromFile:mutabilityOptions:format:error:")
      .classMethod<&writePropertyList_toFile_format>("writePropertyList:toFile:format:");
  extend<NSDictionary>("QZFoundation")
      .method<&writeToFile_atomically_error>("writeToFile:atomically:error:");
}

}  // namespace qz
