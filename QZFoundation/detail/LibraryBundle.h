/// @file
/// Private: the library's own bundle, with the texts of its messages.
#pragma once

#include "Platform/System/NSBundle.h"

namespace qz::detail {

/// The identifier of the library's bundle.
inline NSString* const libraryBundleIdentifier = literal<"qz.QZFoundation">();

/// The library's bundle, whose default table has every message of the library:
///
///     QZLocalizedStringFromTableInBundle("Source file does not exist"_ns, nullptr,
///                                        detail::libraryBundle(), "File copy error message"_ns);
///
/// Nil when its directory is missing, which the diagnostic stream then says once; messages are
/// their keys in that case. Lives as long as the process. Any thread.
NSBundle* libraryBundle();

}  // namespace qz::detail
