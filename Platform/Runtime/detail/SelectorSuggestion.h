/// @file
/// Private: what somebody may have meant who named an operation that is not there.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Platform/Runtime/Selector.h"

namespace qz::detail {

/// "; is objectAtIndex: meant?": of the candidates, the one that differs from `name` in the fewest
/// letters, when these are few for its length; else nothing.
std::string suggestionFor(std::string_view name, const std::vector<Selector>& candidates);

}  // namespace qz::detail
