/// @file
/// What volume a file lies on. The receiver may be nil: it is not asked.
///
///     Ref<NSDictionary> volume = volumeAttributesForPath(manager, path);
///     Ref<NSObject> name = volume->objectForKey(QZVolumeName);
#pragma once

#include "Platform/System/NSFileManager.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

class NSDictionary;

// Keys of a volume's attributes; each one's value is its name.

/// Where it is mounted, a String.
inline NSString* const QZVolumeMountPath = detail::literal<"QZVolumeMountPath">();
/// Its label, a String that ends in a zero unit, which is counted as part of it.
inline NSString* const QZVolumeName = detail::literal<"QZVolumeName">();
/// When its file system was made, an NSDate of whole seconds.
inline NSString* const QZVolumeCreationDate = detail::literal<"QZVolumeCreationDate">();
/// For callers that look for it: no attributes have it.
inline NSString* const QZVolumeIsWritable = detail::literal<"QZVolumeIsWritable">();

/// The mount path of the volume that what is at `path` lies on, symbolic links followed. Nil when
/// there is nothing at the path, when the system refuses, and for nil.
Ref<NSString> volumeMountPathForFilePath(NSFileManager* self, NSString* path);

/// The attributes of that volume: its mount path; if it has a label, that too; and if it has both
/// a label and a time, the time. Nil where there is no mount path, and when the volume tells
/// nothing.
Ref<NSDictionary> volumeAttributesForPath(NSFileManager* self, NSString* path);

}  // namespace qz

#pragma GCC visibility pop
