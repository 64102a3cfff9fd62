/// @file
/// Private: which languages the user reads, and which of those that there are fits them.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qz::detail {

/// A locale's language as a tag: "de_AT.UTF-8" is "de-AT", "sr_RS@latin" is "sr-Latn-RS". Empty for
/// "C", "POSIX" and what is no locale's name.
std::string languageOfLocale(std::string_view locale);

/// The tags that the environment asks for, the best first: those of LANGUAGE, a list with colons,
/// and then the first that is set of LC_ALL, LC_MESSAGES and LANG. None when that last one is
/// "C" or "POSIX" or none is set; LANGUAGE counts for nothing then. `variable` answers the value
/// of a variable, null for one that is not set.
std::vector<std::string> languagesOfEnvironment(
    const std::function<const char*(const char* name)>& variable);

/// The elements of `available` that fit `language`, the best first: itself, then the same language
/// (and script) without the region. "zh-TW" finds "zh-Hant", never "zh-Hans" or plain "zh", which
/// is written otherwise. Case does not matter, and "_" counts as "-".
std::vector<std::string> fittingLocalizations(std::string_view language,
                                              const std::vector<std::string>& available);

/// What the process prefers: what was set, else what the environment asks for. Any thread.
std::vector<std::string> preferredLanguages();

/// No value goes back to the environment, which is read anew.
void setPreferredLanguages(std::optional<std::vector<std::string>> languages);

}  // namespace qz::detail
