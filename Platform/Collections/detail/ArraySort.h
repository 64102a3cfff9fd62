/// @file
/// Private: the orders in which Arrays sort.
#pragma once

#include <span>

#include "Platform/Collections/NSArray.h"

namespace qz::detail {

// Each sorts borrowed pointers, stably; the caller keeps the Objects alive. What the comparison
// throws passes through, and leaves `elements` unusable.

void sortUsingFunction(std::span<NSObject*> elements, NSSortFunction compare, void* context);
void sortUsingSelector(std::span<NSObject*> elements, Selector selector);

/// Later descriptors decide between what the earlier ones hold equal. Each key is read at most
/// once from each element. A descriptor that is no NSSortDescriptor raises
/// NSInvalidArgumentException.
void sortUsingDescriptors(std::span<NSObject*> elements, NSArray* descriptors);

}  // namespace qz::detail
