#include "QZFoundation/detail/DirectoryWalk.h"

#include <dirent.h>

#include "Platform/System/detail/DirectoryReader.h"
#include "Platform/System/detail/PathBytes.h"
#include "QZFoundation/NSFileManager-QZFoundation.h"
#include "QZFoundation/detail/FileMessages.h"

namespace qz::detail {
namespace {

void appendName(std::u16string& text, std::string_view name) {
  const std::size_t before = text.size();
  text.resize(before + name.size());
  unsigned int all = 0;
  for (std::size_t i = 0; i < name.size(); ++i) {
    const auto byte = static_cast<unsigned char>(name[i]);
    all |= byte;
    text[before + i] = byte;
  }
  if (all < 0x80) return;
  text.resize(before);
  text += pathOfBytes(name);
}

}  // namespace

Ref<NSObject> DirectoryWalk::run(NSString* directory) {
  const PathBytes bytes(directory);
  if (bytes.error() != 0) {
    Ref<NSObject> result = type_ == QZRecursionFolderFirst ? call(directory) : nullptr;
    return result ? result : unreadableDirectory(directory, bytes.error());
  }
  bytes_ = bytes.view();
  text_ = directory->view();
  return walk(directory);
}

Ref<NSObject> DirectoryWalk::call(NSString* path) {
  if (target_ == nullptr) return nullptr;
  return target_->performSelector_withObject_withObject(operation_, path, object_).object();
}

Ref<NSObject> DirectoryWalk::walk(NSString* directory) {
  if (type_ == QZRecursionFolderFirst)
    if (Ref<NSObject> result = call(directory)) return result;
  Descriptor folder(os::openat(AT_FDCWD, bytes_.c_str(), O_RDONLY | O_DIRECTORY | O_NONBLOCK));
  if (!folder) return unreadableDirectory(directory, errno);

  const std::size_t bytesBefore = bytes_.size();
  const std::size_t textBefore = text_.size();
  while (bytes_.size() > 1 && bytes_.ends_with('/')) bytes_.pop_back();
  while (text_.size() > 1 && text_.ends_with(u'/')) text_.pop_back();
  if (bytes_ != "/") bytes_ += '/';
  if (text_ != u"/") text_ += u'/';
  const std::size_t bytesPrefix = bytes_.size();
  const std::size_t textPrefix = text_.size();

  DirectoryReader reader(std::move(folder));
  while (const auto* each = reader.next()) {
    bytes_.resize(bytesPrefix);
    text_.resize(textPrefix);
    if (Ref<NSObject> result = entry(each->name(), each->type)) return result;
  }
  bytes_.resize(bytesBefore);
  text_.resize(textBefore);
  // A directory that was removed meanwhile has come to its end.
  if (reader.error() != 0 && reader.error() != ENOENT)
    return unreadableDirectory(directory, reader.error());
  return type_ == QZRecursionFolderLast ? call(directory) : nullptr;
}

// What an entry leads to, which for most of them the listing tells. False when that is nothing.
bool DirectoryWalk::find(unsigned char type, bool& isFolder) {
  isFolder = type == DT_DIR;
  if (type != DT_LNK && type != DT_UNKNOWN) return true;
  struct ::statx about;
  if (os::statx(AT_FDCWD, bytes_.c_str(), 0, STATX_TYPE, &about) != 0) return false;
  isFolder = S_ISDIR(about.stx_mode);
  return true;
}

Ref<NSObject> DirectoryWalk::entry(std::string_view name, unsigned char type) {
  bytes_ += name;
  bool isFolder = false;
  if (!find(type, isFolder)) return nullptr;
  appendName(text_, name);
  const Ref<NSString> path = NSString::stringWithCharacters(text_);
  return isFolder && type_ != QZRecursionNone ? walk(path) : call(path);
}

}  // namespace qz::detail
