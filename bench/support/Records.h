/// @file
/// The property list that is read, written and compressed.
#pragma once

#include "Platform/Collections/NSArray.h"

namespace qz::bench {

/// 12,000 records such as an address book has, with every kind of value: about 5 MB of XML. Made
/// once, and there to the end.
NSArray* records();

}  // namespace qz::bench
