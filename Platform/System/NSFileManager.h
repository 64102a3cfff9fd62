/// @file
/// File managers: operations on files and directories.
#pragma once

#include <cstdint>

#include "Platform/Runtime/Derives.h"
#include "Platform/System/NSDirectoryEnumerator.h"
#include "Platform/System/NSFileAttributes.h"
#include "Platform/Values/NSError.h"
#include "Platform/Values/NSString.h"

#pragma GCC visibility push(default)

namespace qz {

class NSArray;
class NSData;

/// Copies, moves, links, removes, lists and describes what the file system has.
///
///     auto manager = NSFileManager::defaultManager();
///     Ref<NSError> error;
///     if (!manager->copyItemAtPath_toPath_error(from, to, &error)) show(error);
///
/// Paths are Strings; `NSString::fileSystemRepresentation` says how names that are no text are
/// written, which are handled like any other. Relative paths begin at the current directory,
/// slashes at the end mean nothing, nil and the empty path name nothing (ENOENT), and what no file
/// can be called is EINVAL.
///
/// There are two generations of operations. Both tell what the system said in `errno`.
/// - Those with `error:` answer whether they succeeded. When not, they put an Error in
///   NSPOSIXErrorDomain, with the path under NSFilePathErrorKey, in the place given, which may be
///   null; it is left alone otherwise.
/// - Those with `handler:` send a handler, which may be nil, `fileManager:shouldProceedAfterError:`
///   for each failure, with this manager and a Dictionary: "Error" is a text for people, "Path"
///   what it concerns. When that answers true, the operation goes on with what is left. They answer
///   whether nothing failed. What the handler raises passes through.
///
/// Nothing here overwrites what is there, and nothing raises. A manager may be used by any number
/// of threads at a time.
class NSFileManager : public Derives<NSFileManager, NSObject> {
 public:
  static void describe(ClassDescription<NSFileManager>& is);

  /// The same for the whole process.
  static Ref<NSFileManager> defaultManager();

  // Asking ----------------------------------------------------------------------------------------

  /// Whether there is something at the path, links followed: a link that leads nowhere is nothing.
  virtual bool fileExistsAtPath(NSString* path) const;

  /// The same, and whether it is a directory, which is false when there is nothing. The place may
  /// be null.
  virtual bool fileExistsAtPath_isDirectory(NSString* path, bool* isDirectory) const;

  /// Whether this process may read, write or execute it (or search it, if it is a directory).
  bool isReadableFileAtPath(NSString* path) const;
  bool isWritableFileAtPath(NSString* path) const;
  bool isExecutableFileAtPath(NSString* path) const;

  /// What NSFileAttributes.h lists, of a link itself or of what it leads to. Nil with `errno`.
  virtual Ref<NSDictionary> fileAttributesAtPath_traverseLink(NSString* path, bool follow) const;
  /// Of a link itself.
  Ref<NSDictionary> attributesOfItemAtPath_error(NSString* path, Ref<NSError>* error) const;

  /// Where a symbolic link leads, as it is written there. Nil for what is none.
  Ref<NSString> destinationOfSymbolicLinkAtPath_error(NSString* path, Ref<NSError>* error) const;
  Ref<NSString> pathContentOfSymbolicLinkAtPath(NSString* path) const;

  /// Whether both are files with the same bytes, links to the same place, or directories with the
  /// same names and equal contents under them. False when one cannot be read.
  bool contentsEqualAtPath_andPath(NSString* path, NSString* other) const;

  // Listing ---------------------------------------------------------------------------------------

  /// The names in a directory, without "." and "..", in the order the file system has them. Nil
  /// when it cannot be read, or not to its end.
  virtual Ref<NSArray> directoryContentsAtPath(NSString* path) const;
  Ref<NSArray> contentsOfDirectoryAtPath_error(NSString* path, Ref<NSError>* error) const;

  /// All entries below a directory, at every depth, as paths relative to it; see
  /// NSDirectoryEnumerator, which alone tells of directories below that cannot be read. Nil, with
  /// `errno`, when the directory itself cannot.
  virtual Ref<NSDirectoryEnumerator> enumeratorAtPath(NSString* path) const;
  Ref<NSArray> subpathsAtPath(NSString* path) const;

  // Making ----------------------------------------------------------------------------------------

  /// One directory, with `attributes`, which may be nil. False, with `errno`, also when something
  /// is there already.
  virtual bool createDirectoryAtPath_attributes(NSString* path, NSDictionary* attributes);

