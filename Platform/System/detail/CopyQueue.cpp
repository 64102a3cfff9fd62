#include "Platform/System/detail/CopyQueue.h"

#include <algorithm>
#include <system_error>

#include "Platform/System/detail/SignalsHeldBack.h"

namespace qz::detail {

CopyQueue::~CopyQueue() { join(); }

void CopyQueue::add(CopyBatch batch) {
  batch.folder->batches.fetch_add(1, std::memory_order_relaxed);
  batch.folder->uses.fetch_add(1, std::memory_order_relaxed);
  entries_ += batch.names.size();
  if (!hasStarted_ && entries_ > entriesForThreads) startThreads();
  {
    const std::lock_guard guard(mutex_);
    if (line_.size() < mostInLine) {
      line_.push_back(std::move(batch));
      hasWork_.notify_one();
      return;
    }
  }
  run(batch);
}

bool CopyQueue::doOne() {
  CopyBatch batch;
  if (!take(batch, false)) return false;
  run(batch);
  return true;
}

void CopyQueue::join() {
  {
    const std::lock_guard guard(mutex_);
    isClosed_ = true;
  }
  hasWork_.notify_all();
  for (std::thread& each : threads_) each.join();
  threads_.clear();
}

void CopyQueue::release(CopiedFolder* folder) {
  // A loop, since a tree may be deeper than a stack.
  while (folder != nullptr && folder->uses.fetch_sub(1, std::memory_order_acq_rel) == 1) {
    CopiedFolder* above = folder->parent;
    finish_(*folder);
    delete folder;
    folder = above;
  }
}

bool CopyQueue::take(CopyBatch& batch, bool waits) {
  std::unique_lock lock(mutex_);
  if (waits) hasWork_.wait(lock, [&] { return isClosed_ || !line_.empty(); });
  if (line_.empty()) return false;
  batch = std::move(line_.front());
  line_.pop_front();
  return true;
}

void CopyQueue::run(CopyBatch& batch) {
  for (const std::string& name : batch.names) copy_(*batch.folder, name);
  batch.folder->batches.fetch_sub(1, std::memory_order_release);
  release(batch.folder);
}

void CopyQueue::startThreads() {
  hasStarted_ = true;
  const unsigned int processors = std::min(4u, std::thread::hardware_concurrency());
  const SignalsHeldBack held;
  for (unsigned int i = 1; i < processors; ++i) {
    try {
      threads_.emplace_back([this] {
        for (CopyBatch batch; take(batch, true);) run(batch);
      });
    } catch (const std::system_error&) {
      break;  // as many as there are will do
    }
  }
}

}  // namespace qz::detail
