/// @file
/// Operations on files that answer an Error, walks over directories, and sizes.
///
///     if (Ref<NSError> error = removeFileAtPath(manager, path)) show(error);
///
/// What answers an Error answers nil for success and never raises. Texts are in the user's
/// language. A nil path counts as the empty one, which names nothing; as the directory above a
/// name, the empty path is the current one. Receivers must not be nil. NSFileManager-QZCopy.h has
/// the careful copy.
#pragma once

#include <cstdint>

#include "Platform/System/NSFileManager.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

class NSArray;
class NSDate;

/// The file manager that the current thread has for itself; made at its first call, and kept as
/// long as the thread lives.
Ref<NSFileManager> currentThreadFileManager();

/// The path as people are shown it: that which the names lead to by which
/// `componentsToDisplayForPath` calls it. The path itself when the manager cannot say, or there is
/// nothing.
Ref<NSString> displayPathForPath(NSFileManager* self, NSString* path);

// Types -------------------------------------------------------------------------------------------

/// What `objectTypeAtPath` answers.
enum QZObjectType : std::uint32_t {
  QZObjectTypeNone = 0,  ///< Nothing there, or it cannot be asked.
  QZObjectTypeRegularFile = 1,
  QZObjectTypeDirectory = 2,
  QZObjectTypeBlockDevice = 3,
  QZObjectTypeCharacterDevice = 4,
  QZObjectTypeSymbolicLink = 5,
  QZObjectTypeSocket = 6,
  QZObjectTypeNamedPipe = 7,
  QZObjectTypeBad = 8,  ///< There, but none of the above.
};

/// The kind of what is at the path, a QZObjectType; of a link itself, or with `traverse` of what it
/// leads to. The short form does not follow links.
std::uint32_t objectTypeAtPath_traverseLink(NSFileManager* self, NSString* path, bool traverse);
std::uint32_t objectTypeAtPath(NSFileManager* self, NSString* path);

/// Whether that kind is a directory. The short form does follow links.
bool isDirectoryAtPath_traverseLink(NSFileManager* self, NSString* path, bool traverse);
bool isDirectoryAtPath(NSFileManager* self, NSString* path);

// Sizes -------------------------------------------------------------------------------------------
// In bytes, of regular files; 0 for everything else, links to files included, and for what cannot
// be asked.

/// The length. Linux files have one fork, so both are the same.
std::uint64_t totalSizeOfFileAtPath(NSFileManager* self, NSString* path);
std::uint64_t dataForkSizeOfFileAtPath(NSFileManager* self, NSString* path);

/// What it takes on the disk: less than the length where it has holes.
std::uint64_t physicalSizeOfFileAtPath(NSFileManager* self, NSString* path);

// Making, removing, moving ------------------------------------------------------------------------

/// Makes a directory, and if asked those above it that are missing, each with `attributes`. False
/// at the first that cannot be made; those made before it stay.
bool createDirectoryAtPath_attributes_createParents(NSFileManager* self, NSString* path,
                                                    NSDictionary* attributes, bool createParents);

/// Makes a directory, and those above it that are missing. A directory that is there already is a
/// failure, "Could not create directory at …".
[[nodiscard]] Ref<NSError> createDirectoryAtPath(NSFileManager* self, NSString* path);

/// Removes a file, a link itself, or a directory with everything in it. The Error is that which the
/// shared QZFileManagerErrorHandler has afterwards.
[[nodiscard]] Ref<NSError> removeFileAtPath(NSFileManager* self, NSString* path);

/// Moves what is at `path` to a name at which there must be nothing. Failures come by way of the
/// shared handler and say "Unable to move from … to … (…)".
[[nodiscard]] Ref<NSError> movePath_toPath(NSFileManager* self, NSString* path,
                                           NSString* destination);

/// Gives the file at `path` a further name. A manager without `linkItemAtPath:toPath:error:` is
/// used through the shared handler, and the text is then that of a String table of its own.
[[nodiscard]] Ref<NSError> linkPath_toPath(NSFileManager* self, NSString* path,
                                           NSString* destination);

// Dates -------------------------------------------------------------------------------------------

/// Sets the modification date to now.
[[nodiscard]] Ref<NSError> touchFileAtPath(NSFileManager* self, NSString* path);

/// Sets the creation date, as NSFileCreationDate reads it; links followed. An Error where the file
/// system keeps no such attribute. The text is the application's: it is looked up in the main
/// bundle.
[[nodiscard]] Ref<NSError> setCreationDate_forFileAtPath(NSFileManager* self, NSDate* date,
                                                         NSString* path);

// Directories -------------------------------------------------------------------------------------

/// The paths of a directory's entries, `path` in front of each; nil when it cannot be read.
Ref<NSArray> pathsOfDirectoryContentsAtPath(NSFileManager* self, NSString* path);

/// How a walk treats directories. Any other value goes into them and tells of none.
enum QZRecursionType : std::int32_t {
  QZRecursionNone = 0,         ///< They are entries like others.
  QZRecursionFolderFirst = 1,  ///< Each before what is in it, the top first of all.
  QZRecursionFolderLast = 2,   ///< Each after what is in it, the top last of all.
};

/// Walks a directory, in the order in which the system lists it: for each entry, `target` is sent
/// `operation` with its full path and `object`. The first answer that is not nil ends the walk and
/// is its answer. Links count as what they lead to, so a recursive walk goes through links to
/// directories (and round in circles, until a path has more links than the system follows); a link
/// that leads nowhere is left out. A directory that cannot be read ends the walk with an Error,
/// "The directory … could not be read". Nil when the walk came to its end.
///
/// Memory grows with the depth alone. What `operation` raises passes through.
Ref<NSObject> iterateDirectory_recursionType_target_selector_withObject(
    NSFileManager* self, NSString* directory, std::int32_t type, NSObject* target,
    Selector operation, NSObject* object);

/// The same with folders first, or without going into them.
Ref<NSObject> iterateDirectory_recursively_target_selector_withObject(
    NSFileManager* self, NSString* directory, bool recursively, NSObject* target,
    Selector operation, NSObject* object);

}  // namespace qz

#pragma GCC visibility pop
