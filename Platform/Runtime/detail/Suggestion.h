/// @file
/// Private: what somebody may have meant who named something that is not there. Each answer is the
/// end of a sentence, or empty.
#pragma once

#include <string>
#include <string_view>

#include "Platform/Runtime/Class.h"

namespace qz::detail {

/// For an operation that a class, or its Objects, lack: "; NSMutableArray has it" when a class
/// below does, else "; is objectAtIndex: meant?" for the nearest name that they have.
std::string suggestionForOperation(const Class* aClass, Selector selector, bool ofClass);

/// For a key that cannot be read or, `toSet`, not be set: "; it can be read, not set", or
/// "; is balance meant?" for the nearest of the keys.
std::string suggestionForKey(const Class* aClass, std::string_view key, bool toSet);

}  // namespace qz::detail
