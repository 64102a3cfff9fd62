#include "tests/support/FaultySystem.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <map>

namespace qz::test {

FaultySystem::FaultySystem() { detail::systemTap = this; }
FaultySystem::~FaultySystem() { detail::systemTap = nullptr; }

void FaultySystem::failCall(std::size_t n, int number) {
  const std::lock_guard guard(mutex_);
  failingCall_ = calls_.size() + n;
  failure_ = number;
}

void FaultySystem::failAll(SystemCall kind, int number) {
  const std::lock_guard guard(mutex_);
  broken_.insert(kind);
  brokenWith_ = number;
}

void FaultySystem::heal() {
  const std::lock_guard guard(mutex_);
  broken_.clear();
  failingCall_ = 0;
}

std::vector<SystemCall> FaultySystem::calls() const {
  const std::lock_guard guard(mutex_);
  return calls_;
}

int FaultySystem::before(SystemCall call, const char* path) {
  if (listener) listener(call, path);
  const std::lock_guard guard(mutex_);
  calls_.push_back(call);
  if (calls_.size() == failingCall_) return failure_;
  return broken_.count(call) != 0 ? brokenWith_ : 0;
}

std::size_t FaultySystem::limit(SystemCall, std::size_t size) {
  return std::min(size, most_.load());
}

const std::vector<int>& troubles(SystemCall kind) {
  using enum SystemCall;
  static const std::map<SystemCall, std::vector<int>> table{
      {Open, {EACCES, EMFILE, ENFILE, ENOSPC, EDQUOT, EIO, EINTR, EROFS, ENOMEM, EOPNOTSUPP}},
      {Close, {EIO, ENOSPC, EDQUOT, EINTR}},
      {Statx, {EACCES, EIO, ENOMEM, ENOENT}},
      {ListDirectory, {EIO, ENOENT}},
      {Read, {EIO, EINTR, EISDIR}},
      {Write, {ENOSPC, EDQUOT, EIO, EINTR, EFBIG}},
      {CopyRange, {ENOSPC, EDQUOT, EIO, EINTR, EXDEV, EINVAL, ENOSYS, EOPNOTSUPP}},
      {Clone, {EOPNOTSUPP, EXDEV, ENOSPC, EIO, ENOTTY}},
      {Seek, {EINVAL, EIO}},
      {Truncate, {EIO, ENOSPC}},
      {Synchronize, {EIO, ENOSPC, EDQUOT, EINVAL, EINTR}},
      {MakeDirectory, {EACCES, ENOSPC, EDQUOT, EROFS, EEXIST, EMLINK}},
      {MakeNode, {EPERM, ENOSPC}},
      {Link, {EPERM, EMLINK, ENOSPC, EXDEV, EIO, ENOENT}},
      {SymbolicLink, {ENOSPC, EACCES, EPERM}},
      {ReadLink, {EIO, EINVAL}},
      {Unlink, {EACCES, EBUSY, EIO, EPERM, EROFS}},
      {Rename, {EINVAL, ENOSYS, EXDEV, EACCES, EIO, ENOSPC, EBUSY}},
      {ChangeMode, {EPERM, EIO, EOPNOTSUPP, EROFS}},
      {ChangeOwner, {EPERM, EIO, EINVAL}},
      {ChangeTimes, {EPERM, EIO}},
      {ListAttributes, {EOPNOTSUPP, EIO, ERANGE}},
      {GetAttribute, {ENODATA, EIO, EPERM}},
      {SetAttribute, {EOPNOTSUPP, ENOSPC, EPERM, EDQUOT}},
      {Access, {EACCES}},
      {OpenQueue, {EMFILE, ENFILE, ENOMEM}},
      {AddWatch, {ENOSPC, ENOMEM, EACCES}},
  };
  static const std::vector<int> none;
  const auto found = table.find(kind);
  return found == table.end() ? none : found->second;
}

void sweepFailures(const std::function<void()>& prepare, const std::function<void()>& work,
                   const std::function<void(SystemCall kind, int number)>& check) {
  const auto callsOf = [&](std::size_t failing, int number) {
    prepare();
    FaultySystem system;
    if (failing > 0) system.failCall(failing, number);
    work();
    return system.calls();
  };
  const auto calls = callsOf(0, 0);
  for (std::size_t n = 0; n < calls.size(); ++n)
    for (const int number : troubles(calls[n])) {
      SCOPED_TRACE("call " + std::to_string(n) + ", kind " +
                   std::to_string(static_cast<int>(calls[n])) + ", errno " +
                   std::to_string(number));
      callsOf(n + 1, number);
      check(calls[n], number);
    }
}

}  // namespace qz::test
