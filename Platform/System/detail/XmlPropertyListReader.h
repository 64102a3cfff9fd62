/// @file
/// Private: XML property lists, read.
///
///     <?xml version="1.0" encoding="UTF-8"?>
///     <plist version="1.0">
///     <dict>
///       <key>name</key> <string>Ada &amp; Grace</string>
///       <key>marks</key> <array><integer>1</integer><real>2.5</real><true/></array>
///       <key>since</key> <date>2024-02-29T12:00:00Z</date>
///       <key>seal</key> <data>D7131A==</data>
///     </dict>
///     </plist>
///
/// Attributes, comments, processing instructions and a document type without contents mean nothing.
#pragma once

#include <string>
#include <string_view>

#include "Platform/Runtime/Ref.h"
#include "Platform/System/detail/PropertyListFault.h"

#pragma GCC visibility push(default)
namespace qz {
class NSObject;
}
#pragma GCC visibility pop

namespace qz::detail {

/// Whether bytes without a byte-order mark begin as XML property lists do.
bool looksLikeXmlPropertyList(std::string_view bytes);

/// The encoding that the declaration names, if there is one, else "".
std::string encodingOfXmlDeclaration(std::string_view bytes);

/// The list in a UTF-8 text; nil when it is none, and then `fault` says why. `mutability` of
/// NSPropertyListMutabilityOptions.
Ref<NSObject> readXmlPropertyList(std::string_view text, std::uint32_t mutability,
                                  PropertyListFault* fault);

}  // namespace qz::detail
