#include "Platform/System/detail/Languages.h"

#include <unicode/uloc.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <mutex>

namespace qz::detail {
namespace {

constexpr std::size_t longestTag = 64;

bool isTag(std::string_view text) {
  return !text.empty() && text.size() <= longestTag &&
         std::all_of(text.begin(), text.end(), [](char c) {
           return std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '_';
         });
}

struct Tag {
  std::string language, script, region;

  std::string withScript() const { return script.empty() ? language : language + "-" + script; }
  std::string text() const { return region.empty() ? withScript() : withScript() + "-" + region; }
};

template <class Ask>
std::string ask(Ask function, const std::string& locale) {
  char buffer[2 * longestTag];
  UErrorCode status = U_ZERO_ERROR;
  const int32_t length = function(locale.c_str(), buffer, sizeof buffer, &status);
  if (U_FAILURE(status) || status == U_STRING_NOT_TERMINATED_WARNING) return "";
  return std::string(buffer, static_cast<std::size_t>(length));
}

Tag parse(const std::string& locale) {
  return {ask(&uloc_getLanguage, locale), ask(&uloc_getScript, locale),
          ask(&uloc_getCountry, locale)};
}

// With the script and the region that most who write just this much mean.
Tag complete(const std::string& tag) { return parse(ask(&uloc_addLikelySubtags, tag)); }

std::string folded(std::string text) {
  for (char& c : text) {
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (c == '_') c = '-';
  }
  return text;
}

std::string scriptOfModifier(std::string_view modifier) {
  if (modifier == "latin") return "Latn";
  if (modifier == "cyrillic") return "Cyrl";
  if (modifier == "devanagari") return "Deva";
  return "";
}

struct Preferences {
  std::mutex mutex;
  std::optional<std::vector<std::string>> chosen;
  std::optional<std::vector<std::string>> ofEnvironment;
};
Preferences& preferences() {
  static auto* const common = new Preferences;
  return *common;
}

}  // namespace

std::string languageOfLocale(std::string_view locale) {
  const std::size_t at = locale.find('@');
  const std::string_view modifier = at == locale.npos ? "" : locale.substr(at + 1);
  const std::string name(locale.substr(0, locale.find_first_of(".@")));
  if (!isTag(name) || name == "C" || name == "POSIX") return "";
  Tag tag = parse(name);
  if (tag.language.empty()) return "";
  if (tag.script.empty()) tag.script = scriptOfModifier(modifier);
  return tag.text();
}

std::vector<std::string> languagesOfEnvironment(
    const std::function<const char*(const char* name)>& variable) {
  std::string locale;
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* value = variable(name);
    if (value == nullptr || *value == '\0') continue;
    locale = value;
    break;
  }
  if (locale.empty() || locale == "C" || locale == "POSIX") return {};

  std::vector<std::string> languages;
  const auto add = [&languages](std::string_view name) {
    std::string tag = languageOfLocale(name);
    if (!tag.empty() && std::find(languages.begin(), languages.end(), tag) == languages.end())
      languages.push_back(std::move(tag));
  };
  const char* list = variable("LANGUAGE");
  std::string_view rest = list == nullptr ? "" : list;
  while (!rest.empty()) {
    const std::size_t colon = std::min(rest.find(':'), rest.size());
    add(rest.substr(0, colon));
    rest.remove_prefix(std::min(colon + 1, rest.size()));
  }
  add(locale);
  return languages;
}

std::vector<std::string> fittingLocalizations(std::string_view language,
                                              const std::vector<std::string>& available) {
  if (!isTag(language)) return {};
  const Tag asked = parse(std::string(language));
  const Tag full = complete(asked.text());
  std::vector<std::string> fitting{std::string(language)};
  if (!asked.region.empty()) {
    fitting.push_back(full.withScript() + "-" + asked.region);
    fitting.push_back(full.language + "-" + asked.region);
  }
  fitting.push_back(full.withScript());
  if (complete(full.language).script == full.script) fitting.push_back(full.language);

  std::vector<std::string> found;
  for (const std::string& tag : fitting)
    for (const std::string& each : available)
      if (folded(each) == folded(tag) && std::find(found.begin(), found.end(), each) == found.end())
        found.push_back(each);
  return found;
}

std::vector<std::string> preferredLanguages() {
  Preferences& common = preferences();
  const std::lock_guard lock(common.mutex);
  if (common.chosen) return *common.chosen;
  if (!common.ofEnvironment) common.ofEnvironment = languagesOfEnvironment(&std::getenv);
  return *common.ofEnvironment;
}

void setPreferredLanguages(std::optional<std::vector<std::string>> languages) {
  Preferences& common = preferences();
  const std::lock_guard lock(common.mutex);
  common.chosen = std::move(languages);
  common.ofEnvironment.reset();
}

}  // namespace qz::detail
