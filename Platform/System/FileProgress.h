/// @file
/// How far the copy or comparison of a large file is, while it is under way.
#pragma once

#include <cstdint>
#include <functional>

#pragma GCC visibility push(default)

namespace qz {

/// While it lives, the thread that made it is told how far it is with the contents of each file
/// that it copies or compares through an NSFileManager, and may have that end early.
///
///     FileProgress progress([&](std::uint64_t bytes) {
///       show(done += bytes);
///       return !isCancelled;
///     });
///     manager->copyItemAtPath_toPath_error(from, to, &error);
///
/// The function is called on that thread after each part of a few megabytes or less, with the
/// number of bytes since the call before. What takes no copying is not told: holes, and files whose
/// blocks can be shared. Of a directory, files that other threads of the copy deal with are not
/// told either. When it answers false, the operation fails with ECANCELED and, as after any
/// failure, leaves no part of that file behind. It must not throw.
///
/// Of several the one made last counts; they must go in the reverse order.
class FileProgress {
 public:
  /// Told how many bytes more are done; answers whether to go on.
  using Function = std::function<bool(std::uint64_t bytes)>;

  /// Begins to listen on this thread; the end of this Object ends that.
  explicit FileProgress(Function function);
  ~FileProgress();
  FileProgress(const FileProgress&) = delete;
  FileProgress& operator=(const FileProgress&) = delete;

  /// For operations on files: whether anybody listens on this thread, and whether they may go on
  /// after so many bytes; sets `errno` when not.
  static bool isHeard() noexcept;
  static bool tell(std::uint64_t bytes);

 private:
  const Function function_;
  FileProgress* const outer_;
};

}  // namespace qz

#pragma GCC visibility pop
