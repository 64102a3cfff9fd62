#include "Platform/Runtime/detail/SelectorSuggestion.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace qz::detail {
namespace {

constexpr std::size_t longest = 200;  // names beyond it are not compared, so that it stays quick

/// How many letters have to be put in, left out or changed to make one of the other.
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t changed = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
      diagonal = row[j];
      row[j] = std::min({changed, row[j] + 1, row[j - 1] + 1});
    }
  }
  return row.back();
}

}  // namespace

std::string suggestionFor(std::string_view name, const std::vector<Selector>& candidates) {
  if (name.size() > longest) return {};
  std::string_view best;
  std::size_t fewest = name.size() / 4 + 1;
  for (const Selector candidate : candidates) {
    const std::string_view other = candidate.name();
    const std::size_t difference =
        std::max(name.size(), other.size()) - std::min(name.size(), other.size());
    if (difference > fewest || other.size() > longest) continue;
    const std::size_t found = distance(name, other);
    // Of equals the first by name, whatever order the tables have.
    if (found > fewest || (found == fewest && !best.empty() && best < other)) continue;
    fewest = found;
    best = other;
  }
  return best.empty() ? std::string() : "; is " + std::string(best) + " meant?";
}

}  // namespace qz::detail
