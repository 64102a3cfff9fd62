/// @file
/// Private: searches that several operations share. Ranges have been checked.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "Platform/Values/NSRange.h"
#include "Platform/Values/detail/CodePointSet.h"

#pragma GCC visibility push(default)
namespace qz {
class NSCharacterSet;
}
#pragma GCC visibility pop

namespace qz::detail {

/// Where `part` occurs, as the compare options ask; `notFoundRange` when it does not.
NSRange rangeOfPart(std::u16string_view text, std::u16string_view part, std::uint32_t options,
                    NSRange within);

/// All places, none overlapping another, in the order of the text.
std::vector<NSRange> rangesOfPart(std::u16string_view text, std::u16string_view part,
                                  std::uint32_t options, NSRange within);

/// The first character that belongs to `set`; of the options, backwards and anchored count.
NSRange rangeOfMember(std::u16string_view text, const CodePointSet& set,
                      std::uint32_t options) noexcept;

/// `set`, which must not be nil: raises NSInvalidArgumentException naming the operation.
const NSCharacterSet& requireSet(NSCharacterSet* set, const char* operation);

}  // namespace qz::detail
