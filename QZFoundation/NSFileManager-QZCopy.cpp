#include "QZFoundation/NSFileManager-QZCopy.h"

#include <climits>

#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/Send.h"
#include "Platform/System/detail/FileExchange.h"
#include "Platform/System/detail/PathBytes.h"
#include "QZFoundation/NSError-QZFoundation.h"
#include "QZFoundation/NSFileManager-QZFoundation.h"
#include "QZFoundation/NSString-QZFoundation.h"
#include "QZFoundation/QZFileManagerErrorHandler.h"
#include "QZFoundation/detail/FileMessages.h"

namespace qz {

using detail::PathBytes;

namespace {

Ref<NSString> copyMessage(NSString* key) {
  return detail::message(key, "File copy error message"_ns);
}

Ref<NSError> refusal(std::int32_t code, NSString* key) {
  return POSIXError_description(code, copyMessage(key));
}

// "name 2" or above, the first at which there is nothing.
Ref<NSString> numberedPath(NSFileManager* manager, NSString* name, NSString* directory) {
  for (int number = 2;; ++number) {
    Ref<NSString> path =
        directory->stringByAppendingPathComponent(stringByAppendingStringBeforePathExtension(
            name, NSString::stringWithFormat(" %d"_ns, number)));
    if (!manager->fileExistsAtPath(path)) return path;
  }
}

// The steps of one copy.
class CarefulCopy {
 public:
  CarefulCopy(NSFileManager* manager, NSString* source, NSString* destination, std::int32_t options)
      : manager_(manager),
        source_(source == nullptr ? ""_ns : source),
        destination_(destination == nullptr ? ""_ns : destination),
        parent_(destination_->stringByDeletingLastPathComponent()),
        options_(options) {}

  Ref<NSError> run() {
    Ref<NSError> error = attempt();
    if (!error) return nullptr;
    return detail::reworded(
        error, detail::message("Unable to copy from %@ to %@ (%@)"_ns, "File copy error message"_ns,
                               source_, destination_, detail::descriptionOf(error)));
  }

 private:
  Ref<NSError> attempt();
  Ref<NSError> check() const;
  Ref<NSError> copyTo(NSString* target) const;
  Ref<NSError> swap() const;
  Ref<NSString> temporaryPath() const;
  bool parentExists(bool* isFolder) const;

