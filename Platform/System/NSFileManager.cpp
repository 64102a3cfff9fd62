// File managers: asking and listing. NSFileManagerChanges.cpp has what changes something.
#include "Platform/System/NSFileManager.h"

#include <vector>

#include "Platform/Collections/NSArray.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/System/detail/DirectoryReader.h"
#include "Platform/System/detail/FileAttributes.h"
#include "Platform/System/detail/FileErrors.h"
#include "Platform/System/detail/PathBytes.h"
#include "Platform/System/detail/TreeComparison.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/NSPathUtilities.h"
#include "Platform/Values/detail/ClassicPath.h"

namespace qz {

using detail::PathBytes;
using detail::putError;
namespace os = detail::os;

namespace {

bool canAccess(NSString* path, int mode) {
  const PathBytes bytes(path);
  errno = bytes.error();
  return errno == 0 && os::access(bytes.c_str(), mode) == 0;
}

}  // namespace

Ref<NSFileManager> NSFileManager::defaultManager() {
  static NSFileManager* const manager = make<NSFileManager>().leak();
  return Ref<NSFileManager>(manager);
}

// Asking ------------------------------------------------------------------------------------------

bool NSFileManager::fileExistsAtPath(NSString* path) const {
  return fileExistsAtPath_isDirectory(path, nullptr);
}

bool NSFileManager::fileExistsAtPath_isDirectory(NSString* path, bool* isDirectory) const {
  const PathBytes bytes(path);
  struct ::statx about;
  errno = bytes.error();
  const bool exists = errno == 0 && os::statx(AT_FDCWD, bytes.c_str(), 0, STATX_TYPE, &about) == 0;
  if (isDirectory != nullptr) *isDirectory = exists && S_ISDIR(about.stx_mode);
  return exists;
}

bool NSFileManager::isReadableFileAtPath(NSString* path) const { return canAccess(path, R_OK); }

bool NSFileManager::isWritableFileAtPath(NSString* path) const { return canAccess(path, W_OK); }

bool NSFileManager::isExecutableFileAtPath(NSString* path) const { return canAccess(path, X_OK); }

Ref<NSDictionary> NSFileManager::fileAttributesAtPath_traverseLink(NSString* path,
                                                                   bool follow) const {
  const PathBytes bytes(path);
  errno = bytes.error();
  return errno == 0 ? detail::attributesOfFile(bytes.c_str(), follow) : nullptr;
}

Ref<NSDictionary> NSFileManager::attributesOfItemAtPath_error(NSString* path,
                                                              Ref<NSError>* error) const {
  auto attributes = fileAttributesAtPath_traverseLink(path, false);
  if (!attributes) putError(error, path, errno);
  return attributes;
}

Ref<NSString> NSFileManager::pathContentOfSymbolicLinkAtPath(NSString* path) const {
  const PathBytes bytes(path);
  errno = bytes.error();
  if (errno != 0) return nullptr;
  std::vector<char> text(256);
  for (;;) {
    const ssize_t size = os::readlinkat(AT_FDCWD, bytes.c_str(), text.data(), text.size());
    if (size < 0) return nullptr;
    const std::string_view destination(text.data(), static_cast<std::size_t>(size));
    if (destination.size() < text.size())
      return NSString::stringWithFileSystemRepresentation(destination);
    text.resize(text.size() * 2);
  }
}

Ref<NSString> NSFileManager::destinationOfSymbolicLinkAtPath_error(NSString* path,
                                                                   Ref<NSError>* error) const {
  auto destination = pathContentOfSymbolicLinkAtPath(path);
  if (!destination) putError(error, path, errno);
  return destination;
}

bool NSFileManager::contentsEqualAtPath_andPath(NSString* path, NSString* other) const {
  const PathBytes first(path);
  const PathBytes second(other);
  if (first.error() != 0 || second.error() != 0) return false;
  return detail::haveEqualContents(std::string(first.view()), std::string(second.view()));
}

// Listing -----------------------------------------------------------------------------------------

Ref<NSArray> NSFileManager::directoryContentsAtPath(NSString* path) const {
  const PathBytes bytes(path);
  errno = bytes.error();
  if (errno != 0) return nullptr;
  detail::Descriptor folder(
      os::openat(AT_FDCWD, bytes.c_str(), O_RDONLY | O_DIRECTORY | O_NONBLOCK));
  if (!folder) return nullptr;
  std::vector<Ref<NSString>> names;
  detail::DirectoryReader reader(std::move(folder));
  while (const auto* entry = reader.next())
    names.push_back(NSString::stringWithFileSystemRepresentation(entry->name()));
  errno = reader.error();
  return errno == 0 ? NSArray::fromRange(names) : nullptr;
}

Ref<NSArray> NSFileManager::contentsOfDirectoryAtPath_error(NSString* path,
                                                            Ref<NSError>* error) const {
  auto names = directoryContentsAtPath(path);
  if (!names) putError(error, path, errno);
  return names;
}

Ref<NSDirectoryEnumerator> NSFileManager::enumeratorAtPath(NSString* path) const {
  return NSDirectoryEnumerator::enumeratorAtPath(path);
}

Ref<NSArray> NSFileManager::subpathsAtPath(NSString* path) const {
  auto entries = enumeratorAtPath(path);
  return entries ? entries->allObjects() : nullptr;
}

// For people --------------------------------------------------------------------------------------

Ref<NSArray> NSFileManager::componentsToDisplayForPath(NSString* path) const {
  const PathBytes bytes(path);
  struct ::statx about;
  if (bytes.error() != 0 ||
      os::statx(AT_FDCWD, bytes.c_str(), AT_SYMLINK_NOFOLLOW, STATX_TYPE, &about) != 0)
    return nullptr;
  Ref<NSString> absolute(path);
  if (!path->isAbsolutePath()) {
    absolute = currentDirectoryPath();
    if (!absolute) return nullptr;
    absolute = absolute->stringByAppendingPathComponent(path);
  }
  const auto classic = detail::classicFromPosixPath(absolute->stringByStandardizingPath()->view(),
                                                    NSStartupVolumeName()->view());
  if (!classic) return nullptr;
  std::u16string_view text = *classic;
  if (text.ends_with(u':')) text.remove_suffix(1);
  return NSString::stringWithCharacters(text)->componentsSeparatedByString(":"_ns);
}

Ref<NSString> NSFileManager::displayNameAtPath(NSString* path) const {
  if (auto components = componentsToDisplayForPath(path))
    return as<NSString>(components->lastObject());
  return path == nullptr ? NSString::string() : path->lastPathComponent();
}

// The current directory ---------------------------------------------------------------------------

Ref<NSString> NSFileManager::currentDirectoryPath() const {
  std::vector<char> text(1024);
  while (::getcwd(text.data(), text.size()) == nullptr) {
    if (errno != ERANGE) return nullptr;
    text.resize(text.size() * 2);
  }
  return NSString::stringWithFileSystemRepresentation(text.data());
}

bool NSFileManager::changeCurrentDirectoryPath(NSString* path) {
  const PathBytes bytes(path);
  errno = bytes.error();
  return errno == 0 && ::chdir(bytes.c_str()) == 0;
}

// The class ---------------------------------------------------------------------------------------

void NSFileManager::describe(ClassDescription<NSFileManager>& is) {
  using Self = NSFileManager;
  is.named("NSFileManager")
      .classMethod<&Self::defaultManager>("defaultManager")
      .method<&Self::fileExistsAtPath>("fileExistsAtPath:")
      .method<&Self::fileExistsAtPath_isDirectory>("fileExistsAtPath:isDirectory:")
      .method<&Self::isReadableFileAtPath>("isReadableFileAtPath:")
      .method<&Self::isWritableFileAtPath>("isWritableFileAtPath:")
      .method<&Self::isExecutableFileAtPath>("isExecutableFileAtPath:")
      .method<&Self::fileAttributesAtPath_traverseLink>("fileAttributesAtPath:traverseLink:")
      .method<&Self::attributesOfItemAtPath_error>("attributesOfItemAtPath:error:")
      .method<&Self::destinationOfSymbolicLinkAtPath_error>(
          "destinationOfSymbolicLinkAtPath:error:")
      .method<&Self::pathContentOfSymbolicLinkAtPath>("pathContentOfSymbolicLinkAtPath:")
      .method<&Self::contentsEqualAtPath_andPath>("contentsEqualAtPath:andPath:")
      .method<&Self::directoryContentsAtPath>("directoryContentsAtPath:")
      .method<&Self::contentsOfDirectoryAtPath_error>("contentsOfDirectoryAtPath:error:")
      .method<&Self::enumeratorAtPath>("enumeratorAtPath:")
      .method<&Self::subpathsAtPath>("subpathsAtPath:")
      .method<&Self::createDirectoryAtPath_attributes>("createDirectoryAtPath:attributes:")
      .method<&Self::createDirectoryAtPath_withIntermediateDirectories_attributes_error>(
          "createDirectoryAtPath:withIntermediateDirectories:attributes:error:")
      .method<&Self::createFileAtPath_contents_attributes>("createFileAtPath:contents:attributes:")
      .method<&Self::createSymbolicLinkAtPath_withDestinationPath_error>(
          "createSymbolicLinkAtPath:withDestinationPath:error:")
      .method<&Self::createSymbolicLinkAtPath_pathContent>("createSymbolicLinkAtPath:pathContent:")
      .method<&Self::copyPath_toPath_handler>("copyPath:toPath:handler:")
      .method<&Self::copyItemAtPath_toPath_error>("copyItemAtPath:toPath:error:")
      .method<&Self::movePath_toPath_handler>("movePath:toPath:handler:")
      .method<&Self::moveItemAtPath_toPath_error>("moveItemAtPath:toPath:error:")
      .method<&Self::linkPath_toPath_handler>("linkPath:toPath:handler:")
      .method<&Self::linkItemAtPath_toPath_error>("linkItemAtPath:toPath:error:")
      .method<&Self::removeFileAtPath_handler>("removeFileAtPath:handler:")
      .method<&Self::removeItemAtPath_error>("removeItemAtPath:error:")
      .method<&Self::changeFileAttributes_atPath>("changeFileAttributes:atPath:")
      .method<&Self::setAttributes_ofItemAtPath_error>("setAttributes:ofItemAtPath:error:")
      .method<&Self::componentsToDisplayForPath>("componentsToDisplayForPath:")
      .method<&Self::displayNameAtPath>("displayNameAtPath:")
      .method<&Self::currentDirectoryPath>("currentDirectoryPath")
      .method<&Self::changeCurrentDirectoryPath>("changeCurrentDirectoryPath:");
}

}  // namespace qz
