// Arrays and Dictionaries: from property-list files and into them.
#include "Platform/System/detail/PropertyListFiles.h"
#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/System/NSPropertyListSerialization.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/NSString.h"

namespace qz {
namespace {

template <class T>
Ref<T> contentsOf(NSString* path, NSPropertyListMutabilityOptions mutability) {
  const Ref<NSData> data = NSData::dataWithContentsOfFile(path);
  if (!data) return nullptr;
  return as<T>(
      NSPropertyListSerialization::propertyListFromData_mutabilityOption_format_errorDescription(
          data, mutability, nullptr, nullptr));
}

bool write(NSObject* list, NSString* path, bool atomically) {
  const Ref<NSData> data =
      NSPropertyListSerialization::dataFromPropertyList_format_errorDescription(
          list, NSPropertyListXMLFormat, nullptr);
  return data && data->writeToFile_atomically(path, atomically);
}

// By Selector the receiving class says which kind is wanted.

Ref<NSDictionary> dictionaryOfFile(Class* aClass, NSString* path) {
  if (aClass->isSubclassOfClass(classOf<NSMutableDictionary>()))
    return NSMutableDictionary::dictionaryWithContentsOfFile(path);
  return NSDictionary::dictionaryWithContentsOfFile(path);
}

Ref<NSArray> arrayOfFile(Class* aClass, NSString* path) {
  if (aClass->isSubclassOfClass(classOf<NSMutableArray>()))
    return NSMutableArray::arrayWithContentsOfFile(path);
  return NSArray::arrayWithContentsOfFile(path);
}

}  // namespace

Ref<NSDictionary> NSDictionary::dictionaryWithContentsOfFile(NSString* path) {
  return contentsOf<NSDictionary>(path, NSPropertyListImmutable);
}
Ref<NSDictionary> NSDictionary::initWithContentsOfFile(NSString* path) {
  return dictionaryWithContentsOfFile(path);
}
Ref<NSMutableDictionary> NSMutableDictionary::dictionaryWithContentsOfFile(NSString* path) {
  return contentsOf<NSMutableDictionary>(path, NSPropertyListMutableContainers);
}
Ref<NSMutableDictionary> NSMutableDictionary::initWithContentsOfFile(NSString* path) {
  return dictionaryWithContentsOfFile(path);
}
bool NSDictionary::writeToFile_atomically(NSString* path, bool atomically) const {
  return write(const_cast<NSDictionary*>(this), path, atomically);
}

Ref<NSArray> NSArray::arrayWithContentsOfFile(NSString* path) {
  return contentsOf<NSArray>(path, NSPropertyListImmutable);
}
Ref<NSArray> NSArray::initWithContentsOfFile(NSString* path) {
  return arrayWithContentsOfFile(path);
}
Ref<NSMutableArray> NSMutableArray::arrayWithContentsOfFile(NSString* path) {
  return contentsOf<NSMutableArray>(path, NSPropertyListMutableContainers);
}
Ref<NSMutableArray> NSMutableArray::initWithContentsOfFile(NSString* path) {
  return arrayWithContentsOfFile(path);
}
bool NSArray::writeToFile_atomically(NSString* path, bool atomically) const {
  return write(const_cast<NSArray*>(this), path, atomically);
}

void detail::describePropertyListFiles() {
  extend<NSDictionary>("PropertyLists")
      .classMethod<&dictionaryOfFile>("dictionaryWithContentsOfFile:")
      .initializer<&NSDictionary::initWithContentsOfFile>("initWithContentsOfFile:")
      .method<&NSDictionary::writeToFile_atomically>("writeToFile:atomically:");
  extend<NSMutableDictionary>("PropertyLists")
      .initializer<&NSMutableDictionary::initWithContentsOfFile>("initWithContentsOfFile:");
  extend<NSArray>("PropertyLists")
      .classMethod<&arrayOfFile>("arrayWithContentsOfFile:")
      .initializer<&NSArray::initWithContentsOfFile>("initWithContentsOfFile:")
      .method<&NSArray::writeToFile_atomically>("writeToFile:atomically:");
  extend<NSMutableArray>("PropertyLists")
      .initializer<&NSMutableArray::initWithContentsOfFile>("initWithContentsOfFile:");
}

}  // namespace qz
