#include "Platform/System/detail/OsRelease.h"

#include <algorithm>

#include "Platform/System/detail/FileBytes.h"
#include "Platform/Values/NSString.h"

namespace qz::detail {

std::string osReleaseValue(std::string_view file, std::string_view name) {
  for (std::size_t at = 0; at < file.size();) {
    const std::size_t end = std::min(file.find('\n', at), file.size());
    std::string_view line = file.substr(at, end - at);
    at = end + 1;
    if (!line.starts_with(name) || line.substr(name.size()).substr(0, 1) != "=") continue;
    line.remove_prefix(name.size() + 1);
    const char quote = !line.empty() && (line[0] == '"' || line[0] == '\'') ? line[0] : '\0';
    if (quote != '\0') line.remove_prefix(1);
    std::string value;
    for (std::size_t i = 0; i < line.size() && (quote == '\0' || line[i] != quote); ++i) {
      if (line[i] == '\\' && quote != '\'' && i + 1 < line.size()) ++i;
      value += line[i];
    }
    return value;
  }
  return "";
}

Ref<NSString> osReleaseField(std::string_view name) {
  constexpr std::uint64_t limit = 1024 * 1024;
  auto file = bytesOfFile("/etc/os-release", limit);
  if (!file) file = bytesOfFile("/usr/lib/os-release", limit);
  if (!file) return nullptr;
  const std::string value = osReleaseValue(*file, name);
  return value.empty() ? nullptr : NSString::stringWithUTF8String(value);
}

}  // namespace qz::detail
