/// @file
/// Private: copying one entry of a directory that is no directory itself.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <tuple>

#include "Platform/System/detail/FileCopy.h"

namespace qz::detail {

/// From where to where: names, each in an open directory or in the current one.
struct CopyStep {
  int fromFolder = AT_FDCWD;
  const char* from = "";
  int toFolder = AT_FDCWD;
  const char* to = "";
};

/// Files with several names that were copied under one of them. The lock is held while such a file
/// is copied, so two threads cannot both be the first.
class SharedFiles {
 public:
  using Key = std::tuple<std::uint32_t, std::uint32_t, std::uint64_t>;

  static Key keyOf(const struct ::statx& about) noexcept {
    return {about.stx_dev_major, about.stx_dev_minor, about.stx_ino};
  }

  std::unique_lock<std::mutex> lock() { return std::unique_lock(mutex_); }

  /// The path below the top of the copy; null when there is none yet.
  const std::string* find(const Key& key) const;
  void add(const Key& key, std::string path, std::uint32_t names);
  /// One name more was made; when that was the last, the entry is forgotten.
  void used(const Key& key);

 private:
  struct Copied {
    std::string path;
    std::uint32_t namesLeft;
  };
  std::mutex mutex_;
  std::map<Key, Copied> copied_;
};

/// Opens a regular file to be copied, and asks about it. Gives none when that fails, and, without a
/// failure in `outcome`, when it is no regular file (any more): then `about` says what it is.
Descriptor openToCopy(const CopyStep& step, struct ::statx& about, CopyOutcome& outcome);

/// Copies an open file to a name that must be new; takes the name away again when it fails. `owner`
/// is to whom new files in that directory belong.
CopyOutcome copyRegular(const CopyStep& step, int in, const struct ::statx& about, FileOwner owner,
                        CopyAbilities& abilities);

/// The same, but the name appears only when the file is whole, and is never there otherwise, also
/// when the process is killed. Where the file system cannot do that, as above.
CopyOutcome copyRegularAtOnce(const CopyStep& step, int in, const struct ::statx& about,
                              CopyAbilities& abilities);

/// Copies a link, a pipe, a socket or a device, with owner, permissions and times.
CopyOutcome copySpecial(const CopyStep& step, const struct ::statx& about);

/// The part of a path before its last name: "." when there is none.
std::string folderOf(const std::string& path);

}  // namespace qz::detail
