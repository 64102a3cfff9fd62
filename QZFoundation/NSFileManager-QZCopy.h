/// @file
/// The careful copy, which replaces a file without ever being without one, and what goes with it.
///
///     auto options = QZCopyOverwrite | QZCopyCreateParents;
///     Ref<NSError> error = copyPath_toPath_withOptions(manager, from, to, options);
///     if (error) show(error);
///
/// Nothing here raises. A nil path counts as the empty one; the receiver must not be nil.
#pragma once

#include <cstdint>

#include "Platform/System/NSFileManager.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

/// Options of a copy; other bits mean nothing.
enum QZCopyOptions : std::int32_t {
  QZCopyOverwrite = 1,      ///< What is at the destination may be replaced.
  QZCopyCreateParents = 2,  ///< The directories above the destination are made if missing.
};

/// Copies a file, or a directory with everything in it, as `copyItemAtPath:toPath:error:` does.
///
/// What is to be replaced stays until the copy is whole: it is made beside the destination under a
/// numbered name ("a 2.txt"), and then both change places in one step, so that whoever opens the
/// destination at any moment, and whoever kills the process, finds the old file or the new one. (A
/// directory, and a file where the file system cannot do that, is removed first and the copy moved
/// to its place.) When a regular file is copied, a symbolic link at the destination stays, and what
/// it leads to is replaced, unless that lies on another file system.
///
/// Nil, or an Error with the text "Unable to copy from … to … (…)". Its domain and code are those
/// of the cause, in NSPOSIXErrorDomain: 2 for a missing source ("Source file does not exist") or
/// destination folder ("Destination folder does not exist"), 20 for one that is a file
/// ("Destination parent is not a folder"), 17 for a destination that exists ("File already exists
/// at destination") or is a folder while the source is none ("Cannot overwrite a folder with a
/// file"), or what the system said. The destination is untouched then. What a failed copy of a
/// directory leaves under the numbered name stays there.
[[nodiscard]] Ref<NSError> copyPath_toPath_withOptions(NSFileManager* self, NSString* source,
                                                       NSString* destination, std::int32_t options);

/// Only to a destination that does not exist.
[[nodiscard]] Ref<NSError> copyPath_toPath(NSFileManager* self, NSString* source,
                                           NSString* destination);

/// With QZCopyOverwrite, whatever `overwrite` says: who must not overwrite uses one of the others.
[[nodiscard]] Ref<NSError> copyPath_toPath_overwrite(NSFileManager* self, NSString* source,
                                                     NSString* destination, bool overwrite);

/// The path in `directory` of `name`, or of "name 2", "name 3" and so on, the number before the
/// extension: the first at which there is nothing. Nil for nil.
Ref<NSString> uniqueFilePathForName_inDirectory(NSFileManager* self, NSString* name,
                                                NSString* directory);

/// Changes the attributes of everything below a directory: `directoryAttributes` for it and the
/// directories in it, `attributes` for all else; links are followed. Goes on after failures and
/// answers the paths of the entries that failed, never nil.
///
/// A handler that answers `fileManager:willChangePath:percentComplete:` is sent it before the first
/// of every 20 entries, with this manager, the path, and a `float` between 0 and 1 that says how
/// much is done.
Ref<NSArray> changeFileAttributes_directoryAttributes_inDirectory_handler(
    NSFileManager* self, NSDictionary* attributes, NSDictionary* directoryAttributes,
    NSString* directory, NSObject* handler);

/// Whether there is nothing in a directory but entries that are to be ignored, by path or by name,
/// and directories that are empty in this sense. False for what is no directory, a link to one
/// included, and for one that cannot be read. The collections are anything that answers
/// `containsObject:`, or nil.
bool isDirectoryEmpty_ignoringPaths_ignoringFilesNamed(NSFileManager* self, NSString* path,
                                                       NSObject* paths, NSObject* names);

}  // namespace qz

#pragma GCC visibility pop
