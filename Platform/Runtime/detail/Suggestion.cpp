#include "Platform/Runtime/detail/Suggestion.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <vector>

#include "Platform/Runtime/ClassList.h"
#include "Platform/Runtime/Selector.h"

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

/// Of the candidates, the one that differs from `name` in the fewest letters, when these are few
/// for its length.
std::string nearest(std::string_view name, const std::vector<std::string_view>& candidates) {
  if (name.size() > longest) return {};
  std::string_view best;
  std::size_t fewest = name.size() / 4 + 1;
  for (const std::string_view other : candidates) {
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

std::vector<Selector> selectorsOf(const Class* aClass, bool ofClass) {
  return ofClass ? aClass->classSelectors() : aClass->instanceSelectors();
}

}  // namespace

std::string suggestionForOperation(const Class* aClass, Selector selector, bool ofClass) {
  const auto has = [&](const Class* each) {
    return (ofClass ? each->classMethod(selector) : each->instanceMethod(selector)) != nullptr;
  };
  const bool isRoot = aClass->superclassObject() == nullptr;  // everything is below that one
  if (!isRoot)
    for (const Class* each : allClasses())
      if (each->isSubclassOfClass(aClass) && has(each) && !has(each->superclassObject()))
        return "; " + std::string(each->name()) + " has it";
  std::vector<std::string_view> names;
  for (const Class* each = aClass; each != nullptr; each = each->superclassObject())
    for (const Selector known : selectorsOf(each, ofClass)) names.push_back(known.name());
  return nearest(selector.name(), names);
}

std::string suggestionForKey(const Class* aClass, std::string_view key, bool toSet) {
  std::vector<std::string_view> keys;
  for (const Class* each = aClass; each != nullptr; each = each->superclassObject())
    for (const std::string_view known : each->propertyKeys()) {
      if (known == key) return toSet ? "; it can be read, not set" : "";
      keys.push_back(known);
    }
  return nearest(key, keys);
}

}  // namespace qz::detail
