/// @file
/// Private: the words of keyed archives.
#pragma once

#include <cstdint>

#include "Platform/Values/NSString.h"

namespace qz::detail::archive {

inline constexpr std::int32_t version = 1;
inline constexpr unsigned deepest = 1000;

inline NSString* const versionKey = literal<"$version">();
inline NSString* const objectsKey = literal<"$objects">();
inline NSString* const topKey = literal<"$top">();
inline NSString* const classKey = literal<"$class">();
inline NSString* const nullObject = literal<"$null">();
inline NSString* const rootKey = literal<"root">();

// Of collections, and of texts and bytes that can be changed.
inline NSString* const keysKey = literal<"NS.keys">();
inline NSString* const elementsKey = literal<"NS.objects">();
inline NSString* const contentsKey = literal<"NS.contents">();

/// Raises NSInvalidArgumentException for nil and for what begins as the words above do.
void requireKey(NSString* key, const char* operation);

}  // namespace qz::detail::archive
