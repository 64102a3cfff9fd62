/// @file
/// Private: the operators of key paths, which make one value of a whole collection.
#pragma once

#include <string_view>

#include "Platform/Runtime/Ref.h"

#pragma GCC visibility push(default)
namespace qz {
class NSObject;
class NSString;
}  // namespace qz
#pragma GCC visibility pop

namespace qz::detail {

/// Whether a key path has an operator in it: a key that begins with "@".
constexpr std::size_t operatorStart(std::u16string_view path) noexcept {
  if (path.starts_with(u'@')) return 0;
  const std::size_t dot = path.find(u".@");
  return dot == path.npos ? dot : dot + 1;
}

/// The value of `path`, which begins with "@", of an Array or a Set: what the operator makes of the
/// elements' values at the rest of the path, or of the elements themselves where there is no rest.
/// Elements that are Null and values that are nil or Null are left out.
///
/// - `@count`: how many elements; the rest of the path goes on from that Number.
/// - `@sum`: exact for integers as far as 64 bits reach, else a double; 0 of nothing. Values are
///   Numbers, or what answers `doubleValue`, such as Strings.
/// - `@avg`: a double; nil of nothing.
/// - `@min`, `@max`: by `compare:`, the first of several that are the same; nil of nothing.
/// - `@unionOfObjects`: an Array of the values, in order; `@distinctUnionOfObjects`: each of equal
///   ones once, as a Set when the collection is one.
/// - `@unionOfArrays`, `@unionOfSets`: the same of values that are collections themselves, one
///   behind the other; `@distinctUnionOfArrays` and `@distinctUnionOfSets`. Another value raises
///   NSInvalidArgumentException.
///
/// Any other key after the "@" names a property of the collection itself, as in "@lastObject";
/// raises NSUndefinedKeyException when it has no such property.
Ref<NSObject> valueForOperatorPath(NSObject* collection, NSString* path);

}  // namespace qz::detail
