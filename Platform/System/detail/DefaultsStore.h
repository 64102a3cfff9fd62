/// @file
/// Private: the file behind user defaults.
#pragma once

#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Runtime/NSObject.h"

#pragma GCC visibility push(default)
namespace qz {
class NSDictionary;
class NSError;
class NSMutableDictionary;
class NSString;
}  // namespace qz
#pragma GCC visibility pop

namespace qz::detail {

/// The values in one file, and those that are to go there. Lives as long as the process.
///
/// The file is read and written under a lock on another file beside it, because the file itself is
/// replaced each time. In the process one mutex guards everything.
class DefaultsStore {
 public:
  /// The one of that file; always the same.
  static DefaultsStore& at(const std::string& path);

  const std::string& path() const noexcept { return path_; }

  /// Nil when there is none.
  Ref<NSObject> value(NSString* key);

  /// All of them.
  Ref<NSDictionary> values();

  /// Keeps `value`, nil for its absence, and has the file written before long.
  void set(NSObject* value, NSString* key);

  /// Writes and reads. Nil on success. `changed` says whether values are others than before.
  Ref<NSError> synchronize(bool* changed);

 private:
  explicit DefaultsStore(std::string path);

  // A process that forks while a thread writes would leave its child with locks nobody opens.
  static void beforeFork();
  static void afterFork();
  static void afterForkInChild();

  /// Does `action` with the mutex held, and tells what there is to complain about without it.
  template <class Action>
  auto locked(Action action);

  // With the mutex held; `isLocked` says whether the file's lock is, too.
  void readIfNew();
  Ref<NSError> readFile(bool isLocked);
  Ref<NSError> exchange();
  Ref<NSError> writeFile(NSDictionary* values) const;
  void keepDamagedFile(const std::string& why, bool isLocked);
  Ref<NSDictionary> merged() const;

  std::string lockPath() const { return path_ + ".lock"; }

  const std::string path_;
  std::mutex mutex_;
  std::vector<std::string> complaints_;  // not told yet
  bool isRead_ = false;
  bool isNews_ = false;               // others' changes came with a save that nobody asked for
  Ref<NSDictionary> saved_;           // what the file says
  Ref<NSMutableDictionary> changes_;  // Null for what is to go
};

}  // namespace qz::detail
