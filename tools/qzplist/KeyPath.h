// Ways from the root of a property list to a value: keys and indices joined by ".".
//
// "servers.0.name" is the entry "name" of the first element of "servers". A "\" before a "." or
// another "\" makes it part of a key. The empty path is the root.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Platform/Runtime/NSObject.h"

namespace qz::tool {

using KeyPath = std::vector<std::string>;

KeyPath parseKeyPath(std::string_view text);

// The value at the end. Like those below, it fails for a path that leads nowhere.
Ref<NSObject> valueAt(NSObject* root, const KeyPath& path);

// Puts `value` at the end and answers the root, which is another one for the empty path. Entries
// that are missing on the way become Dictionaries; an index equal to the count appends. The list
// has mutable containers.
Ref<NSObject> settingValueAt(NSObject* root, const KeyPath& path, NSObject* value);

// Takes the entry or element at the end away.
void removeValueAt(NSObject* root, const KeyPath& path);

}  // namespace qz::tool
