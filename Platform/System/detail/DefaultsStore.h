/// @file
/// Private: the file behind user defaults.
#pragma once

#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Runtime/NSObject.h"
#include "Platform/System/detail/DefaultsFile.h"

#pragma GCC visibility push(default)
namespace qz {
class NSMutableDictionary;
class NSString;
}  // namespace qz
#pragma GCC visibility pop

namespace qz::detail {

/// The values in one file, and those that are to go there. Lives as long as the process. Any
/// thread; but for the first look at the file, nobody who reads or sets a value waits for the disk.
class DefaultsStore {
 public:
  /// The one of that file; always the same.
  static DefaultsStore& at(const std::string& path);

  const std::string& path() const noexcept { return file_.path(); }

  /// Nil when there is none.
  Ref<NSObject> value(NSString* key);

  /// All of them.
  Ref<NSDictionary> values();

  /// Keeps `value`, nil for its absence, and has the file written before long.
  void set(NSObject* value, NSString* key);

  /// Writes and reads. Nil on success. `changed` says whether values are others than before.
  Ref<NSError> synchronize(bool* changed);

 private:
  explicit DefaultsStore(const std::string& path);

  // A process that forks while a thread writes would leave its child with locks nobody opens.
  static void beforeFork();
  static void afterFork();
  static void afterForkInChild();

  /// Tells what there is to complain about, without the mutex.
  void complain(std::unique_lock<std::mutex> held);

  // With the mutex held.
  void readIfNew();
  void take(const DefaultsContents& contents);
  /// Drops changes that are in the file, but for those made anew since.
  void forget(NSDictionary* written);
  Ref<NSDictionary> merged() const;

  const DefaultsFile file_;
  std::mutex exchange_;  // held while the file is written; taken before the other one
  std::mutex mutex_;     // guards all below
  std::vector<std::string> complaints_;  // not told yet
  bool isRead_ = false;
  bool isNews_ = false;               // others' changes came with a save that nobody asked for
  Ref<NSDictionary> saved_;           // what the file says
  Ref<NSMutableDictionary> changes_;  // Null for what is to go
};

}  // namespace qz::detail
