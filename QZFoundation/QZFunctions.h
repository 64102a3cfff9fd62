/// @file
/// Exported functions: messages in the user's language.
///
///     Ref<NSString> message =
///         QZLocalizedString("%d files copied"_ns, "Copy progress message"_ns, count);
#pragma once

#include "Platform/System/NSBundle.h"
#include "Platform/Values/NSString.h"
#include "QZFoundation/detail/Registration.h"

namespace qz {

namespace detail {
/// The text for `key`, or `key` itself when there is none; also for a nil bundle.
Ref<NSString> localizedFormat(NSString* key, NSString* table, NSBundle* bundle);
}  // namespace detail

/// Looks `key` up in a bundle's string table and uses the text found, or `key` itself when there is
/// none, as a format for `arguments`. A nil table is the default one; in a nil bundle there is no
/// text. A nil key gives the empty String. `comment` tells translators what the message is for and
/// does nothing. Any thread.
template <FormatValue... Args>
Ref<NSString> QZLocalizedStringFromTableInBundle(NSString* key, NSString* table, NSBundle* bundle,
                                                 [[maybe_unused]] NSString* comment,
                                                 const Args&... arguments) {
  return NSString::stringWithFormat(detail::localizedFormat(key, table, bundle), arguments...);
}

/// The same in the main bundle's default table.
template <FormatValue... Args>
Ref<NSString> QZLocalizedString(NSString* key, NSString* comment, const Args&... arguments) {
  return QZLocalizedStringFromTableInBundle(key, nullptr, NSBundle::mainBundle(), comment,
                                            arguments...);
}

}  // namespace qz
