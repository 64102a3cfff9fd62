/// @file
/// Private: user defaults on the command line.
#pragma once

#include "Platform/Runtime/Ref.h"

#pragma GCC visibility push(default)
namespace qz {
class NSArray;
class NSDictionary;
}  // namespace qz
#pragma GCC visibility pop

namespace qz::detail {

/// The values that "-name value" gives among the words of a command line, the first of which is the
/// program's name. Of a name that comes twice the last counts.
Ref<NSDictionary> defaultsOfArguments(NSArray* words);

}  // namespace qz::detail
