#include "QZFoundation/NSMutableArray-QZFoundation.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <vector>

#include "Platform/Collections/NSEnumerator.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/Send.h"
#include "QZFoundation/NSArray-QZFoundation.h"
#include "QZFoundation/detail/IntValue.h"

namespace qz {

void insertObject_sortedBySelector(NSMutableArray* self, NSObject* object, Selector selector) {
  self->insertObject_atIndex(object,
                             insertionIndexForObject_sortedUsingSelector(self, object, selector));
}

void filterObjectsWithSelector_object_matching(NSMutableArray* self, Selector selector,
                                               NSObject* object, bool matching) {
  self->filterUsingPredicate([=](NSObject* each) {
    // The whole word counts here, not its low byte alone: deliberately unlike the filters that make
    // new Arrays.
    return static_cast<bool>(each->performSelector_withObject(selector, object)) == matching;
  });
}

void filterObjectsWithSelector_object(NSMutableArray* self, Selector selector, NSObject* object) {
  filterObjectsWithSelector_object_matching(self, selector, object, true);
}

void filterObjectsWithSelector(NSMutableArray* self, Selector selector) {
  filterObjectsWithSelector_object(self, selector, nullptr);
}

void addObjectsFromEnumerator(NSMutableArray* self, NSEnumerator* enumerator) {
  for (NSObject* each : enumerator) self->addObject(each);
}

void sortByKey(NSMutableArray* self, NSString* keyPath) {
  const std::uint32_t* changes = self->mutationCounter();
  const std::uint32_t before = *changes;
  const Ref<NSArray> sorted = sortedArrayUsingKeyPath(self, keyPath);
  if (*changes != before) detail::raiseChanged();
  self->setArray(sorted);
}

namespace {

/// The places to remove an element at, one after the other. Raises NSRangeException when one of
/// them will be beyond what is left then.
std::vector<std::uint32_t> removals(NSArray* indices, std::uint32_t count) {
  std::vector<std::uint32_t> places;
  const Ref<NSArray> sorted = indices->sortedArrayUsingSelector("compare:"_sel);
  for (NSObject* each : sorted->reverseObjectEnumerator()) {
    const auto place = static_cast<std::uint32_t>(detail::intValueOf(each));
    const auto left =
        count - static_cast<std::uint32_t>(std::min<std::size_t>(places.size(), count));
    if (place >= left) detail::raiseIndex("removeObjectsAtIndices:", place, left);
    places.push_back(place);
  }
  return places;
}

/// The elements of which some have been removed, by the indices they had at first.
class Remaining {
 public:
  explicit Remaining(std::uint32_t count) : next_(count + 1) {
    std::iota(next_.begin(), next_.end(), 0U);
  }

  /// Removes the first one that is left from `index` on.
  void removeFrom(std::uint32_t index) {
    while (next_[index] != index) index = next_[index] = next_[next_[index]];
    next_[index] = index + 1;
  }

  bool has(std::uint32_t index) const { return next_[index] == index; }

 private:
  std::vector<std::uint32_t> next_;  // of one that is left: itself; else one closer to the next
};

}  // namespace

void removeObjectsAtIndices(NSMutableArray* self, NSArray* indices) {
  if (indices == nullptr) return;
  const std::uint32_t count = self->count();
  const std::vector<std::uint32_t> places = removals(indices, count);
  // Numbers beyond 32 bits may be in another order than their `intValue`s.
  if (!std::ranges::is_sorted(places, std::greater<>())) {
    for (std::uint32_t place : places) self->removeObjectAtIndex(place);
    return;
  }
  // As the places fall, what was removed before stood there or behind: the element that is at a
  // place now is the first one left from there on.
  Remaining remaining(count);
  for (std::uint32_t place : places) remaining.removeFrom(place);
  std::uint32_t index = 0;
  self->filterUsingPredicate([&](NSObject*) { return remaining.has(index++); });
}

void reverseOrder(NSMutableArray* self) {
  std::uint32_t first = 0;
  std::uint32_t last = self->count() - 1;
  if (last == 0) return;
  // For an empty Array `last` is beyond any index and the first exchange raises: deliberate.
  for (;; ++first, --last) {
    self->exchangeObjectAtIndex_withObjectAtIndex(first, last);
    if (first + 1 >= last - 1) return;
  }
}

void detail::registerNSMutableArrayQZFoundation() {
  extend<NSMutableArray>("QZFoundation")
      .method<&insertObject_sortedBySelector>("insertObject:sortedBySelector:")
      .method<&filterObjectsWithSelector_object_matching>(
          "filterObjectsWithSelector:object:matching:")
      .method<&filterObjectsWithSelector_object>("filterObjectsWithSelector:object:")
      .method<&filterObjectsWithSelector>("filterObjectsWithSelector:")
      .method<&addObjectsFromEnumerator>("addObjectsFromEnumerator:")
      .method<&sortByKey>("sortByKey:")
      .method<&removeObjectsAtIndices>("removeObjectsAtIndices:")
      .method<&reverseOrder>("reverseOrder");
}

}  // namespace qz
