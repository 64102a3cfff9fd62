// File managers: what changes something.
#include <string>
#include <vector>

#include "Platform/Runtime/Send.h"
#include "Platform/System/NSFileManager.h"
#include "Platform/System/detail/FileAttributes.h"
#include "Platform/System/detail/FileBytes.h"
#include "Platform/System/detail/FileErrors.h"
#include "Platform/System/detail/PathBytes.h"
#include "Platform/System/detail/TreeCopy.h"
#include "Platform/System/detail/TreeMove.h"
#include "Platform/System/detail/TreeRemoval.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/detail/FileContents.h"

namespace qz {

using detail::FailureListener;
using detail::PathBytes;
using detail::putError;
namespace os = detail::os;

namespace {

// Failures ----------------------------------------------------------------------------------------

bool proceedsAfter(NSFileManager* manager, NSObject* handler, const std::string& path, int number) {
  const Selector callback = "fileManager:shouldProceedAfterError:"_sel;
  if (handler == nullptr || !handler->respondsToSelector(callback)) return false;
  const Ref<NSString> where = NSString::stringWithFileSystemRepresentation(path);
  const Ref<NSDictionary> failure =
      NSDictionary::of({{NSFileManagerErrorTextKey, detail::failureText(where, number)},
                        {NSFileManagerErrorPathKey, where}});
  errno = number;
  return send<bool>(handler, callback, manager, failure);
}

// Runs an operation whose failures a handler is asked about, and leaves the first in `errno`.
template <class Operation>
bool askingHandler(NSFileManager* manager, NSObject* handler, Operation operation) {
  int first = 0;
  const bool isDone = operation([&](const std::string& path, int number) {
    if (first == 0) first = number;
    return proceedsAfter(manager, handler, path, number);
  });
  if (!isDone) errno = first;
  return isDone;
}

// Runs an operation that ends at its first failure, which becomes the Error.
template <class Operation>
bool givingError(Ref<NSError>* error, Operation operation) {
  std::string where;
  int first = 0;
  const bool isDone = operation([&](const std::string& path, int number) {
    if (first == 0) where = path;
    if (first == 0) first = number;
    return false;
  });
  if (!isDone) putError(error, NSString::stringWithFileSystemRepresentation(where), first);
  return isDone;
}

// Operations --------------------------------------------------------------------------------------

// A path, or what is wrong with it.
class OperandPath {
 public:
  explicit OperandPath(NSString* path) {
    const PathBytes bytes(path);
    error_ = bytes.error();
    bytes_ = bytes.view();
    if (error_ == EINVAL) bytes_ = path->UTF8String();
  }
  bool isUsable(const FailureListener& onFailure) const {
    if (error_ == 0) return true;
    errno = error_;
    onFailure(bytes_, error_);
    return false;
  }
  const std::string& bytes() const { return bytes_; }

