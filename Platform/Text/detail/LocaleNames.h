/// @file
/// Private: locales between the environment, NSLocale and ICU.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "Platform/Text/NSLocale.h"

namespace qz::detail {

/// The identifier of what the environment asks for in a category ("LC_TIME", or null): the first
/// that is set of LC_ALL, the category and LANG. "en_US_POSIX" for "C", "POSIX" and nothing.
std::string localeOfEnvironment(const char* category,
                                const std::function<const char*(const char* name)>& variable);

/// The process's locale for numbers and for dates: read from the environment once. Any thread.
Ref<NSLocale> localeForNumbers();
Ref<NSLocale> localeForDates();

}  // namespace qz::detail
