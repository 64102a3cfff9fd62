// Values as people read and write them.
#pragma once

#include <string>
#include <string_view>

#include "Platform/Runtime/NSObject.h"

namespace qz::tool {

// A list as text, one entry or element a line, kinds told apart:
//
//     {
//       "name": "Ada"
//       "marks": [
//         1
//         2.5
//       ]
//       "key": <0fbd77>
//       "since": 2024-02-29T12:00:00Z
//     }
std::string shown(NSObject* list);

// What a script wants: a String as it is, anything else as shown.
std::string plain(NSObject* value);

// The value of a type that a text says: string, integer, real, bool, date, data (in base 64), array
// or dictionary (in any format of property lists). Fails for a text that is no such value; an
// unknown type is misuse.
Ref<NSObject> parsedValue(std::string_view type, const std::string& text);

}  // namespace qz::tool
