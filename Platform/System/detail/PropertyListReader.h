/// @file
/// Private: property lists in whatever format they are.
#pragma once

#include <string_view>

#include "Platform/System/NSPropertyListSerialization.h"
#include "Platform/System/detail/OldStylePropertyList.h"

namespace qz::detail {

/// Recognises the format, which `format` is told, and reads. Nil for what is no list, and then
/// `fault` says why and where.
Ref<NSObject> readPropertyList(std::string_view bytes, const OldStyleOptions& options,
                               NSPropertyListFormat* format, PropertyListFault* fault);

}  // namespace qz::detail
