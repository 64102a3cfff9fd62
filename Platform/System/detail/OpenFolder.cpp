#include "Platform/System/detail/OpenFolder.h"

#include <algorithm>
#include <vector>

namespace qz::detail {
namespace {

// From the folder up to, but without, the first for which `isEnd` is true.
template <class Folder, class IsEnd>
std::vector<Folder*> chain(Folder* folder, IsEnd isEnd) {
  std::vector<Folder*> folders;
  for (; folder != nullptr && !isEnd(folder); folder = folder->parent()) folders.push_back(folder);
  std::reverse(folders.begin(), folders.end());
  return folders;
}

}  // namespace

bool OpenFolder::open(int above) {
  descriptor_ = Descriptor(os::openat(above, name_.c_str(), flags));
  return static_cast<bool>(descriptor_);
}

int OpenFolder::number() {
  if (descriptor_) return descriptor_.number();
  OpenFolder* above = this;
  while (!above->descriptor_) above = above->parent_;
  int from = above->descriptor_.number();
  Descriptor reached;
  for (OpenFolder* each : chain(this, [&](OpenFolder* folder) { return folder == above; })) {
    reached = Descriptor(os::openat(from, each->name_.c_str(), flags));
    if (!reached) return -1;
    from = reached.number();
  }
  descriptor_ = std::move(reached);
  return from;
}

void OpenFolder::park() {
  if (depth_ % levelsOpen != 0) descriptor_.close();
}

std::string OpenFolder::pathBelowTop() const {
  std::string path;
  for (const OpenFolder* each :
       chain(this, [](const OpenFolder* folder) { return folder->depth_ == 0; })) {
    if (!path.empty()) path += '/';
    path += each->name_;
  }
  return path;
}

std::string OpenFolder::path() const {
  const OpenFolder* top = this;
  while (top->parent_ != nullptr) top = top->parent_;
  std::string path = top->name_;
  if (depth_ != 0) path += (path.ends_with('/') ? "" : "/") + pathBelowTop();
  return path;
}

std::string OpenFolder::path(std::string_view entry) const {
  std::string whole = path();
  if (!whole.ends_with('/')) whole += '/';
  return whole.append(entry);
}

}  // namespace qz::detail
