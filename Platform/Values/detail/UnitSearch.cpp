#include "Platform/Values/detail/UnitSearch.h"

namespace qz::detail {

std::vector<std::uint32_t> repeatedPrefixes(std::u16string_view part) {
  std::vector<std::uint32_t> table(part.size(), 0);
  std::uint32_t matched = 0;
  for (std::size_t i = 1; i < part.size(); ++i) {
    while (matched != 0 && part[i] != part[matched]) matched = table[matched - 1];
    if (part[i] == part[matched]) ++matched;
    table[i] = matched;
  }
  return table;
}

std::size_t findUnits(std::u16string_view text, std::u16string_view part) {
  if (part.size() == 1) return findUnit(text, part[0]);
  std::size_t where = text.npos;
  forEachOccurrence(text, part, [&where](std::size_t location) {
    where = location;
    return false;
  });
  return where;
}

std::size_t findLastUnits(std::u16string_view text, std::u16string_view part) noexcept {
  return part.empty() ? text.npos : text.rfind(part);
}

}  // namespace qz::detail
