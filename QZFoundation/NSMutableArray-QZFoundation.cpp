#include "QZFoundation/NSMutableArray-QZFoundation.h"

#include <algorithm>
#include <functional>
#include <string>
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

/// Which elements go when one is removed at each of `places`, which fall or stay the same.
std::vector<bool> removedElements(const std::vector<std::uint32_t>& places, std::uint32_t count) {
  std::vector<bool> removed(count);
  std::uint32_t next = 0;
  for (std::size_t i = 0; i < places.size(); ++i) {
    // What was removed so far stood here or behind, so the element here now is the next that stays.
    if (i == 0 || places[i] != places[i - 1]) next = places[i];
    while (removed[next]) ++next;
    removed[next] = true;
  }
  return removed;
}

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
  const std::vector<bool> removed = removedElements(places, count);
  std::size_t index = 0;
  self->filterUsingPredicate([&](NSObject*) { return !removed[index++]; });
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