 private:
  int error_ = 0;
  std::string bytes_;
};

using TwoPathOperation = bool (*)(const std::string& from, const std::string& to,
                                  const FailureListener& onFailure);

template <TwoPathOperation operation>
auto onPaths(NSString* from, NSString* to) {
  return [from = OperandPath(from), to = OperandPath(to)](const FailureListener& onFailure) {
    return from.isUsable(onFailure) && to.isUsable(onFailure) &&
           operation(from.bytes(), to.bytes(), onFailure);
  };
}

bool linkFile(const std::string& from, const std::string& to, const FailureListener& onFailure) {
  if (os::linkat(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str()) == 0) return true;
  onFailure(errno == EEXIST ? to : from, errno);
  return false;
}

auto removing(NSString* path) {
  return [path = OperandPath(path)](const FailureListener& onFailure) {
    return path.isUsable(onFailure) && detail::removeTree(path.bytes(), onFailure);
  };
}

// 0, or an `errno`. A directory whose attributes cannot be had does not stay.
int makeDirectory(const char* path, NSDictionary* attributes) {
  if (os::mkdirat(AT_FDCWD, path, 0777) != 0) return errno;
  const int number = detail::changeAttributes(path, attributes);
  if (number != 0) os::unlinkat(AT_FDCWD, path, AT_REMOVEDIR);
  return number;
}

// The directory and those above it that are missing; `path` ends up as what the answer concerns.
int makeDirectories(std::string& path, NSDictionary* attributes) {
  const std::string whole = path;
  // Up to the first that can be made or is there, and down again.
  std::vector<std::size_t> ends{whole.size()};
  for (;;) {
    path.resize(ends.back());
    const int number = makeDirectory(path.c_str(), attributes);
    if (number == 0 || (number == EEXIST && detail::isDirectory(path))) {
      ends.pop_back();
      if (ends.empty()) return 0;
      path = whole;
      continue;
    }
    const std::size_t slash = path.find_last_of('/');
    const std::size_t end = slash == std::string::npos ? slash : path.find_last_not_of('/', slash);
    if (number != ENOENT || end == std::string::npos) return number;
    ends.push_back(end + 1);
  }
}

}  // namespace

// Making ------------------------------------------------------------------------------------------

bool NSFileManager::createDirectoryAtPath_attributes(NSString* path, NSDictionary* attributes) {
  const PathBytes bytes(path);
  errno = bytes.error() != 0 ? bytes.error() : makeDirectory(bytes.c_str(), attributes);
  return errno == 0;
}

bool NSFileManager::createDirectoryAtPath_withIntermediateDirectories_attributes_error(
    NSString* path, bool parents, NSDictionary* attributes, Ref<NSError>* error) {
  if (!parents) {
    if (createDirectoryAtPath_attributes(path, attributes)) return true;
    putError(error, path, errno);
    return false;
  }
  return givingError(error, [&](const FailureListener& onFailure) {
    const OperandPath operand(path);
    if (!operand.isUsable(onFailure)) return false;
    std::string concerned = operand.bytes();
    const int number = makeDirectories(concerned, attributes);
    if (number != 0) onFailure(concerned, number);
    return number == 0;
  });
}

bool NSFileManager::createFileAtPath_contents_attributes(NSString* path, NSData* contents,
                                                         NSDictionary* attributes) {
  const PathBytes bytes(path);
  errno = bytes.error();
  if (errno != 0) return false;
  const std::string name(bytes.view());
  errno = detail::replaceFile(
      name, contents == nullptr ? std::span<const std::byte>() : contents->span(), false);
  if (errno == 0) errno = detail::changeAttributes(name.c_str(), attributes);
  return errno == 0;
}

bool NSFileManager::createSymbolicLinkAtPath_withDestinationPath_error(NSString* path,
                                                                       NSString* destination,
                                                                       Ref<NSError>* error) {
  if (createSymbolicLinkAtPath_pathContent(path, destination)) return true;
  putError(error, path, errno);
  return false;
}

bool NSFileManager::createSymbolicLinkAtPath_pathContent(NSString* path, NSString* destination) {
  const PathBytes bytes(path);
  const PathBytes text(destination);
  errno = bytes.error() != 0 ? bytes.error() : text.error();
  return errno == 0 && os::symlinkat(text.c_str(), AT_FDCWD, bytes.c_str()) == 0;
}

// Copying, moving, linking, removing --------------------------------------------------------------

bool NSFileManager::copyPath_toPath_handler(NSString* from, NSString* to, NSObject* handler) {
  return askingHandler(this, handler, onPaths<&detail::copyTree>(from, to));
}

bool NSFileManager::copyItemAtPath_toPath_error(NSString* from, NSString* to, Ref<NSError>* error) {
  return givingError(error, onPaths<&detail::copyTree>(from, to));
}

bool NSFileManager::movePath_toPath_handler(NSString* from, NSString* to, NSObject* handler) {
  return askingHandler(this, handler, onPaths<&detail::moveTree>(from, to));
}

bool NSFileManager::moveItemAtPath_toPath_error(NSString* from, NSString* to, Ref<NSError>* error) {
  return givingError(error, onPaths<&detail::moveTree>(from, to));
}

bool NSFileManager::linkPath_toPath_handler(NSString* from, NSString* to, NSObject* handler) {
  return askingHandler(this, handler, onPaths<&linkFile>(from, to));
}

bool NSFileManager::linkItemAtPath_toPath_error(NSString* from, NSString* to, Ref<NSError>* error) {
  return givingError(error, onPaths<&linkFile>(from, to));
}

bool NSFileManager::removeFileAtPath_handler(NSString* path, NSObject* handler) {
  return askingHandler(this, handler, removing(path));
}

bool NSFileManager::removeItemAtPath_error(NSString* path, Ref<NSError>* error) {
  return givingError(error, removing(path));
}

bool NSFileManager::changeFileAttributes_atPath(NSDictionary* attributes, NSString* path) {
  const PathBytes bytes(path);
  errno = bytes.error() != 0 ? bytes.error() : detail::changeAttributes(bytes.c_str(), attributes);
  return errno == 0;
}

bool NSFileManager::setAttributes_ofItemAtPath_error(NSDictionary* attributes, NSString* path,
                                                     Ref<NSError>* error) {
  if (changeFileAttributes_atPath(attributes, path)) return true;
  putError(error, path, errno);
  return false;
}

}  // namespace qz