  NSFileManager* manager_;
  Ref<NSString> source_;
  Ref<NSString> destination_;
  Ref<NSString> parent_;
  std::int32_t options_;
  bool isThereFolder_ = false;  // at the destination, when the work began
  Ref<NSString> temporary_;     // nil when there was nothing to replace
};

Ref<NSError> CarefulCopy::attempt() {
  const bool isThere = manager_->fileExistsAtPath_isDirectory(destination_, &isThereFolder_);
  if (isThere) temporary_ = temporaryPath();
  if ((options_ & QZCopyCreateParents) != 0 && !parentExists(nullptr))
    if (Ref<NSError> error = createDirectoryAtPath(manager_, parent_)) return error;
  if (Ref<NSError> error = check()) return error;
  if (Ref<NSError> error = copyTo(temporary_ ? temporary_ : destination_)) return error;
  if (!temporary_) return nullptr;
  Ref<NSError> error = swap();
  // What is there now is the old file, or nothing.
  static_cast<void>(removeFileAtPath(manager_, temporary_));
  return error;
}

// The empty path is the current directory, where a name without slashes lies.
bool CarefulCopy::parentExists(bool* isFolder) const {
  return manager_->fileExistsAtPath_isDirectory(parent_->length() == 0 ? "."_ns : parent_.get(),
                                                isFolder);
}

Ref<NSError> CarefulCopy::check() const {
  bool isFolder = false;
  if (!manager_->fileExistsAtPath_isDirectory(source_, &isFolder))
    return refusal(ENOENT, "Source file does not exist"_ns);
  if (!temporary_) {
    bool isParentFolder = false;
    if (!parentExists(&isParentFolder))
      return refusal(ENOENT, "Destination folder does not exist"_ns);
    if (!isParentFolder) return refusal(ENOTDIR, "Destination parent is not a folder"_ns);
    return nullptr;
  }
  if ((options_ & QZCopyOverwrite) == 0)
    return refusal(EEXIST, "File already exists at destination"_ns);
  if (isThereFolder_ && !isFolder)
    return refusal(EEXIST, "Cannot overwrite a folder with a file"_ns);
  return nullptr;
}

Ref<NSString> CarefulCopy::temporaryPath() const {
  const Ref<NSString> name = destination_->lastPathComponent();
  // A name that has no room for a number is copied under another one.
  constexpr std::size_t roomForNumber = 8;
  if (PathBytes(name).view().size() + roomForNumber > NAME_MAX)
    return uniqueFilePathForName_inDirectory(manager_, ".qz-copy"_ns, parent_);
  return numberedPath(manager_, name, parent_);
}

Ref<NSError> CarefulCopy::copyTo(NSString* target) const {
  if (manager_->respondsToSelector("copyItemAtPath:toPath:error:"_sel)) {
    Ref<NSError> error;
    manager_->copyItemAtPath_toPath_error(source_, target, &error);
    return error;
  }
  const auto handler = QZFileManagerErrorHandler::sharedHandler();
  manager_->copyPath_toPath_handler(source_, target, handler);
  return handler->lastError();
}

// A folder is removed and replaced, and so is a file that could not be exchanged.
Ref<NSError> CarefulCopy::swap() const {
  if (detail::exchangeFiles(PathBytes(temporary_).c_str(), PathBytes(destination_).c_str()))
    return nullptr;
  Ref<NSError> error = removeFileAtPath(manager_, destination_);
  // The shared handler may have had an Error of somebody else's: it is answered, but what is gone
  // has to be replaced.
  if (error && objectTypeAtPath(manager_, destination_) != QZObjectTypeNone) return error;
  Ref<NSError> second = movePath_toPath(manager_, temporary_, destination_);
  return error ? error : second;
}

bool contains(NSObject* collection, NSObject* object) {
  return send<bool>(collection, "containsObject:"_sel, object);
}

}  // namespace

Ref<NSError> copyPath_toPath_withOptions(NSFileManager* self, NSString* source,
                                         NSString* destination, std::int32_t options) {
  return CarefulCopy(self, source, destination, options).run();
}

Ref<NSError> copyPath_toPath(NSFileManager* self, NSString* source, NSString* destination) {
  return copyPath_toPath_withOptions(self, source, destination, 0);
}

// Deliberate: always overwrites.
Ref<NSError> copyPath_toPath_overwrite(NSFileManager* self, NSString* source, NSString* destination,
                                       bool) {
  return copyPath_toPath_withOptions(self, source, destination, QZCopyOverwrite);
}

Ref<NSString> uniqueFilePathForName_inDirectory(NSFileManager* self, NSString* name,
                                                NSString* directory) {
  if (name == nullptr || directory == nullptr) return nullptr;
  const Ref<NSString> path = directory->stringByAppendingPathComponent(name);
  return self->fileExistsAtPath(path) ? numberedPath(self, name, directory) : path;
}

Ref<NSArray> changeFileAttributes_directoryAttributes_inDirectory_handler(
    NSFileManager* self, NSDictionary* attributes, NSDictionary* directoryAttributes,
    NSString* directory, NSObject* handler) {
  constexpr std::uint32_t reportEvery = 20;
  const Selector report = "fileManager:willChangePath:percentComplete:"_sel;
  const bool isHeard = handler != nullptr && handler->respondsToSelector(report);
  auto failures = NSMutableArray::array();
  const Ref<NSDirectoryEnumerator> enumerator = self->enumeratorAtPath(directory);
  const Ref<NSArray> entries = enumerator ? enumerator->allObjects() : NSArray::array();
  const std::uint32_t count = entries->count();
  self->changeFileAttributes_atPath(directoryAttributes, directory);
  for (std::uint32_t i = 0; i < count; ++i) {
    const Ref<NSString> path =
        directory->stringByAppendingPathComponent(as<NSString>(entries->objectAtIndex(i)));
    if (isHeard && i % reportEvery == 0)
      send<void>(handler, report, self, path, static_cast<float>(i) / static_cast<float>(count));
    bool isFolder = false;
    self->fileExistsAtPath_isDirectory(path, &isFolder);
    if (!self->changeFileAttributes_atPath(isFolder ? directoryAttributes : attributes, path))
      failures->addObject(path);
  }
  return failures;
}

bool isDirectoryEmpty_ignoringPaths_ignoringFilesNamed(NSFileManager* self, NSString* path,
                                                       NSObject* paths, NSObject* names) {
  if (objectTypeAtPath(self, path) != QZObjectTypeDirectory) return false;
  const Ref<NSArray> contents = self->directoryContentsAtPath(path);
  if (!contents) return false;
  for (NSString* name : elements<NSString>(contents)) {
    if (contains(names, name)) continue;
    const Ref<NSString> entry = path->stringByAppendingPathComponent(name);
    if (contains(paths, entry)) continue;
    // A link to a folder passes the first test and fails in the second, so nothing that it leads to
    // makes a folder count as empty.
    if (!isDirectoryAtPath(self, entry) ||
        !isDirectoryEmpty_ignoringPaths_ignoringFilesNamed(self, entry, paths, names))
      return false;
  }
  return true;
}

void detail::registerNSFileManagerQZCopy() {
  extend<NSFileManager>("QZCopy")
      .method<&copyPath_toPath_withOptions>("copyPath:toPath:withOptions:")
      .method<&copyPath_toPath>("copyPath:toPath:")
      .method<&copyPath_toPath_overwrite>("copyPath:toPath:overwrite:")
      .method<&uniqueFilePathForName_inDirectory>("uniqueFilePathForName:inDirectory:")
      .method<&changeFileAttributes_directoryAttributes_inDirectory_handler>(
          "changeFileAttributes:directoryAttributes:inDirectory:handler:")
      .method<&isDirectoryEmpty_ignoringPaths_ignoringFilesNamed>(
          "isDirectoryEmpty:ignoringPaths:ignoringFilesNamed:");
}

}  // namespace qz
