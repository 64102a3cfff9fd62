/// @file
/// Private: prints a format's arguments.
#pragma once

#include <string_view>

#include "Platform/Values/NSStringFormat.h"
#include "Platform/Values/detail/UnitBuffer.h"

namespace qz::detail {

/// Adds to `out` what `format` and `arguments` print, by the rules of NSStringFormat.h.
void formatUnits(UnitBuffer& out, std::u16string_view format, FormatArguments arguments);

}  // namespace qz::detail
