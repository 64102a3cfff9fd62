/// @file
/// What a file manager tells about files, and may change: the keys of attribute Dictionaries.
///
///     Ref<NSDictionary> about = manager->fileAttributesAtPath_traverseLink(path, true);
///     std::uint64_t size = fileSize(about);
///     Ref<NSDate> changed = about->fileModificationDate();
#pragma once

#include <cstdint>

#include "Platform/Collections/NSDictionary.h"
#include "Platform/Values/NSDate.h"
#include "Platform/Values/NSString.h"

#pragma GCC visibility push(default)

namespace qz {

// Keys; each one's value is its name. Those marked with * can be changed.

/// One of the kinds below, a String.
inline NSString* const NSFileType = detail::literal<"NSFileType">();
/// Bytes, a Number.
inline NSString* const NSFileSize = detail::literal<"NSFileSize">();
/// * When the contents were last changed, a Date.
inline NSString* const NSFileModificationDate = detail::literal<"NSFileModificationDate">();
/// * When the file was made, a Date; absent where the file system does not know. Linux cannot
/// change what the file system keeps, so a date that was set lies in the extended attribute
/// "user.qz.creation-date" (seconds, ".", nine digits, in ASCII), which is read first. Not every
/// file has one of its own: links and devices do not.
inline NSString* const NSFileCreationDate = detail::literal<"NSFileCreationDate">();
/// * The lowest twelve bits of the mode, a Number.
inline NSString* const NSFilePosixPermissions = detail::literal<"NSFilePosixPermissions">();
/// * The owner, a Number, and his name, a String that is absent when he has none. When both are to
/// be set, the number counts.
inline NSString* const NSFileOwnerAccountID = detail::literal<"NSFileOwnerAccountID">();
inline NSString* const NSFileOwnerAccountName = detail::literal<"NSFileOwnerAccountName">();
/// * The same for the group.
inline NSString* const NSFileGroupOwnerAccountID = detail::literal<"NSFileGroupOwnerAccountID">();
inline NSString* const NSFileGroupOwnerAccountName =
    detail::literal<"NSFileGroupOwnerAccountName">();
/// How many names the file has, a Number.
inline NSString* const NSFileReferenceCount = detail::literal<"NSFileReferenceCount">();
/// Which file system it is on, and which file it is there, Numbers.
inline NSString* const NSFileSystemNumber = detail::literal<"NSFileSystemNumber">();
inline NSString* const NSFileSystemFileNumber = detail::literal<"NSFileSystemFileNumber">();
/// Of a device alone: which one it stands for, a Number.
inline NSString* const NSFileDeviceIdentifier = detail::literal<"NSFileDeviceIdentifier">();

/// Kinds of files, under NSFileType; each one's value is its name.
inline NSString* const NSFileTypeRegular = detail::literal<"NSFileTypeRegular">();
inline NSString* const NSFileTypeDirectory = detail::literal<"NSFileTypeDirectory">();
inline NSString* const NSFileTypeSymbolicLink = detail::literal<"NSFileTypeSymbolicLink">();
inline NSString* const NSFileTypeBlockSpecial = detail::literal<"NSFileTypeBlockSpecial">();
inline NSString* const NSFileTypeCharacterSpecial = detail::literal<"NSFileTypeCharacterSpecial">();
inline NSString* const NSFileTypeSocket = detail::literal<"NSFileTypeSocket">();
inline NSString* const NSFileTypePipe = detail::literal<"NSFileTypePipe">();
inline NSString* const NSFileTypeUnknown = detail::literal<"NSFileTypeUnknown">();

/// Reading an attribute Dictionary; each answers by Selector too. 0 or nil for what is not there,
/// is of another class, and for nil.
std::uint64_t fileSize(NSDictionary* self);
Ref<NSString> fileType(NSDictionary* self);
Ref<NSDate> fileCreationDate(NSDictionary* self);
std::uint32_t filePosixPermissions(NSDictionary* self);
std::uint32_t fileOwnerAccountID(NSDictionary* self);
Ref<NSString> fileOwnerAccountName(NSDictionary* self);
std::uint32_t fileGroupOwnerAccountID(NSDictionary* self);
Ref<NSString> fileGroupOwnerAccountName(NSDictionary* self);

namespace detail {
/// Enters these operations on NSDictionary.
void registerFileAttributes();
}  // namespace detail

}  // namespace qz

#pragma GCC visibility pop