  /// With the directories above it if `parents`, and then one that is there already is as good as
  /// new. The attributes are for those that are made.
  bool createDirectoryAtPath_withIntermediateDirectories_attributes_error(NSString* path,
                                                                          bool parents,
                                                                          NSDictionary* attributes,
                                                                          Ref<NSError>* error);

  /// A file with the bytes of `contents` (nil: none) in place of the file that is there. The new
  /// one appears when it is whole. False with `errno`.
  bool createFileAtPath_contents_attributes(NSString* path, NSData* contents,
                                            NSDictionary* attributes);

  /// A symbolic link at `path` that leads to `destination`, which need not exist.
  bool createSymbolicLinkAtPath_withDestinationPath_error(NSString* path, NSString* destination,
                                                          Ref<NSError>* error);
  bool createSymbolicLinkAtPath_pathContent(NSString* path, NSString* destination);

  // Copying, moving, linking, removing ------------------------------------------------------------

  /// Copies a file, or a directory with everything in it, to a name at which there must be nothing.
  /// Kept are the contents with their holes, permissions, times to the nanosecond, owner and group
  /// where this user may give them, extended attributes and access control lists; links stay links,
  /// and names that share one file in a directory share one in its copy. Blocks are shared where
  /// the file system can.
  ///
  /// A single file appears under its name when it is whole: not even a process that is killed
  /// leaves half of one. (Where the file system cannot do that, a failed copy is removed.) Of a
  /// directory, what was copied until a failure stays, and has no half files in it. Large
  /// directories are copied by several threads; handlers are called on this one. A directory is not
  /// copied into itself (EINVAL).
  virtual bool copyPath_toPath_handler(NSString* from, NSString* to, NSObject* handler);
  virtual bool copyItemAtPath_toPath_error(NSString* from, NSString* to, Ref<NSError>* error);

  /// Gives it another name, at which there must be nothing. To another file system it is copied and
  /// then removed; if the copy fails, what was copied is removed and all is as before.
  virtual bool movePath_toPath_handler(NSString* from, NSString* to, NSObject* handler);
  virtual bool moveItemAtPath_toPath_error(NSString* from, NSString* to, Ref<NSError>* error);

  /// Gives a file, or a link itself, a further name. Directories have only one (EPERM).
  virtual bool linkPath_toPath_handler(NSString* from, NSString* to, NSObject* handler);
  virtual bool linkItemAtPath_toPath_error(NSString* from, NSString* to, Ref<NSError>* error);

  /// Removes a file, a link itself, or a directory with everything in it, without ever going
  /// through a link. "/" and paths that end with "." or ".." are refused.
  virtual bool removeFileAtPath_handler(NSString* path, NSObject* handler);
  virtual bool removeItemAtPath_error(NSString* path, Ref<NSError>* error);

  /// Changes those of the attributes that can be changed (see NSFileAttributes.h), links followed.
  /// Others, and Objects of a wrong class, count for nothing. False with `errno`.
  virtual bool changeFileAttributes_atPath(NSDictionary* attributes, NSString* path);
  bool setAttributes_ofItemAtPath_error(NSDictionary* attributes, NSString* path,
                                        Ref<NSError>* error);

  // For people ------------------------------------------------------------------------------------

  /// The names that lead to what is at the path, beginning with that of its volume: "Root", "usr",
  /// "lib" (see NSStartupVolumeName). A ":" in a name is shown as "/". Nil when there is nothing.
  virtual Ref<NSArray> componentsToDisplayForPath(NSString* path) const;

  /// The last of these; of the path's own text when there is nothing at it.
  Ref<NSString> displayNameAtPath(NSString* path) const;

  // The current directory -------------------------------------------------------------------------

  /// Of the whole process. Nil when it has been removed.
  Ref<NSString> currentDirectoryPath() const;
  bool changeCurrentDirectoryPath(NSString* path);
};

/// The callback of handlers. Sent by Selector, so that any Object can be one; what does not answer
/// it counts as answering false.
///
///     bool fileManager_shouldProceedAfterError(NSFileManager* manager, NSDictionary* failure);
///     is.method<&Handler::fileManager_shouldProceedAfterError>(
///         "fileManager:shouldProceedAfterError:");
///
/// Keys of the Dictionary, whose values are Strings.
inline NSString* const NSFileManagerErrorTextKey = detail::literal<"Error">();
inline NSString* const NSFileManagerErrorPathKey = detail::literal<"Path">();

}  // namespace qz

#pragma GCC visibility pop
