/// @file
/// Directory enumerators: walks over everything below a directory.
#pragma once

#include <memory>

#include "Platform/Collections/NSEnumerator.h"
#include "Platform/Values/NSError.h"
#include "Platform/Values/NSString.h"

#pragma GCC visibility push(default)

namespace qz {

class NSDictionary;

/// Answers the paths of all entries below a directory, relative to it: a directory first, then what
/// is in it. Symbolic links are entries and are not followed. Each directory is read when the walk
/// comes to it. One that cannot be read has what could be read of it below it, or nothing, and the
/// walk goes on behind it; `error` tells.
///
///     auto entries = manager->enumeratorAtPath(top);
///     while (Ref<NSObject> each = entries->nextObject()) {
///       if (isHidden(as<NSString>(each))) entries->skipDescendents();
///     }
///     if (entries->error()) show(entries->error());  // there is more than what was answered
class NSDirectoryEnumerator : public Derives<NSDirectoryEnumerator, NSEnumerator> {
 public:
  static void describe(ClassDescription<NSDirectoryEnumerator>& is);

  /// Over the directory at `path`; nil when it cannot be read, with `errno`.
  static Ref<NSDirectoryEnumerator> enumeratorAtPath(NSString* path);
  ~NSDirectoryEnumerator() override;

  Ref<NSObject> nextObject() override;

  /// Does not go into the directory answered last. Nothing when that was none.
  void skipDescendents();

  /// Nil while everything that the walk has come to could be read, else the first failure: an Error
  /// in NSPOSIXErrorDomain, with the directory's path under NSFilePathErrorKey. A directory that
  /// went away meanwhile is none.
  Ref<NSError> error() const { return error_; }

  /// How deep the entry answered last lies: 1 for those of the directory itself, 0 before the
  /// first.
  std::uint32_t level() const noexcept;

  /// The attributes of the entry answered last (of a link itself), and of the directory. Nil when
  /// it cannot be asked.
  Ref<NSDictionary> fileAttributes() const;
  Ref<NSDictionary> directoryAttributes() const;

 private:
  struct Walk;
  explicit NSDirectoryEnumerator(std::unique_ptr<Walk> walk);

  std::unique_ptr<Walk> walk_;
  Ref<NSError> error_;
};

}  // namespace qz

#pragma GCC visibility pop
