// Collections of one-letter Strings, written as a text.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Platform/Collections/NSArray.h"
#include "Platform/Values/NSString.h"

namespace qz::test {

/// A new String for each letter.
inline std::vector<Ref<NSObject>> letters(std::string_view text) {
  std::vector<Ref<NSObject>> all;
  for (char each : text) all.push_back(NSString::stringWithUTF8String(std::string_view(&each, 1)));
  return all;
}

/// The elements' descriptions, one behind the other.
inline std::string text(NSObject* array) {
  return as<NSArray>(array)->componentsJoinedByString(nullptr)->UTF8String();
}

}  // namespace qz::test
