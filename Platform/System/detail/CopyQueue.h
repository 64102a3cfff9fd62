/// @file
/// Private: the directories of a copy, and the work in them that any of its threads may do.
#pragma once

#include <sys/stat.h>

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Platform/System/detail/FileCopy.h"
#include "Platform/System/detail/OpenFolder.h"

namespace qz::detail {

/// A directory and its copy. It is finished (see `CopyQueue::finish`) when nothing uses it any
/// more: no walk is in it, no batch of its files waits, no directory below is unfinished.
struct CopiedFolder {
  CopiedFolder(std::string from, std::string to)
      : source(std::move(from), {}), target(std::move(to), {}) {}
  CopiedFolder(CopiedFolder& above, const std::string& name)
      : parent(&above), source(above.source, name, {}), target(above.target, name, {}) {}

  CopiedFolder* parent = nullptr;
  OpenFolder source;
  OpenFolder target;
  struct ::statx about {};
  FileOwner owner{};    ///< To whom new files in the copy belong.
  bool isLost = false;  ///< Its descriptors could not be had again.
  std::atomic<std::uint32_t> batches{0};
  std::atomic<std::uint32_t> uses{1};
};

/// Some entries of one directory, none of them directories.
struct CopyBatch {
  CopiedFolder* folder = nullptr;
  std::vector<std::string> names;
};

/// Hands batches to the threads of a copy. The thread that made it walks the tree; further ones
/// start once there is enough to do.
class CopyQueue {
 public:
  /// `copy` copies one entry, `finish` settles a directory; both are called by any thread.
  CopyQueue(std::function<void(CopiedFolder&, const std::string&)> copy,
            std::function<void(CopiedFolder&)> finish)
      : copy_(std::move(copy)), finish_(std::move(finish)) {}
  ~CopyQueue();

  /// Takes the batch, or has the calling thread do it when there is enough in line.
  void add(CopyBatch batch);

  /// Does what is in line on the calling thread; answers whether there was something.
  bool doOne();

  /// Waits until the other threads have done what they took.
  void join();

  /// A directory is used by one less; see CopiedFolder.
  void release(CopiedFolder* folder);

 private:
  bool take(CopyBatch& batch, bool waits);
  void run(CopyBatch& batch);
  void startThreads();

  static constexpr std::size_t mostInLine = 16;
  static constexpr std::size_t entriesForThreads = 64;

  std::function<void(CopiedFolder&, const std::string&)> copy_;
  std::function<void(CopiedFolder&)> finish_;
  std::mutex mutex_;
  std::condition_variable hasWork_;
  std::deque<CopyBatch> line_;
  bool isClosed_ = false;
  bool hasStarted_ = false;
  std::size_t entries_ = 0;
  std::vector<std::thread> threads_;
};

}  // namespace qz::detail
