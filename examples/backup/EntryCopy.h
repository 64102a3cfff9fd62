// One entry of the source, and its copy.
#pragma once

#include "Platform/Values/NSError.h"
#include "QZFoundation/NSFileManager-QZFoundation.h"

namespace backup {

using qz::NSError;
using qz::NSFileManager;
using qz::NSObject;
using qz::NSString;
using qz::Ref;

/// Copies and compares entries, which are named by their paths below the source and below the
/// destination alike. What fails answers an Error and leaves the entry's old copy as it was. One
/// thread.
class EntryCopy {
 public:
  /// With `update`, files whose copies have the same size, date and permissions are left alone.
  EntryCopy(NSString* source, NSString* destination, bool update);

  /// Makes the destination if it is missing, with the source's permissions. False with `errno`.
  bool begin();

  /// If `begin` made it, `finishDirectory` for the destination itself; one that was there before
  /// stays as its owner made it.
  Ref<NSError> finish();

  /// Copies a file or a link. A directory is made, without what is in it, and can be written to
  /// until `finishDirectory`. A directory is never replaced by something else: what is in it may be
  /// all that is left of it.
  Ref<NSError> copy(NSString* entry);

  /// Gives a directory what comes last, when nothing is put into it any more: putting something
  /// there would change its date, and its permissions may forbid it. Nothing for other entries.
  Ref<NSError> finishDirectory(NSString* entry);

  /// Compares kinds and contents.
  Ref<NSError> verify(NSString* entry);

 private:
  struct Paths;
  Paths pathsOf(NSString* entry) const;
  Ref<NSError> copyDirectory(const Paths& paths, std::uint32_t kindThere);
  Ref<NSError> copyFile(const Paths& paths, std::uint32_t kindThere);
  Ref<NSError> copyOther(const Paths& paths, std::uint32_t kindThere);
  bool isUnchanged(const Paths& paths) const;

  Ref<NSFileManager> manager_;
  Ref<NSString> source_;
  Ref<NSString> destination_;
  bool update_;
  bool isNew_ = false;
};

}  // namespace backup
