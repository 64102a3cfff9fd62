/// @file
/// Private: directories that a walk through a tree is in.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "Platform/Values/detail/Descriptor.h"
#include "Platform/Values/detail/SystemCalls.h"

namespace qz::detail {

/// Hears of each failure on the way through a tree: an `errno`, and the path that it concerns.
/// Answers whether to go on with what is left.
using FailureListener = std::function<bool(const std::string& path, int number)>;

/// A directory reached from its parent by name, never through a link. A walk that is deep below
/// parks the ones above, so a tree may be deeper than a process may have descriptors, and its
/// paths longer than the system takes.
class OpenFolder {
 public:
  /// The top; `path` is how the caller calls it.
  OpenFolder(std::string path, Descriptor descriptor)
      : name_(std::move(path)), descriptor_(std::move(descriptor)) {}
  /// One below; `parent` outlives it.
  OpenFolder(OpenFolder& parent, std::string name, Descriptor descriptor)
      : parent_(&parent),
        depth_(parent.depth_ + 1),
        name_(std::move(name)),
        descriptor_(std::move(descriptor)) {}

  /// Opens it for the first time, in the directory above. False with `errno`.
  bool open(int above);

  /// The descriptor, opened again if need be; -1 when that fails, with `errno`.
  int number();

  /// Gives the descriptor back until it is asked for; every so many levels one stays open, so that
  /// the way back is short.
  void park();
  bool isParked() const noexcept { return !descriptor_; }

  OpenFolder* parent() const noexcept { return parent_; }
  std::size_t depth() const noexcept { return depth_; }
  const std::string& name() const noexcept { return name_; }

  /// The path from the top, as the caller calls it, or of an entry. Linear in the depth.
  std::string path() const;
  std::string path(std::string_view entry) const;

  /// The path below the top; "" for the top itself.
  std::string pathBelowTop() const;

  static constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_NONBLOCK;
  static constexpr std::size_t levelsOpen = 64;

 private:
  OpenFolder* parent_ = nullptr;
  std::size_t depth_ = 0;
  std::string name_;
  Descriptor descriptor_;
};

}  // namespace qz::detail
