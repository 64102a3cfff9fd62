#include "EntryCopy.h"

#include <linux/limits.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/Values/NSDate.h"
#include "Platform/Values/NSNumber.h"
#include "QZFoundation/NSError-QZFoundation.h"
#include "QZFoundation/NSFileManager-QZCopy.h"

namespace backup {

using namespace qz;

namespace {

constexpr std::uint32_t allForOwner = 0700;

Ref<NSDictionary> permissions(std::uint32_t bits) {
  return NSDictionary::of({{NSFilePosixPermissions, NSNumber::of(bits)}});
}

Ref<NSError> systemError(int code) { return POSIXError_description(code, nullptr); }

/// What files get with their copies. What the file system or the user may not have is left out, as
/// it is there; answers the number of any other error.
int copyExtendedAttributes(const std::string& from, const std::string& to) {
  const auto isRefused = [](int number) {
    return number == ENOTSUP || number == EPERM || number == EACCES || number == ENODATA ||
           number == EINVAL;
  };
  std::vector<char> names(XATTR_LIST_MAX);
  const ssize_t size = ::listxattr(from.c_str(), names.data(), names.size());
  if (size <= 0) return size == 0 || isRefused(errno) ? 0 : errno;
  std::vector<char> value(XATTR_SIZE_MAX);
  for (const char* name = names.data(); name < names.data() + size; name += std::strlen(name) + 1) {
    const ssize_t length = ::getxattr(from.c_str(), name, value.data(), value.size());
    const bool isCopied = length >= 0 && ::setxattr(to.c_str(), name, value.data(),
                                                    static_cast<std::size_t>(length), 0) == 0;
    if (!isCopied && !isRefused(errno)) return errno;
  }
  return 0;
}

}  // namespace

struct EntryCopy::Paths {
  Ref<NSString> from;
  Ref<NSString> to;
};

EntryCopy::Paths EntryCopy::pathsOf(NSString* entry) const {
  return {source_->stringByAppendingPathComponent(entry),
          destination_->stringByAppendingPathComponent(entry)};
}

EntryCopy::EntryCopy(NSString* source, NSString* destination, bool update)
    : manager_(currentThreadFileManager()),
      source_(source),
      destination_(destination),
      update_(update) {}

bool EntryCopy::begin() {
  if (isDirectoryAtPath(manager_, destination_)) return true;
  const auto about = manager_->fileAttributesAtPath_traverseLink(source_, true);
  isNew_ = about && createDirectoryAtPath_attributes_createParents(
                        manager_, destination_,
                        permissions(filePosixPermissions(about) | allForOwner), true);
  return isNew_;
}

Ref<NSError> EntryCopy::finish() { return isNew_ ? finishDirectory(""_ns) : nullptr; }

Ref<NSError> EntryCopy::copy(NSString* entry) {
  const Paths paths = pathsOf(entry);
  const std::uint32_t kind = objectTypeAtPath(manager_, paths.from);
  const std::uint32_t kindThere = objectTypeAtPath(manager_, paths.to);
  if (kind == QZObjectTypeDirectory) return copyDirectory(paths, kindThere);
  if (kindThere == QZObjectTypeDirectory)
    return POSIXError_description(EISDIR, "The copy has a folder in its place"_ns);
  return kind == QZObjectTypeRegularFile || kind == QZObjectTypeNone ? copyFile(paths, kindThere)
                                                                     : copyOther(paths, kindThere);
}

Ref<NSError> EntryCopy::copyDirectory(const Paths& paths, std::uint32_t kindThere) {
  const auto about = manager_->fileAttributesAtPath_traverseLink(paths.from, false);
  if (!about) return systemError(errno);
  Ref<NSError> error;
  if (kindThere == QZObjectTypeDirectory) {
    const auto there = manager_->fileAttributesAtPath_traverseLink(paths.to, false);
    const std::uint32_t bits = filePosixPermissions(there);
    if ((bits & allForOwner) != allForOwner &&
        !manager_->setAttributes_ofItemAtPath_error(permissions(bits | allForOwner), paths.to,
                                                    &error))
      return error;
  } else {
    if (kindThere != QZObjectTypeNone && !manager_->removeItemAtPath_error(paths.to, &error))
      return error;
    if (!manager_->createDirectoryAtPath_attributes(
            paths.to, permissions(filePosixPermissions(about) | allForOwner)))
      return systemError(errno);
  }
  // The walk takes a directory that it cannot read for an empty one.
  const bool isOpen =
      manager_->isReadableFileAtPath(paths.from) && manager_->isExecutableFileAtPath(paths.from);
  return isOpen ? nullptr : systemError(EACCES);
}

Ref<NSError> EntryCopy::copyFile(const Paths& paths, std::uint32_t kindThere) {
  // The careful copy would replace what a link leads to, which need not be below the destination.
  Ref<NSError> error;
  if (kindThere != QZObjectTypeNone && kindThere != QZObjectTypeRegularFile &&
      !manager_->removeItemAtPath_error(paths.to, &error))
    return error;
  if (update_ && isUnchanged(paths)) return nullptr;
  return copyPath_toPath_withOptions(manager_, paths.from, paths.to, QZCopyOverwrite);
}

Ref<NSError> EntryCopy::copyOther(const Paths& paths, std::uint32_t kindThere) {
  if (kindThere != QZObjectTypeNone) {
    if (manager_->contentsEqualAtPath_andPath(paths.from, paths.to)) return nullptr;
    Ref<NSError> error;
    if (!manager_->removeItemAtPath_error(paths.to, &error)) return error;
  }
  Ref<NSError> error;
  manager_->copyItemAtPath_toPath_error(paths.from, paths.to, &error);
  return error;
}

bool EntryCopy::isUnchanged(const Paths& paths) const {
  const auto from = manager_->fileAttributesAtPath_traverseLink(paths.from, false);
  const auto to = manager_->fileAttributesAtPath_traverseLink(paths.to, false);
  return from && to && fileSize(from) == fileSize(to) &&
         filePosixPermissions(from) == filePosixPermissions(to) &&
         equal(from->fileModificationDate(), to->fileModificationDate());
}

Ref<NSError> EntryCopy::finishDirectory(NSString* entry) {
  const auto [from, to] = pathsOf(entry);
  if (!isDirectoryAtPath_traverseLink(manager_, from, false) ||
      !isDirectoryAtPath_traverseLink(manager_, to, false))
    return nullptr;
  const auto about = manager_->fileAttributesAtPath_traverseLink(from, false);
  if (!about) return systemError(errno);
  if (const int number =
          copyExtendedAttributes(from->fileSystemRepresentation(), to->fileSystemRepresentation()))
    return systemError(number);
  auto kept = NSMutableDictionary::dictionary();
  const auto keep = [&](NSString* key) {
    if (const auto value = about->objectForKey(key)) kept->setObject_forKey(value, key);
  };
  keep(NSFilePosixPermissions);
  keep(NSFileModificationDate);
  if (::geteuid() == 0) {
    keep(NSFileOwnerAccountID);
    keep(NSFileGroupOwnerAccountID);
  }
  Ref<NSError> error;
  manager_->setAttributes_ofItemAtPath_error(kept, to, &error);
  return error;
}

Ref<NSError> EntryCopy::verify(NSString* entry) {
  const auto [from, to] = pathsOf(entry);
  const std::uint32_t kindThere = objectTypeAtPath(manager_, to);
  if (kindThere == QZObjectTypeNone) return errorWithDescription("There is no copy"_ns);
  const std::uint32_t kind = objectTypeAtPath(manager_, from);
  if (kind != kindThere) return errorWithDescription("The copy is of another kind"_ns);
  if (kind == QZObjectTypeDirectory) return nullptr;
  errno = 0;
  if (manager_->contentsEqualAtPath_andPath(from, to)) return nullptr;
  return errno != 0 ? systemError(errno) : errorWithDescription("The copy differs"_ns);
}

}  // namespace backup
