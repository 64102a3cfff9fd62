#include "QZFoundation/NSFileManager-QZFoundation.h"

#include <climits>
#include <vector>

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/Concurrency/NSThread.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/System/detail/PathBytes.h"
#include "Platform/Values/detail/SystemCalls.h"
#include "QZFoundation/NSArray-QZFoundation.h"
#include "QZFoundation/NSError-QZFoundation.h"
#include "QZFoundation/NSString-QZFoundation.h"
#include "QZFoundation/QZFileManagerErrorHandler.h"
#include "QZFoundation/QZFunctions.h"
#include "QZFoundation/detail/DirectoryWalk.h"
#include "QZFoundation/detail/FileMessages.h"
#include "QZFoundation/detail/LibraryBundle.h"

namespace qz {

using detail::PathBytes;
namespace os = detail::os;

// The manager of a thread -------------------------------------------------------------------------

Ref<NSFileManager> currentThreadFileManager() {
  NSString* const key = "QZCurrentThreadFileManagerKey"_ns;
  const Ref<NSMutableDictionary> dictionary = NSThread::currentThread()->threadDictionary();
  if (auto manager = as<NSFileManager>(dictionary->objectForKey(key))) return manager;
  auto manager = make<NSFileManager>();
  dictionary->setObject_forKey(manager, key);
  return manager;
}

Ref<NSString> displayPathForPath(NSFileManager* self, NSString* path) {
  if (!self->respondsToSelector("componentsToDisplayForPath:"_sel)) return Ref<NSString>(path);
  const Ref<NSArray> components = self->componentsToDisplayForPath(path);
  if (!components) return Ref<NSString>(path);
  return POSIXPathFromCarbonPath(components->componentsJoinedByString(":"_ns));
}

// Types and sizes ---------------------------------------------------------------------------------

namespace {

std::uint32_t typeOf(unsigned int mode) {
  switch (mode & S_IFMT) {
    case S_IFREG:
      return QZObjectTypeRegularFile;
    case S_IFDIR:
      return QZObjectTypeDirectory;
    case S_IFBLK:
      return QZObjectTypeBlockDevice;
    case S_IFCHR:
      return QZObjectTypeCharacterDevice;
    case S_IFLNK:
      return QZObjectTypeSymbolicLink;
    case S_IFSOCK:
      return QZObjectTypeSocket;
    case S_IFIFO:
      return QZObjectTypeNamedPipe;
    default:
      return QZObjectTypeBad;
  }
}

bool statusOfRegularFile(NSString* path, unsigned int mask, struct ::statx& about) {
  const PathBytes bytes(path);
  return bytes.error() == 0 &&
         os::statx(AT_FDCWD, bytes.c_str(), AT_SYMLINK_NOFOLLOW, STATX_TYPE | mask, &about) == 0 &&
         S_ISREG(about.stx_mode);
}

}  // namespace

std::uint32_t objectTypeAtPath_traverseLink(NSFileManager*, NSString* path, bool traverse) {
  const PathBytes bytes(path);
  if (bytes.error() != 0) return QZObjectTypeNone;
  struct ::statx about;
  const int flags = traverse ? 0 : AT_SYMLINK_NOFOLLOW;
  if (os::statx(AT_FDCWD, bytes.c_str(), flags, STATX_TYPE, &about) != 0) return QZObjectTypeNone;
  return typeOf(about.stx_mode);
}

std::uint32_t objectTypeAtPath(NSFileManager* self, NSString* path) {
  return objectTypeAtPath_traverseLink(self, path, false);
}

bool isDirectoryAtPath_traverseLink(NSFileManager* self, NSString* path, bool traverse) {
  return objectTypeAtPath_traverseLink(self, path, traverse) == QZObjectTypeDirectory;
}

bool isDirectoryAtPath(NSFileManager* self, NSString* path) {
  return isDirectoryAtPath_traverseLink(self, path, true);
}

std::uint64_t totalSizeOfFileAtPath(NSFileManager*, NSString* path) {
  struct ::statx about;
  return statusOfRegularFile(path, STATX_SIZE, about) ? about.stx_size : 0;
}

std::uint64_t dataForkSizeOfFileAtPath(NSFileManager* self, NSString* path) {
  return totalSizeOfFileAtPath(self, path);
}

std::uint64_t physicalSizeOfFileAtPath(NSFileManager*, NSString* path) {
  constexpr std::uint64_t blockSize = 512;
  struct ::statx about;
  return statusOfRegularFile(path, STATX_BLOCKS, about) ? about.stx_blocks * blockSize : 0;
}

// Making, removing, moving ------------------------------------------------------------------------

namespace {

// The directories above `path` that are missing, the highest first. The empty path is the current
// directory, which is always there.
std::vector<Ref<NSString>> missingParents(NSFileManager* manager, NSString* path) {
  std::vector<Ref<NSString>> missing;
  Ref<NSString> parent = path->stringByDeletingLastPathComponent();
  while (parent->length() != 0 && !manager->fileExistsAtPath(parent)) {
    missing.insert(missing.begin(), parent);
    parent = parent->stringByDeletingLastPathComponent();
  }
  return missing;
}

// A path that the system would not take makes no parents.
bool isTooLong(NSString* path) {
  if (PathBytes(path).view().size() < PATH_MAX) return false;
  errno = ENAMETOOLONG;
  return true;
}

Ref<NSError> notCreated(NSString* path) {
  return POSIXError_description(errno, detail::message("Could not create directory at %@"_ns,
                                                       "Directory creation error"_ns, path));
}

}  // namespace

bool createDirectoryAtPath_attributes_createParents(NSFileManager* self, NSString* path,
                                                    NSDictionary* attributes, bool createParents) {
  if (createParents && path != nullptr) {
    if (isTooLong(path)) return false;
    for (const Ref<NSString>& parent : missingParents(self, path))
      if (!self->createDirectoryAtPath_attributes(parent, attributes)) return false;
  }
  return self->createDirectoryAtPath_attributes(path, attributes);
}

Ref<NSError> createDirectoryAtPath(NSFileManager* self, NSString* path) {
  if (path == nullptr) path = ""_ns;
  if (isTooLong(path)) return notCreated(path);
  for (const Ref<NSString>& parent : missingParents(self, path))
    if (!self->createDirectoryAtPath_attributes(parent, nullptr)) return notCreated(parent);
  return self->createDirectoryAtPath_attributes(path, nullptr) ? nullptr : notCreated(path);
}

Ref<NSError> removeFileAtPath(NSFileManager* self, NSString* path) {
  const auto handler = QZFileManagerErrorHandler::sharedHandler();
  self->removeFileAtPath_handler(path, handler);
  return handler->lastError();
}

Ref<NSError> movePath_toPath(NSFileManager* self, NSString* path, NSString* destination) {
  const auto handler = QZFileManagerErrorHandler::sharedHandler();
  self->movePath_toPath_handler(path, destination, handler);
  const Ref<NSError> error = handler->lastError();
  if (!error) return nullptr;
  return detail::reworded(
      error, detail::message("Unable to move from %@ to %@ (%@)"_ns, "File move error message"_ns,
                             path, destination, detail::descriptionOf(error)));
}

Ref<NSError> linkPath_toPath(NSFileManager* self, NSString* path, NSString* destination) {
  if (self->respondsToSelector("linkItemAtPath:toPath:error:"_sel)) {
    Ref<NSError> error;
    self->linkItemAtPath_toPath_error(path, destination, &error);
    return error;
  }
  const auto handler = QZFileManagerErrorHandler::sharedHandler();
  self->linkPath_toPath_handler(path, destination, handler);
  const Ref<NSError> error = handler->lastError();
  if (!error) return nullptr;
  // Deliberate: the text is that of a table named like the comment, and what the placeholders show
  // begins with the destination, so that nothing is left for the third.
  return detail::reworded(
      error, QZLocalizedStringFromTableInBundle(
                 "Could not link %@ to %@ (%@)"_ns, "Hard link error message"_ns,
                 detail::libraryBundle(), path, destination, detail::descriptionOf(error), ""_ns));
}

// Dates -------------------------------------------------------------------------------------------

Ref<NSError> touchFileAtPath(NSFileManager* self, NSString* path) {
  const auto attributes =
      NSDictionary::dictionaryWithObject_forKey(NSDate::date(), NSFileModificationDate);
  if (self->changeFileAttributes_atPath(attributes, path)) return nullptr;
  const int number = errno;
  const auto text = detail::message("Could not change mod date of flie at %@"_ns,
                                    "File touch error message"_ns, path);
  errno = number;
  return errnoError_description(-1, text);
}

Ref<NSError> setCreationDate_forFileAtPath(NSFileManager* self, NSDate* date, NSString* path) {
  errno = EINVAL;
  const bool isSet = date != nullptr &&
                     self->changeFileAttributes_atPath(
                         NSDictionary::dictionaryWithObject_forKey(date, NSFileCreationDate), path);
  if (isSet) return nullptr;
  const int number = errno;
  return POSIXError_description(number,
                                QZLocalizedString("Could not set creation date for file %@"_ns,
                                                  "Creation date setter error message"_ns, path));
}

// Directories -------------------------------------------------------------------------------------

Ref<NSArray> pathsOfDirectoryContentsAtPath(NSFileManager* self, NSString* path) {
  const Ref<NSArray> names = self->directoryContentsAtPath(path);
  if (!names) return nullptr;
  return arrayByPerformingSelector_object(names, "stringByPrependingPathComponent:"_sel, path);
}

Ref<NSObject> iterateDirectory_recursionType_target_selector_withObject(
    NSFileManager*, NSString* directory, std::int32_t type, NSObject* target, Selector operation,
    NSObject* object) {
  return detail::DirectoryWalk(type, target, operation, object).run(directory);
}

Ref<NSObject> iterateDirectory_recursively_target_selector_withObject(
    NSFileManager* self, NSString* directory, bool recursively, NSObject* target,
    Selector operation, NSObject* object) {
  return iterateDirectory_recursionType_target_selector_withObject(
      self, directory, recursively ? QZRecursionFolderFirst : QZRecursionNone, target, operation,
      object);
}

// The extension -----------------------------------------------------------------------------------

void detail::registerNSFileManagerQZFoundation() {
  extend<NSFileManager>("QZFoundation")
      .classMethod<&currentThreadFileManager>("currentThreadFileManager")
      .method<&displayPathForPath>("displayPathForPath:")
      .method<&objectTypeAtPath_traverseLink>("objectTypeAtPath:traverseLink:")
      .method<&objectTypeAtPath>("objectTypeAtPath:")
      .method<&isDirectoryAtPath_traverseLink>("isDirectoryAtPath:traverseLink:")
      .method<&isDirectoryAtPath>("isDirectoryAtPath:")
      .method<&totalSizeOfFileAtPath>("totalSizeOfFileAtPath:")
      .method<&dataForkSizeOfFileAtPath>("dataForkSizeOfFileAtPath:")
      .method<&physicalSizeOfFileAtPath>("physicalSizeOfFileAtPath:")
      .method<&createDirectoryAtPath_attributes_createParents>(
          "createDirectoryAtPath:attributes:createParents:")
      .method<&createDirectoryAtPath>("createDirectoryAtPath:")
      .method<&removeFileAtPath>("removeFileAtPath:")
      .method<&movePath_toPath>("movePath:toPath:")
      .method<&linkPath_toPath>("linkPath:toPath:")
      .method<&touchFileAtPath>("touchFileAtPath:")
      .method<&setCreationDate_forFileAtPath>("setCreationDate:forFileAtPath:")
      .method<&pathsOfDirectoryContentsAtPath>("pathsOfDirectoryContentsAtPath:")
      .method<&iterateDirectory_recursionType_target_selector_withObject>(
          "iterateDirectory:recursionType:target:selector:withObject:")
      .method<&iterateDirectory_recursively_target_selector_withObject>(
          "iterateDirectory:recursively:target:selector:withObject:");
}

}  // namespace qz
