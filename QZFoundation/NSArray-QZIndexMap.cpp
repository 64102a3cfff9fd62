#include "QZFoundation/NSArray-QZIndexMap.h"

#include <numeric>
#include <span>
#include <string>
#include <vector>

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSString.h"
#include "QZFoundation/detail/MapSort.h"

namespace qz {
namespace {

// The elements of an Array as plain pointers, alive and in place whatever comparisons do to the
// Array meanwhile.
class Snapshot {
 public:
  explicit Snapshot(NSArray* array) {
    // An Array that never changes keeps its elements for us.
    if (array->mutationCounter() == &detail::neverChanged) {
      if (const auto inPlace = array->contiguous()) {
        array_ = Ref<NSArray>(array);
        objects_.assign(inPlace->begin(), inPlace->end());
        return;
      }
    }
    const std::uint32_t count = array->count();
    objects_.reserve(count);
    owned_.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i) {
      owned_.push_back(array->objectAtIndex(i));
      objects_.push_back(owned_.back());
    }
  }

  std::span<NSObject*> objects() { return objects_; }
  std::size_t count() const { return objects_.size(); }

 private:
  Ref<NSArray> array_;
  std::vector<Ref<NSObject>> owned_;
  std::vector<NSObject*> objects_;
};

bool sortByKeyPathKeys(std::span<NSObject* const> objects, std::int32_t* indices,
                       NSString* keyPath) {
  std::vector<Ref<NSObject>> owned;
  std::vector<NSObject*> values;
  owned.reserve(objects.size());
  values.reserve(objects.size());
  for (NSObject* object : objects) {
    if (!detail::comparesByKeyPath(object)) return false;
    owned.push_back(object->valueForKeyPath(keyPath));
    if (!owned.back()) return false;  // nil compares as "same" with anything: no order by keys
    values.push_back(owned.back());
  }
  return detail::sortByKeys(values, indices);
}

// One element is never compared, so nothing is read of it either.
void sortIndices(std::span<NSObject*> objects, std::int32_t* indices, Selector selector,
                 NSObject* extra) {
  if (objects.size() < 2) return;
  if (selector == "compare:"_sel && detail::sortByKeys(objects, indices)) return;
  if (selector == "compare:usingKeyPath:"_sel)
    if (auto* keyPath = as<NSString>(extra); keyPath != nullptr)
      if (sortByKeyPathKeys(objects, indices, keyPath)) return;
  detail::sortBySending(objects, indices, selector, extra);
}

void requireMap(const char* operation, NSArray* array, QZIndexMap* map) {
  detail::requireArgument(operation, "the map", map);
  if (map->count() < array->count()) detail::raiseIndex(operation, map->count(), map->count());
}

}  // namespace

Ref<QZIndexMap> sortMapUsingSelector_withObject(NSArray* self, Selector selector,
                                                NSObject* object) {
  Snapshot elements(self);
  const auto count = static_cast<std::int32_t>(elements.count());
  std::vector<std::int32_t> indices(elements.count());
  std::iota(indices.begin(), indices.end(), 0);
  sortIndices(elements.objects(), indices.data(), selector, object);
  return QZIndexMap::initWithIndices_count(indices.data(), count);
}

Ref<QZIndexMap> sortMapUsingSelector(NSArray* self, Selector selector) {
  return sortMapUsingSelector_withObject(self, selector, nullptr);
}

Ref<QZIndexMap> sortMapUsingKeyPath_selector(NSArray* self, NSString* keyPath, Selector selector) {
  return sortMapUsingSelector_withObject(self, selector, keyPath);
}

Ref<QZIndexMap> sortMapUsingKeyPath(NSArray* self, NSString* keyPath) {
  return sortMapUsingKeyPath_selector(self, keyPath, "compare:usingKeyPath:"_sel);
}

Ref<NSArray> arrayUsingMap(NSArray* self, QZIndexMap* map) {
  requireMap("arrayUsingMap:", self, map);
  const std::uint32_t count = self->count();
  std::vector<Ref<NSObject>> owned;
  std::vector<NSObject*> objects;
  owned.reserve(count);
  objects.reserve(count);
  for (std::uint32_t i = 0; i < count; ++i) {
    const auto source =
        static_cast<std::uint32_t>(map->indexForIndex(static_cast<std::int32_t>(i)));
    owned.push_back(self->objectAtIndex(source));
    objects.push_back(owned.back());
  }
  return NSArray::arrayWithObjects_count(objects.data(), count);
}

Ref<NSMutableArray> mutableArrayUsingMap(NSArray* self, QZIndexMap* map) {
  return NSMutableArray::arrayWithArray(arrayUsingMap(self, map));
}

void reorderUsingMap(NSMutableArray* self, QZIndexMap* map) {
  // Made first, so that a bad map raises before anything has changed.
  Ref<NSArray> reordered = arrayUsingMap(self, map);
  const std::uint32_t count = reordered->count();
  for (std::uint32_t i = 0; i < count; ++i)
    self->replaceObjectAtIndex_withObject(i, reordered->objectAtIndex(i));
}

void sortUsingSelector_withObject(NSMutableArray* self, Selector selector, NSObject* object) {
  mapFromSortingUsingSelector_withObject(self, selector, object);
}

Ref<QZIndexMap> mapFromSortingUsingSelector_withObject(NSMutableArray* self, Selector selector,
                                                       NSObject* object) {
  Ref<QZIndexMap> map = sortMapUsingSelector_withObject(self, selector, object);
  reorderUsingMap(self, map);
  return map;
}

Ref<QZIndexMap> mapFromSortingUsingSelector(NSMutableArray* self, Selector selector) {
  return mapFromSortingUsingSelector_withObject(self, selector, nullptr);
}

void detail::registerNSArrayQZIndexMap() {
  extend<NSArray>("QZIndexMap")
      .method<&sortMapUsingSelector_withObject>("sortMapUsingSelector:withObject:")
      .method<&sortMapUsingSelector>("sortMapUsingSelector:")
      .method<&sortMapUsingKeyPath_selector>("sortMapUsingKeyPath:selector:")
      .method<&sortMapUsingKeyPath>("sortMapUsingKeyPath:")
      .method<&arrayUsingMap>("arrayUsingMap:")
      .method<&mutableArrayUsingMap>("mutableArrayUsingMap:");
  extend<NSMutableArray>("QZIndexMap")
      .method<&reorderUsingMap>("reorderUsingMap:")
      .method<&sortUsingSelector_withObject>("sortUsingSelector:withObject:")
      .method<&mapFromSortingUsingSelector_withObject>("mapFromSortingUsingSelector:withObject:")
      .method<&mapFromSortingUsingSelector>("mapFromSortingUsingSelector:");
}

}  // namespace qz
