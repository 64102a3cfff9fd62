/// @file
/// Private: property lists and string tables in their old text form.
///
///     /* Shown when a folder cannot be made. */
///     "Could not create directory at %@" = "%@ konnte nicht angelegt werden";
///     sizes = (1, 2, { unit = "\U00b5m"; });
///
/// - A string is quoted by " or ', or is a plain word of letters, digits and _ $ / : . - +
/// - In quotes stand \a \b \f \n \r \t \v, up to three octal digits and up to four hexadecimal ones
///   behind \U or \u (both a code unit), and a backslash before anything else stands for that.
/// - Arrays are in parentheses, with commas between the elements and perhaps behind the last.
/// - Data are hexadecimal digits between < and >, with blanks anywhere between two bytes.
/// - Dictionaries are in braces; each entry ends in a semicolon. `key;` means `key = key;`. In a
///   table a key that comes again replaces the entry.
/// - Around a table, which is a Dictionary, the braces may be left out.
/// - Comments are as in C++.
#pragma once

#include <cstdint>
#include <string_view>

#include "Platform/Runtime/NSObject.h"
#include "Platform/System/detail/PropertyListFault.h"

#pragma GCC visibility push(default)
namespace qz {
class NSDictionary;
class NSString;
}  // namespace qz
#pragma GCC visibility pop

namespace qz::detail {

/// What is read besides the text itself.
struct OldStyleOptions {
  std::uint32_t mutability = 0;  ///< of NSPropertyListMutabilityOptions
  bool isTable = true;           ///< may be empty, and a key may come again
};

/// The text of a file's bytes: UTF-16 with a byte-order mark, otherwise UTF-8, marked or not. Nil
/// for bytes that are neither, and then `fault` says where.
Ref<NSString> textOfFileBytes(std::string_view bytes, PropertyListFault* fault);

/// Strings, Data, Arrays and Dictionaries as the text writes them. Nil for any other text, and then
/// `fault` says where it goes wrong. An empty text (blanks and comments count for nothing) is an
/// empty table.
Ref<NSObject> readOldStylePropertyList(std::u16string_view text, const OldStyleOptions& options,
                                       PropertyListFault* fault);

/// The same of a text that must be a Dictionary, and if `onlyStrings`, one of Strings.
Ref<NSDictionary> readOldStyleDictionary(std::string_view bytes, bool onlyStrings,
                                         PropertyListFault* fault);

}  // namespace qz::detail
