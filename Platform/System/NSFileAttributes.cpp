#include "Platform/System/NSFileAttributes.h"

#include "Platform/Runtime/Describe.h"
#include "Platform/Values/NSNumber.h"

namespace qz {
namespace {

template <class T>
Ref<T> attribute(NSDictionary* attributes, NSString* key) {
  return attributes == nullptr ? nullptr : as<T>(attributes->objectForKey(key));
}

std::uint64_t number(NSDictionary* attributes, NSString* key) {
  const Ref<NSNumber> value = attribute<NSNumber>(attributes, key);
  return value ? value->unsignedLongLongValue() : 0;
}

}  // namespace

std::uint64_t fileSize(NSDictionary* self) { return number(self, NSFileSize); }

Ref<NSString> fileType(NSDictionary* self) { return attribute<NSString>(self, NSFileType); }

Ref<NSDate> fileCreationDate(NSDictionary* self) {
  return attribute<NSDate>(self, NSFileCreationDate);
}

std::uint32_t filePosixPermissions(NSDictionary* self) {
  return static_cast<std::uint32_t>(number(self, NSFilePosixPermissions));
}

std::uint32_t fileOwnerAccountID(NSDictionary* self) {
  return static_cast<std::uint32_t>(number(self, NSFileOwnerAccountID));
}

Ref<NSString> fileOwnerAccountName(NSDictionary* self) {
  return attribute<NSString>(self, NSFileOwnerAccountName);
}

std::uint32_t fileGroupOwnerAccountID(NSDictionary* self) {
  return static_cast<std::uint32_t>(number(self, NSFileGroupOwnerAccountID));
}

Ref<NSString> fileGroupOwnerAccountName(NSDictionary* self) {
  return attribute<NSString>(self, NSFileGroupOwnerAccountName);
}

void detail::registerFileAttributes() {
  extend<NSDictionary>("NSFileAttributes")
      .method<&fileSize>("fileSize")
      .method<&fileType>("fileType")
      .method<&fileCreationDate>("fileCreationDate")
      .method<&filePosixPermissions>("filePosixPermissions")
      .method<&fileOwnerAccountID>("fileOwnerAccountID")
      .method<&fileOwnerAccountName>("fileOwnerAccountName")
      .method<&fileGroupOwnerAccountID>("fileGroupOwnerAccountID")
      .method<&fileGroupOwnerAccountName>("fileGroupOwnerAccountName");
}

}  // namespace qz
