/// @file
/// Private: the library's own bundle, with the texts of its messages.
#pragma once

#include <cerrno>

#include "Platform/System/NSBundle.h"
#include "QZFoundation/QZFunctions.h"

namespace qz::detail {

/// The identifier of the library's bundle.
inline NSString* const libraryBundleIdentifier = literal<"qz.QZFoundation">();

/// The library's bundle, whose default table has every message of the library. Nil when its
/// directory is missing, which the diagnostic stream then says once; messages are their keys in
/// that case. Lives as long as the process. Any thread.
NSBundle* libraryBundle();

/// A message of the library, in the user's language. Leaves `errno` alone.
///
///     message("Source file does not exist"_ns, "File copy error message"_ns);
template <FormatValue... Args>
Ref<NSString> message(NSString* key, NSString* comment, const Args&... arguments) {
  const int kept = errno;
  auto text =
      QZLocalizedStringFromTableInBundle(key, nullptr, libraryBundle(), comment, arguments...);
  errno = kept;
  return text;
}

}  // namespace qz::detail
