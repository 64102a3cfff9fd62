/// @file
/// Private: a file of user defaults, which several processes read and write.
#pragma once

#include <string>
#include <vector>

#include "Platform/Runtime/NSObject.h"

#pragma GCC visibility push(default)
namespace qz {
class NSDictionary;
class NSError;
}  // namespace qz
#pragma GCC visibility pop

namespace qz::detail {

/// What a look at the file brought.
struct DefaultsContents {
  Ref<NSDictionary> values;             ///< null when the file could not be read
  Ref<NSError> error;                   ///< null when all went well
  std::vector<std::string> complaints;  ///< about what was there, for whoever looks after it
};

/// Read and written under a lock on another file beside it, because the file itself is replaced
/// each time. Waits for other processes up to ten seconds. Holds nothing between two calls.
class DefaultsFile {
 public:
  explicit DefaultsFile(std::string path) : path_(std::move(path)) {}

  const std::string& path() const noexcept { return path_; }

  /// No file is an empty one. What cannot be read as a Dictionary is empty too, and kept beside.
  DefaultsContents read() const { return read(false); }

  /// Reads, makes the changes and writes. The values are those with the changes; where only the
  /// writing failed, those without.
  DefaultsContents exchange(NSDictionary* changes) const;

 private:
  DefaultsContents read(bool isLocked) const;
  Ref<NSError> write(NSDictionary* values) const;
  std::string keepDamaged(const std::string& why, bool isLocked) const;
  std::string lockPath() const { return path_ + ".lock"; }

  std::string path_;
};

/// The values with changes, among which Null is for what is to go.
Ref<NSDictionary> withChanges(NSDictionary* values, NSDictionary* changes);

}  // namespace qz::detail
