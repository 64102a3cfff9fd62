#include "Platform/Collections/detail/ArraySort.h"

#include <algorithm>
#include <cstdint>
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

  /// What is compared of one element: its value, or itself.
  NSObject* subject(std::uint32_t index) {
    if (!readsValues_) return elements_[index];
    if (!known_[index]) {
      values_[index] = descriptor_->valueOf(elements_[index]);
      known_[index] = true;
    }
    return values_[index];
  }

  int compareSubjects(NSObject* a, NSObject* b) const {
    return readsValues_ ? descriptor_->compareValues(a, b)
                        : descriptor_->compareObject_toObject(a, b);
  }

 private:
  Ref<NSSortDescriptor> descriptor_;
  std::span<NSObject* const> elements_;
  bool readsValues_;
  std::vector<Ref<NSObject>> values_;
  std::vector<bool> known_;
};

/// An element on its way, with what the first descriptor compares at hand.
struct SortRow {
  NSObject* subject;
  std::uint32_t index;
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
  if (columns.empty()) return;
  std::vector<SortRow> rows(given.size());
  for (std::uint32_t i = 0; i < rows.size(); ++i) rows[i] = {columns[0].subject(i), i};
  mergeSort(std::span(rows), [&](const SortRow& a, const SortRow& b) {
    int order = columns[0].compareSubjects(a.subject, b.subject);
    for (std::size_t i = 1; order == 0 && i < columns.size(); ++i) {
      NSObject* subject = columns[i].subject(a.index);
      order = columns[i].compareSubjects(subject, columns[i].subject(b.index));
    }
    return order > 0;
  });
  std::transform(rows.begin(), rows.end(), elements.begin(),
                 [&](const SortRow& row) { return given[row.index]; });
}

}  // namespace qz::detail
