#include "QZFoundation/NSArray-QZFoundation.h"

#include <algorithm>
#include <bit>
#include <utility>
#include <vector>

#include "Platform/Collections/NSEnumerator.h"
#include "Platform/Collections/NSPredicate.h"
#include "Platform/Collections/detail/Membership.h"
#include "Platform/Collections/detail/MergeSort.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/Send.h"
#include "Platform/Values/NSNull.h"
#include "QZFoundation/NSObject-QZFoundation.h"
#include "QZFoundation/detail/ArrayReader.h"
#include "QZFoundation/detail/IntValue.h"
#include "QZFoundation/detail/KeyPathReader.h"
#include "QZFoundation/detail/NestingGuard.h"
#include "QZFoundation/detail/ValueSearch.h"

namespace qz {

// Searching and matching.

std::uint32_t indexOfObjectMatchingValue_forKeyPath_usingSelector(NSArray* self, NSObject* value,
                                                                  NSString* keyPath,
                                                                  Selector selector) {
  detail::ArrayReader elements(self);
  detail::ValueSearch search(value, keyPath, selector);
  for (std::uint32_t i = 0; i < elements.count(); ++i)
    if (search.matches(elements[i])) return i;
  return NSNotFound;
}

std::uint32_t indexOfObjectMatchingValue_forKeyPath(NSArray* self, NSObject* value,
                                                    NSString* keyPath) {
  return indexOfObjectMatchingValue_forKeyPath_usingSelector(self, value, keyPath, "isEqual:"_sel);
}

std::uint32_t indexOfObjectMatchingValue_forKey(NSArray* self, NSObject* value, NSString* key) {
  return indexOfObjectMatchingValue_forKeyPath(self, value, key);
}

Ref<NSObject> objectMatchingValue_forKeyPath_usingSelector(NSArray* self, NSObject* value,
                                                           NSString* keyPath, Selector selector) {
  const std::uint32_t index =
      indexOfObjectMatchingValue_forKeyPath_usingSelector(self, value, keyPath, selector);
  return index == NSNotFound ? nullptr : self->objectAtIndex(index);
}

Ref<NSObject> objectMatchingValue_forKeyPath(NSArray* self, NSObject* value, NSString* keyPath) {
  return objectMatchingValue_forKeyPath_usingSelector(self, value, keyPath, "isEqual:"_sel);
}

Ref<NSObject> objectMatchingValue_forKey(NSArray* self, NSObject* value, NSString* key) {
  return objectMatchingValue_forKeyPath(self, value, key);
}

Ref<NSObject> objectMatchingPredicate(NSArray* self, NSPredicate* predicate) {
  detail::requireArgument("objectMatchingPredicate:", "the predicate", predicate);
  for (Ref<NSObject> each : *self)
    if (predicate->evaluateWithObject(each)) return each;
  return nullptr;
}

Ref<NSArray> arrayByMatchingValue_forKeyPath(NSArray* self, NSObject* value, NSString* keyPath) {
  detail::ArrayBuilder matching;
  detail::KeyPathReader reader(keyPath);
  for (Ref<NSObject> each : *self) {
    const bool identical = reader.read(each) == value;
    if (identical || (value != nullptr && value->isEqual(reader.read(each))))
      matching.take(std::move(each));
  }
  return matching.finish();
}

bool containsObjectsFromEnumerator(NSArray* self, NSEnumerator* enumerator) {
  detail::Membership members(self);
  for (NSObject* each : enumerator)
    if (!members.contains(each)) return false;
  return true;
}

std::uint32_t indexOfObject_inArraySortedUsingSelector(NSArray* self, NSObject* object,
                                                       Selector selector) {
  detail::ArrayReader elements(self);
  const std::uint64_t count = elements.count();
  // Looked up once, and called directly. Whatever nil is sent answers "same".
  const Implementation compare =
      object == nullptr ? Implementation() : object->methodForSelector(selector);
  std::uint64_t base = 0;
  for (std::uint64_t step = std::bit_ceil(count + 1); step != 0;) {
    step /= 2;
    const std::uint64_t place = base + step;
    if (place >= count) continue;
    elements.expect(base + step / 2);
    elements.expect(place + 1 + step / 2);
    const auto index = static_cast<std::uint32_t>(place);
    NSObject* element = elements[index];
    if (element == object) return index;
    const auto order = compare.call<NSComparisonResult>(object, element);
    if (order == NSOrderedSame) return index;
    if (order == NSOrderedDescending) base = place + 1;
  }
  return NSNotFound;
}

std::uint32_t insertionIndexForObject_sortedUsingSelector(NSArray* self, NSObject* object,
                                                          Selector selector) {
  detail::ArrayReader elements(self);
  const auto isAfter = [&](std::int64_t index) {
    NSObject* element = elements[static_cast<std::uint32_t>(index)];
    return send<NSComparisonResult>(object, selector, element) == NSOrderedDescending;
  };
  const std::int64_t count = elements.count();
  std::int64_t low = -1;
  std::int64_t high = count;
  while (high - low >= 2) {
    const std::int64_t middle = (low + high) / 2;
    (isAfter(middle) ? low : high) = middle;
  }
  // Asked once more, as the operation promises; it matters only for comparisons that change their
  // mind.
  if (high != count && isAfter(high)) ++high;
  return static_cast<std::uint32_t>(high);
}

Ref<NSObject> firstObject(NSArray* self) {
  return self->count() == 0 ? nullptr : self->objectAtIndex(0);
}

// Derived Arrays.

Ref<NSMutableArray> arrayWithObject_repeatedNumberOfTimes(NSObject* object, std::int32_t count) {
  detail::ArrayBuilder repeated(static_cast<std::size_t>(std::max(count, 0)));
  for (std::int32_t i = 0; i < count; ++i) repeated.add(object);
  return detail::finishMutable(repeated);
}

Ref<NSArray> arrayByPerformingSelector_object_nilPlaceholder(NSArray* self, Selector selector,
                                                             NSObject* object,
                                                             NSObject* placeholder) {
  detail::ArrayReader elements(self);
  detail::ArrayBuilder answers(elements.count());
  for (std::uint32_t i = 0; i < elements.count(); ++i) {
    Ref<NSObject> answer = elements[i]->performSelector_withObject(selector, object);
    if (!answer) answer = Ref<NSObject>(placeholder);
    if (!answer) return nullptr;
    answers.take(std::move(answer));
  }
  return answers.finish();
}

Ref<NSArray> arrayByPerformingSelector_object(NSArray* self, Selector selector, NSObject* object) {
  return arrayByPerformingSelector_object_nilPlaceholder(self, selector, object, nullptr);
}

Ref<NSArray> arrayByPerformingSelector(NSArray* self, Selector selector) {
  return arrayByPerformingSelector_object(self, selector, nullptr);
}

Ref<NSArray> arrayByFilteringWithSelector_object_matching(NSArray* self, Selector selector,
                                                          NSObject* object, bool matching) {
  detail::ArrayReader elements(self);
  detail::ArrayBuilder kept;
  for (std::uint32_t i = 0; i < elements.count(); ++i) {
    NSObject* element = elements[i];
    if (performBoolSelector_withObject(element, selector, object) == matching) kept.add(element);
  }
  return kept.finish();
}

Ref<NSArray> arrayByFilteringWithSelector_object(NSArray* self, Selector selector,
                                                 NSObject* object) {
  return arrayByFilteringWithSelector_object_matching(self, selector, object, true);
}

Ref<NSArray> arrayByFilteringWithSelector(NSArray* self, Selector selector) {
  return arrayByFilteringWithSelector_object(self, selector, nullptr);
}

Ref<NSMutableArray> arrayWithObjectsAtIndexes(NSArray* self, NSArray* indexes) {
  detail::ArrayBuilder chosen(indexes == nullptr ? 0 : indexes->count());
  for (NSObject* each : Elements<NSObject>(indexes))
    chosen.take(detail::elementAt(self, static_cast<std::uint32_t>(detail::intValueOf(each))));
  return detail::finishMutable(chosen);
}

Ref<NSArray> sortedArrayUsingKeyPath(NSArray* self, NSString* keyPath) {
  struct Row {
    NSObject* value;
    NSObject* element;
  };
  detail::ArrayBuilder builder;
  builder.addAll(self);
  const std::span<NSObject*> elements = builder.elements();
  if (elements.size() < 2) return builder.finish();
  std::vector<Ref<NSObject>> values;
  std::vector<Row> rows;
  values.reserve(elements.size());
  rows.reserve(elements.size());
  detail::KeyPathReader reader(keyPath);
  for (NSObject* each : elements) {
    values.push_back(reader.read(each));
    if (!values.back()) return self->sortedArrayUsingFunction_context(&QZCompareByKeyPath, keyPath);
    rows.push_back({values.back(), each});
  }
  const Implementation compare = values[0]->methodForSelector("compare:"_sel);
  detail::mergeSort(std::span(rows), [&](const Row& a, const Row& b) {
    return compare.call<NSComparisonResult>(a.value, b.value) > NSOrderedSame;
  });
  std::ranges::transform(rows, elements.begin(), &Row::element);
  return builder.finish();
}

Ref<NSMutableArray> reversedArray(NSArray* self) {
  detail::ArrayBuilder reversed;
  reversed.addAll(self);
  std::ranges::reverse(reversed.elements());
  return detail::finishMutable(reversed);
}

Ref<NSMutableArray> arrayByInsertingObject_atIndex(NSArray* self, NSObject* object,
                                                   std::uint32_t index) {
  auto copy = NSMutableArray::arrayWithArray(self);
  copy->insertObject_atIndex(object, index);
  return copy;
}

Ref<NSMutableArray> arrayByRemovingObject(NSArray* self, NSObject* object) {
  auto copy = NSMutableArray::arrayWithArray(self);
  copy->removeObject(object);
  return copy;
}

Ref<NSMutableArray> arrayByRemovingObjectsInArray(NSArray* self, NSArray* others) {
  auto copy = NSMutableArray::arrayWithArray(self);
  copy->removeObjectsInArray(others);
  return copy;
}

Ref<NSArray> arrayByRemovingLastObject(NSArray* self) {
  const std::uint32_t count = self->count();
  return count > 1 ? self->subarrayWithRange({0, count - 1}) : NSArray::array();
}

Ref<NSArray> allObjects(NSArray* self) { return NSArray::arrayWithArray(self); }

Ref<NSMutableDictionary> dictionaryWithKeyPathForKeys_keyPathForValues(NSArray* self,
                                                                       NSString* keyPathForKeys,
                                                                       NSString* keyPathForValues) {
  auto dictionary = make<NSMutableDictionary>();
  detail::KeyPathReader keys(keyPathForKeys);
  detail::KeyPathReader values(keyPathForValues);
  for (Ref<NSObject> each : *self) {
    const Ref<NSObject> key = keys.read(each);
    const Ref<NSObject> value = values.read(each);
    if (key) dictionary->setObject_forKey(value ? value : Ref<NSObject>(NSNull::null()), key);
  }
  return dictionary;
}

// Copies of whole trees.

namespace {

/// The answers of `array`'s elements to `copying`, gathered.
detail::ArrayBuilder copiesOf(NSArray* array, Selector copying, const char* operation) {
  const detail::NestingGuard guard(operation);
  detail::ArrayReader elements(array);
  detail::ArrayBuilder copies(elements.count());
  for (std::uint32_t i = 0; i < elements.count(); ++i)
    copies.take(send<Ref<NSObject>>(elements[i], copying));
  return copies;
}

Ref<NSArray> deepCopyOfArray(NSArray* array) {
  return copiesOf(array, "deepCopy"_sel, "-[NSArray deepCopy]").finish();
}

Ref<NSMutableArray> mutableContainersOfArray(NSArray* array) {
  auto copies = copiesOf(array, "copyMutableContainers"_sel, "-[NSArray copyMutableContainers]");
  return detail::finishMutable(copies);
}

}  // namespace

void detail::registerNSArrayQZFoundation() {
  extend<NSArray>("QZFoundation")
      .method<&indexOfObjectMatchingValue_forKeyPath_usingSelector>(
          "indexOfObjectMatchingValue:forKeyPath:usingSelector:")
      .method<&indexOfObjectMatchingValue_forKeyPath>("indexOfObjectMatchingValue:forKeyPath:")
      .method<&indexOfObjectMatchingValue_forKey>("indexOfObjectMatchingValue:forKey:")
      .method<&objectMatchingValue_forKeyPath_usingSelector>(
          "objectMatchingValue:forKeyPath:usingSelector:")
      .method<&objectMatchingValue_forKeyPath>("objectMatchingValue:forKeyPath:")
      .method<&objectMatchingValue_forKey>("objectMatchingValue:forKey:")
      .method<&objectMatchingPredicate>("objectMatchingPredicate:")
      .method<&arrayByMatchingValue_forKeyPath>("arrayByMatchingValue:forKeyPath:")
      .method<&containsObjectsFromEnumerator>("containsObjectsFromEnumerator:")
      .method<&indexOfObject_inArraySortedUsingSelector>(
          "indexOfObject:inArraySortedUsingSelector:")
      .method<&insertionIndexForObject_sortedUsingSelector>(
          "insertionIndexForObject:sortedUsingSelector:")
      .method<&firstObject>("firstObject")
      .classMethod<&arrayWithObject_repeatedNumberOfTimes>("arrayWithObject:repeatedNumberOfTimes:")
      .method<&arrayByPerformingSelector_object_nilPlaceholder>(
          "arrayByPerformingSelector:object:nilPlaceholder:")
      .method<&arrayByPerformingSelector_object>("arrayByPerformingSelector:object:")
      .method<&arrayByPerformingSelector>("arrayByPerformingSelector:")
      .method<&arrayByFilteringWithSelector_object_matching>(
          "arrayByFilteringWithSelector:object:matching:")
      .method<&arrayByFilteringWithSelector_object>("arrayByFilteringWithSelector:object:")
      .method<&arrayByFilteringWithSelector>("arrayByFilteringWithSelector:")
      .method<&arrayWithObjectsAtIndexes>("arrayWithObjectsAtIndexes:")
      .method<&sortedArrayUsingKeyPath>("sortedArrayUsingKeyPath:")
      .method<&reversedArray>("reversedArray")
      .method<&arrayByInsertingObject_atIndex>("arrayByInsertingObject:atIndex:")
      .method<&arrayByRemovingObject>("arrayByRemovingObject:")
      .method<&arrayByRemovingObjectsInArray>("arrayByRemovingObjectsInArray:")
      .method<&arrayByRemovingLastObject>("arrayByRemovingLastObject")
      .method<&allObjects>("allObjects")
      .method<&dictionaryWithKeyPathForKeys_keyPathForValues>(
          "dictionaryWithKeyPathForKeys:keyPathForValues:")
      .method<&deepCopyOfArray>("deepCopy")
      .method<&mutableContainersOfArray>("copyMutableContainers");
}

}  // namespace qz
