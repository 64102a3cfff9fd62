/// @file
/// Private: property lists, written. Each throws a PropertyListRefusal for what its format cannot
/// hold, and raises NSMallocException for more bytes than Data can have.
#pragma once

#include "Platform/Runtime/Ref.h"

#pragma GCC visibility push(default)
namespace qz {
class NSData;
class NSObject;
}  // namespace qz
#pragma GCC visibility pop

namespace qz::detail {

/// One element a line, levels indented by tabs.
Ref<NSData> writeXmlPropertyList(NSObject* list);

/// Version "00". Equal Strings, Numbers of one type, Dates, Data and UIDs are written once, and
/// each container once.
Ref<NSData> writeBinaryPropertyList(NSObject* list);

/// Text in ASCII.
Ref<NSData> writeOldStylePropertyList(NSObject* list);

}  // namespace qz::detail
