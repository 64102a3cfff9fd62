/// @file
/// Indexing what an enumerator walks over. The receiver must not be nil.
#pragma once

#include "Platform/Collections/NSEnumerator.h"
#include "Platform/Collections/NSMutableDictionary.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

/// The Objects that are left, each under its own value at `keyPath`; of several with equal values
/// the last one stays. An Object whose value is nil raises NSInvalidArgumentException.
///
///     auto byName = dictionaryIndexedByKeyPath(people->objectEnumerator(), "name"_ns);
Ref<NSMutableDictionary> dictionaryIndexedByKeyPath(NSEnumerator* self, NSString* keyPath);

}  // namespace qz

#pragma GCC visibility pop
