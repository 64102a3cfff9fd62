/// @file
/// Trees of Objects, in which an index path leads to a node.
///
/// Every Object is a node. Its children are the Array under a child key, its value is what stands
/// at a key path:
///
///     // 1.0: the second folder's first file
///     Ref<NSIndexPath> path = indexPathForValues_valueKeyPath_childKey(
///         root, names, "name"_ns, "children"_ns);
///
/// Both directions leave the root's own value out. They go as far as the path or the list of values
/// does, so a tree that contains itself ends too. Children of another class than an Array raise
/// NSInvalidArgumentException; a node without them has none. A key that a node does not know raises
/// NSUndefinedKeyException.
#pragma once

#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Values/NSIndexPath.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

/// The values of the nodes along the path, from the root's child on: Null for a value that is nil,
/// and one Null, the last, where the path leaves the tree. Empty for a nil root or path.
Ref<NSMutableArray> valuePathForIndexPath_valueKeyPath_childKey(NSObject* self, NSIndexPath* path,
                                                                NSString* valueKeyPath,
                                                                NSString* childKey);

/// The same for each of several paths, in order.
Ref<NSArray> valuePathsForIndexPaths_valueKeyPath_childKey(NSObject* self, NSArray* paths,
                                                           NSString* valueKeyPath,
                                                           NSString* childKey);

/// The path along the first child with the first value, its first child with the second, and so on;
/// nil when there is none. Children that do not know the key path are passed over. As long as
/// `values`; empty for none.
Ref<NSIndexPath> indexPathForValues_valueKeyPath_childKey(NSObject* self, NSArray* values,
                                                          NSString* valueKeyPath,
                                                          NSString* childKey);

/// The same for each of several Arrays of values, in order, without those for which there is none.
Ref<NSArray> indexPathsForValuePaths_valueKeyPath_childKey(NSObject* self, NSArray* valuePaths,
                                                           NSString* valueKeyPath,
                                                           NSString* childKey);

}  // namespace qz

#pragma GCC visibility pop
