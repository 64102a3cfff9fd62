/// @file
/// Private: letting go of many Objects at once.
#pragma once

#include <cstddef>

#include "Platform/Runtime/NSObject.h"

#pragma GCC visibility push(default)

namespace qz::detail {

/// Takes one owner from each of `elements`, in order; nil entries are allowed.
///
/// A collection that goes away takes along the collections that only it holds, and so on. Below a
/// certain depth the rest waits until the outer ones are done, so that a chain of any length needs
/// little stack.
void releaseElements(NSObject* const* elements, std::size_t count) noexcept;

}  // namespace qz::detail

#pragma GCC visibility pop
