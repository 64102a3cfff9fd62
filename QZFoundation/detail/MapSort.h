/// @file
/// Private: from Objects to the permutation that sorts them.
#pragma once

#include <cstdint>
#include <span>

#include "Platform/Runtime/NSObject.h"
#include "Platform/Runtime/Selector.h"

namespace qz::detail {

/// Sorts `objects` by sending `selector` with the pivot and `extra`, and moves `indices` along.
void sortBySending(std::span<NSObject*> objects, std::int32_t* indices, Selector selector,
                   NSObject* extra);

/// Moves `indices` as `sortBySending` with `compare:` would, without sending anything, when all of
/// `values` are Numbers or all are Strings that still have their own `compare:`, and their keys
/// can be compared as words. Answers false, and leaves `indices` alone, when they are not.
bool sortByKeys(std::span<NSObject* const> values, std::int32_t* indices);

/// Whether `compare:usingKeyPath:` of `object` is the one that this library gave to all Objects.
bool comparesByKeyPath(const NSObject* object);

}  // namespace qz::detail
