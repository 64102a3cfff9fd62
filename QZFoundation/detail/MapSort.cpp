#include "QZFoundation/detail/MapSort.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/Send.h"
#include "Platform/Values/NSNumber.h"
#include "Platform/Values/NSString.h"
#include "QZFoundation/detail/PermutationSort.h"

namespace qz::detail {
namespace {

/// Whether `compare:` sent to an Object runs `wanted`, the operation as its class was described
/// with it. Neighbours are mostly of one class.
class ComparesBy {
 public:
  explicit ComparesBy(Imp wanted) : wanted_(wanted) {}

  bool operator()(const NSObject* object) {
    const std::uintptr_t vptr = vptrOf(object);
    if (vptr != seen_) {
      answer_ = lookUp(object, "compare:"_sel).imp == wanted_;
      seen_ = vptr;
    }
    return answer_;
  }

 private:
  Imp wanted_;
  std::uintptr_t seen_ = 0;
  bool answer_ = false;
};

// Integers up to this size are exact as doubles.
constexpr std::int64_t exactInDouble = std::int64_t{1} << 53;

// Keys that order as `compare:` orders the Numbers, or nothing when no one key type does: integers
// and floating values beside each other must all be exact as doubles.
std::optional<std::vector<std::uint64_t>> numberKeys(std::span<NSObject* const> values) {
  std::vector<std::uint64_t> keys(values.size());
  ComparesBy plain(InstanceMethod<NSNumber, &NSNumber::compare>::spec().imp);
  bool integers = true;
  bool floating = true;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (!plain(values[i])) return std::nullopt;
    const auto* number = static_cast<const NSNumber*>(values[i]);
    if (isFloatingKind(number->kind())) {
      integers = false;
    } else {
      if (number->exceedsInt64()) return std::nullopt;
      const std::int64_t value = number->signedBits();
      floating = floating && value >= -exactInDouble && value <= exactInDouble;
      keys[i] = sortKey(value);
    }
    if (!integers && !floating) return std::nullopt;
  }
  if (!integers)
    for (std::size_t i = 0; i < values.size(); ++i)
      keys[i] = sortKey(static_cast<const NSNumber*>(values[i])->doubleValue());
  return keys;
}

std::u16string_view textOf(const NSObject* string) {
  return static_cast<const NSString*>(string)->view();
}

// How many units all Strings begin with alike; nothing when not all are Strings that can be keyed.
std::optional<std::size_t> commonBeginning(std::span<NSObject* const> values) {
  ComparesBy plain(InstanceMethod<NSString, &NSString::compare>::spec().imp);
  std::u16string_view common;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (!plain(values[i])) return std::nullopt;
    const std::u16string_view text = textOf(values[i]);
    if (i == 0) common = text;
    const auto differ = std::mismatch(common.begin(), common.end(), text.begin(), text.end());
    common = common.substr(0, static_cast<std::size_t>(differ.first - common.begin()));
  }
  return common.size();
}

// Four units of each String, so that unequal keys order as the Strings do: the first four behind
// what all have in common, as a folder's name in the paths of its files.
std::optional<std::vector<std::uint64_t>> stringKeys(std::span<NSObject* const> values) {
  const auto from = commonBeginning(values);
  if (!from) return std::nullopt;
  std::vector<std::uint64_t> keys(values.size());
  for (std::size_t i = 0; i < values.size(); ++i) {
    const std::u16string_view text = textOf(values[i]).substr(*from);
    std::uint64_t key = 0;
    for (std::size_t k = 0; k < 4; ++k) key = key << 16 | (k < text.size() ? text[k] : 0u);
    keys[i] = key;
  }
  return keys;
}

}  // namespace

void sortBySending(std::span<NSObject*> objects, std::int32_t* indices, Selector selector,
                   NSObject* extra) {
  auto compare = [selector, extra](NSObject* element, NSObject* pivot) {
    return element->performSelector_withObject_withObject(selector, pivot, extra).integerValue();
  };
  plainSort(objects.data(), indices, 0, static_cast<std::int64_t>(objects.size()) - 1, compare);
}

bool sortByKeys(std::span<NSObject* const> values, std::int32_t* indices) {
  if (values.empty()) return true;
  if (auto keys = numberKeys(values)) {
    wordSort(keys->data(), indices, keys->size());
    return true;
  }
  if (auto keys = stringKeys(values)) {
    // The tie is asked by entries of `indices`, which still say where a String stands.
    auto tie = [values](std::int32_t a, std::int32_t b) -> int {
      return static_cast<const NSString*>(values[static_cast<std::size_t>(a)])
          ->compare(static_cast<NSString*>(values[static_cast<std::size_t>(b)]));
    };
    keyedSort(keys->data(), indices, keys->size(), tie);
    return true;
  }
  return false;
}

bool comparesByKeyPath(const NSObject* object) {
  const Method* method = lookUp(object, "compare:usingKeyPath:"_sel).method;
  return method != nullptr && method->owner == classOf<NSObject>() &&
         method->category == "QZFoundation";
}

}  // namespace qz::detail
