#include "Platform/Collections/detail/ArraySort.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <numeric>
#include <typeinfo>
#include <vector>

#include "Platform/Collections/NSSortDescriptor.h"
#include "Platform/Collections/detail/MergeSort.h"
#include "Platform/Runtime/Send.h"

namespace qz::detail {
namespace {

/// What one descriptor reads from the elements; each value when it is first wanted, because later
/// descriptors matter only where earlier ones find no difference.
class SortColumn {
 public:
  SortColumn(NSSortDescriptor* descriptor, std::span<NSObject* const> elements)
      : descriptor_(descriptor),
        elements_(elements),
        // A derived class may compare in a way of its own.
        readsValues_(typeid(*descriptor) == typeid(NSSortDescriptor)) {
    if (!readsValues_) return;
    values_.resize(elements.size());
    known_.resize(elements.size());
  }

  NSComparisonResult compare(std::uint32_t a, std::uint32_t b) {
    if (!readsValues_) return descriptor_->compareObject_toObject(elements_[a], elements_[b]);
    NSObject* first = value(a);
    return descriptor_->compareValues(first, value(b));
  }

 private:
  NSObject* value(std::uint32_t index) {
    if (!known_[index]) {
      values_[index] = descriptor_->valueOf(elements_[index]);
      known_[index] = true;
    }
    return values_[index];
  }

  Ref<NSSortDescriptor> descriptor_;
  std::span<NSObject* const> elements_;
  bool readsValues_;
  std::vector<Ref<NSObject>> values_;
  std::vector<bool> known_;
};

}  // namespace

void sortUsingFunction(std::span<NSObject*> elements, NSSortFunction compare, void* context) {
  mergeSort(elements,
            [=](NSObject* a, NSObject* b) { return compare(a, b, context) > NSOrderedSame; });
}

void sortUsingSelector(std::span<NSObject*> elements, Selector selector) {
  if (elements.size() < 2) return;
  const Implementation compare = elements[0]->methodForSelector(selector);
  mergeSort(elements, [&](NSObject* a, NSObject* b) {
    return compare.call<NSComparisonResult>(a, b) > NSOrderedSame;
  });
}

void sortUsingDescriptors(std::span<NSObject*> elements, NSArray* descriptors) {
  const std::vector<NSObject*> given(elements.begin(), elements.end());
  std::vector<SortColumn> columns;
  for (NSSortDescriptor* each : qz::elements<NSSortDescriptor>(descriptors))
    columns.emplace_back(each, given);
  std::vector<std::uint32_t> order(given.size());
  std::iota(order.begin(), order.end(), 0U);
  mergeSort(std::span(order), [&](std::uint32_t a, std::uint32_t b) {
    for (SortColumn& column : columns)
      if (const auto result = column.compare(a, b); result != NSOrderedSame)
        return result > NSOrderedSame;
    return false;
  });
  std::transform(order.begin(), order.end(), elements.begin(),
                 [&](std::uint32_t index) { return given[index]; });
}

}  // namespace qz::detail
