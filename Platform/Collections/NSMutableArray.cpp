#include "Platform/Collections/NSMutableArray.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <typeinfo>
#include <utility>
#include <vector>

#include "Platform/Collections/NSPredicate.h"
#include "Platform/Collections/detail/ArrayBuilder.h"
#include "Platform/Collections/detail/ArraySort.h"
#include "Platform/Collections/detail/HashSupport.h"
#include "Platform/Collections/detail/Membership.h"
#include "Platform/Collections/detail/ReleaseElements.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"

namespace qz {
namespace {

constexpr std::uint32_t smallestCapacity = 4;

void requireObject(const char* operation, NSObject* object) {
  detail::requireArgument(operation, "the object", object);
}

void requireIndex(const char* operation, std::uint32_t index, std::uint32_t count) {
  if (index >= count) [[unlikely]]
    detail::raiseIndex(operation, index, count);
}

}  // namespace

// Making.

Ref<NSMutableArray> NSMutableArray::array() { return make<NSMutableArray>(); }

Ref<NSMutableArray> NSMutableArray::arrayWithCapacity(std::uint32_t capacity) {
  auto array = make<NSMutableArray>();
  array->reserve(std::min(capacity, detail::largestHint));
  return array;
}

Ref<NSMutableArray> NSMutableArray::arrayWithObject(NSObject* object) {
  return fromSpan({&object, 1});
}

Ref<NSMutableArray> NSMutableArray::arrayWithObjects(std::initializer_list<NSObject*> objects) {
  return fromSpan({objects.begin(), objects.size()});
}

Ref<NSMutableArray> NSMutableArray::arrayWithObjects_count(NSObject* const* objects,
                                                           std::uint32_t count) {
  if (count > 0)
    detail::requireArgument("+[NSMutableArray arrayWithObjects:count:]", "the buffer", objects);
  return fromSpan({objects, count});
}

Ref<NSMutableArray> NSMutableArray::initWithObjects_count(NSObject* const* objects,
                                                          std::uint32_t count) {
  return arrayWithObjects_count(objects, count);
}

Ref<NSMutableArray> NSMutableArray::fromSpan(std::span<NSObject* const> objects) {
  detail::ArrayBuilder builder;
  builder.addAll(objects);
  return detail::finishMutable(builder);
}

Ref<NSMutableArray> detail::finishMutable(ArrayBuilder& builder) {
  auto array = make<NSMutableArray>();
  array->replaceRange({}, builder);
  return array;
}

Ref<NSMutableArray> NSMutableArray::arrayWithArray(NSArray* other) {
  auto array = make<NSMutableArray>();
  array->addObjectsFromArray(other);
  return array;
}

NSMutableArray::~NSMutableArray() {
  // What the elements' ends bring about finds an empty Array, and might even put something in.
  while (elements_ != nullptr) {
    NSObject** elements = std::exchange(elements_, nullptr);
    capacity_ = 0;
    detail::releaseElements(elements, std::exchange(count_, 0));
    std::free(elements);
  }
}

// The storage.

// A derived class may have its elements elsewhere; then everything goes through its primitives.
bool NSMutableArray::usesOwnStorage() const noexcept {
  return &typeid(*this) == &typeid(NSMutableArray);
}

void NSMutableArray::reserve(std::size_t capacity) {
  if (capacity <= capacity_) return;
  if (capacity > detail::maximumArrayCount)
    detail::raise(NSMallocException, "an Array of too many elements");
  const std::uint64_t grown =
      std::max<std::uint64_t>({capacity, std::uint64_t{capacity_} * 2, smallestCapacity});
  const auto room =
      static_cast<std::uint32_t>(std::min<std::uint64_t>(grown, detail::maximumArrayCount));
  void* block = std::realloc(elements_, room * sizeof(void*));
  if (block == nullptr) detail::raise(NSMallocException, "no memory for an Array's elements");
  elements_ = static_cast<NSObject**>(block);
  capacity_ = room;
}

/// Puts the elements of `owned`, with their counts, where those of `range` are.
void NSMutableArray::replaceRange(NSRange range, detail::ArrayBuilder& owned) {
  const auto added = owned.elements();
  if (!usesOwnStorage()) return replaceElementsInRange(range, added);
  const std::size_t size = std::size_t{count_} - range.length + added.size();
  reserve(size);
  NSObject** at = elements_ + range.location;
  const std::vector<NSObject*> removed(at, at + range.length);
  const std::uint32_t behind = count_ - range.location - range.length;
  if (behind > 0) std::memmove(at + added.size(), at + range.length, behind * sizeof(void*));
  std::copy(added.begin(), added.end(), at);
  owned.disown();
  count_ = static_cast<std::uint32_t>(size);
  didChange();
  detail::releaseElements(removed.data(), removed.size());
}

void NSMutableArray::replaceElementsInRange(NSRange range, std::span<NSObject* const> objects) {
  for (std::uint32_t i = range.length; i > 0; --i) removeObjectAtIndex(range.location + i - 1);
  std::uint32_t index = range.location;
  for (NSObject* each : objects) insertObject_atIndex(each, index++);
}

void NSMutableArray::removeElementsAtIndexes(std::span<const std::uint32_t> indexes) {
  for (auto each = indexes.rbegin(); each != indexes.rend(); ++each) removeObjectAtIndex(*each);
}

void NSMutableArray::replaceElementsAtIndexes(std::span<const std::uint32_t> indexes,
                                              std::span<NSObject* const> objects) {
  for (std::size_t i = 0; i < indexes.size(); ++i)
    replaceObjectAtIndex_withObject(indexes[i], objects[i]);
}

// The primitives.

std::uint32_t NSMutableArray::count() const { return count_; }

Ref<NSObject> NSMutableArray::objectAtIndex(std::uint32_t index) const {
  requireIndex("-[NSMutableArray objectAtIndex:]", index, count_);
  return elements_[index];
}

std::optional<std::span<NSObject* const>> NSMutableArray::contiguous() const {
  if (!usesOwnStorage()) return std::nullopt;
  return std::span<NSObject* const>(elements_, count_);
}

void NSMutableArray::insertObject_atIndex(NSObject* object, std::uint32_t index) {
  constexpr auto operation = "-[NSMutableArray insertObject:atIndex:]";
  requireObject(operation, object);
  if (index > count_) detail::raiseIndex(operation, index, count_);
  reserve(std::size_t{count_} + 1);
  std::copy_backward(elements_ + index, elements_ + count_, elements_ + count_ + 1);
  retain(object);
  elements_[index] = object;
  ++count_;
  didChange();
}

void NSMutableArray::removeObjectAtIndex(std::uint32_t index) {
  requireIndex("-[NSMutableArray removeObjectAtIndex:]", index, count_);
  const Ref<NSObject> removed(elements_[index], adopt);
  std::copy(elements_ + index + 1, elements_ + count_, elements_ + index);
  --count_;
  didChange();
}

void NSMutableArray::replaceObjectAtIndex_withObject(std::uint32_t index, NSObject* object) {
  constexpr auto operation = "-[NSMutableArray replaceObjectAtIndex:withObject:]";
  requireObject(operation, object);
  requireIndex(operation, index, count_);
  retain(object);
  const Ref<NSObject> replaced(std::exchange(elements_[index], object), adopt);
  didChange();
}

// Adding.

void NSMutableArray::addObject(NSObject* object) {
  requireObject("-[NSMutableArray addObject:]", object);
  if (!usesOwnStorage()) return insertObject_atIndex(object, count());
  if (count_ == capacity_) reserve(std::size_t{count_} + 1);
  retain(object);
  elements_[count_++] = object;
  didChange();
}

void NSMutableArray::addObjectsFromArray(NSArray* other) {
  detail::ArrayBuilder added;
  added.addAll(other);
  replaceRange({count(), 0}, added);
}

void NSMutableArray::insertObjectsFromArray_atIndex(NSArray* other, std::uint32_t index) {
  detail::ArrayBuilder added;
  added.addAll(other);
  if (index > count())
    detail::raiseIndex("-[NSMutableArray insertObjectsFromArray:atIndex:]", index, count());
  replaceRange({index, 0}, added);
}

// Removing.

void NSMutableArray::removeLastObject() {
  const std::uint32_t size = count();
  if (size == 0) detail::raiseIndex("-[NSMutableArray removeLastObject]", 0, 0);
  removeObjectAtIndex(size - 1);
}

/// Removes the elements in `range` for which `test` is true. Asks about all of them first, since
/// what is asked may raise or look at this Array.
template <class Test>
void NSMutableArray::removeWhere(NSRange range, const Test& test) {
  std::vector<std::uint32_t> indexes;
  auto place = detail::ArrayIterator::within(this, range.location, range.location + range.length);
  for (; !place.isAtEnd(); ++place)
    if (test(*place)) indexes.push_back(place.index());
  if (indexes.empty()) return;
  if (!usesOwnStorage()) return removeElementsAtIndexes(indexes);
  std::vector<NSObject*> removed;
  removed.reserve(indexes.size());
  NSObject** to = elements_ + indexes.front();
  for (std::size_t i = 0; i < indexes.size(); ++i) {
    removed.push_back(elements_[indexes[i]]);
    const std::uint32_t next = i + 1 < indexes.size() ? indexes[i + 1] : count_;
    to = std::copy(elements_ + indexes[i] + 1, elements_ + next, to);
  }
  count_ -= static_cast<std::uint32_t>(removed.size());
  didChange();
  detail::releaseElements(removed.data(), removed.size());
}

void NSMutableArray::removeObject(NSObject* object) { removeObject_inRange(object, {0, count()}); }

void NSMutableArray::removeObjectIdenticalTo(NSObject* object) {
  removeObjectIdenticalTo_inRange(object, {0, count()});
}

void NSMutableArray::removeObject_inRange(NSObject* object, NSRange range) {
  detail::requireRange("-[NSMutableArray removeObject:inRange:]", range, count());
  if (object == nullptr) return;
  removeWhere(range, [=](NSObject* each) { return equal(object, each); });
}

void NSMutableArray::removeObjectIdenticalTo_inRange(NSObject* object, NSRange range) {
  detail::requireRange("-[NSMutableArray removeObjectIdenticalTo:inRange:]", range, count());
  removeWhere(range, [=](NSObject* each) { return each == object; });
}

void NSMutableArray::removeObjectsInArray(NSArray* others) {
  detail::Membership doomed(others);
  removeWhere({0, count()}, [&](NSObject* each) { return doomed.contains(each); });
}

void NSMutableArray::filterUsingPredicate(NSPredicate* predicate) {
  detail::requireArgument("-[NSMutableArray filterUsingPredicate:]", "the predicate", predicate);
  removeWhere({0, count()}, [=](NSObject* each) { return !predicate->evaluateWithObject(each); });
}

void NSMutableArray::filterUsingPredicate(const std::function<bool(NSObject*)>& test) {
  detail::requireArgument("-[NSMutableArray filterUsingPredicate:]", "the function",
                          test ? &test : nullptr);
  removeWhere({0, count()}, [&](NSObject* each) { return !test(each); });
}

void NSMutableArray::removeObjectsInRange(NSRange range) {
  detail::requireRange("-[NSMutableArray removeObjectsInRange:]", range, count());
  detail::ArrayBuilder none;
  replaceRange(range, none);
}

void NSMutableArray::removeAllObjects() { removeObjectsInRange({0, count()}); }

// Replacing.

void NSMutableArray::exchangeObjectAtIndex_withObjectAtIndex(std::uint32_t first,
                                                             std::uint32_t second) {
  constexpr auto operation = "-[NSMutableArray exchangeObjectAtIndex:withObjectAtIndex:]";
  const std::uint32_t size = count();
  requireIndex(operation, first, size);
  requireIndex(operation, second, size);
  if (usesOwnStorage()) {
    std::swap(elements_[first], elements_[second]);
    didChange();
    return;
  }
  const Ref<NSObject> a = objectAtIndex(first);
  const Ref<NSObject> b = objectAtIndex(second);
  if (first == second) return;
  NSObject* const swapped[] = {first < second ? b : a, first < second ? a : b};
  const std::uint32_t indexes[] = {std::min(first, second), std::max(first, second)};
  replaceElementsAtIndexes(indexes, swapped);
}

void NSMutableArray::setArray(NSArray* other) {
  detail::ArrayBuilder replacement;
  replacement.addAll(other);
  replaceRange({0, count()}, replacement);
}

void NSMutableArray::replaceObjectsInRange_withObjectsFromArray(NSRange range, NSArray* other) {
  detail::ArrayBuilder replacement;
  replacement.addAll(other);
  detail::requireRange("-[NSMutableArray replaceObjectsInRange:withObjectsFromArray:]", range,
                       count());
  replaceRange(range, replacement);
}

void NSMutableArray::replaceObjectsInRange_withObjectsFromArray_range(NSRange range, NSArray* other,
                                                                      NSRange otherRange) {
  const Ref<NSArray> from = other == nullptr ? NSArray::array() : Ref<NSArray>(other);
  replaceObjectsInRange_withObjectsFromArray(range, from->subarrayWithRange(otherRange));
}

// Sorting.

template <class Sort>
void NSMutableArray::sortWith(const Sort& sort) {
  const std::uint32_t changes = changes_;
  detail::ArrayBuilder before;
  before.addAll(this);
  const auto given = before.elements();
  std::vector<NSObject*> order(given.begin(), given.end());
  sort(std::span(order));
  if (changes_ != changes) detail::raiseChanged();
  if (usesOwnStorage()) {
    std::copy(order.begin(), order.end(), elements_);
    didChange();
    return;
  }
  std::vector<std::uint32_t> moved;
  for (std::uint32_t i = 0; i < order.size(); ++i) {
    if (order[i] == given[i]) continue;
    order[moved.size()] = order[i];
    moved.push_back(i);
  }
  if (!moved.empty())
    replaceElementsAtIndexes(moved, std::span<NSObject* const>(order).first(moved.size()));
}

void NSMutableArray::sortUsingFunction_context(NSSortFunction compare, void* context) {
  detail::requireArgument("-[NSMutableArray sortUsingFunction:context:]", "the function",
                          reinterpret_cast<const void*>(compare));
  sortWith([=](std::span<NSObject*> elements) {
    detail::sortUsingFunction(elements, compare, context);
  });
}

void NSMutableArray::sortUsingSelector(Selector selector) {
  sortWith([=](std::span<NSObject*> elements) { detail::sortUsingSelector(elements, selector); });
}

void NSMutableArray::sortUsingDescriptors(NSArray* descriptors) {
  sortWith(
      [=](std::span<NSObject*> elements) { detail::sortUsingDescriptors(elements, descriptors); });
}

// By Selector: what is made is of the class that was asked.

namespace {

Ref<NSMutableArray> arrayOf(Class* aClass) { return as<NSMutableArray>(aClass->newObject()); }

Ref<NSMutableArray> arrayOfCapacity(Class* aClass, std::uint32_t capacity) {
  if (aClass == classOf<NSMutableArray>()) return NSMutableArray::arrayWithCapacity(capacity);
  return arrayOf(aClass);
}

Ref<NSMutableArray> arrayOfArray(Class* aClass, NSArray* other) {
  auto array = arrayOf(aClass);
  array->addObjectsFromArray(other);
  return array;
}

Ref<NSMutableArray> arrayOfObject(Class* aClass, NSObject* object) {
  auto array = arrayOf(aClass);
  array->addObject(object);
  return array;
}

Ref<NSMutableArray> arrayOfObjects(Class* aClass, NSObject* const* objects, std::uint32_t count) {
  return arrayOfArray(aClass, NSArray::arrayWithObjects_count(objects, count));
}

Ref<NSMutableArray> initOfCapacity(NSMutableArray* array, std::uint32_t) { return array; }

Ref<NSMutableArray> initOfArray(NSMutableArray* array, NSArray* other) {
  array->setArray(other);
  return array;
}

Ref<NSMutableArray> initWithObjects(NSMutableArray* array, NSObject* const* objects,
                                    std::uint32_t count) {
  array->setArray(NSArray::arrayWithObjects_count(objects, count));
  return array;
}

void filterUsing(NSMutableArray* array, NSPredicate* predicate) {
  array->filterUsingPredicate(predicate);
}

}  // namespace

void NSMutableArray::describe(ClassDescription<NSMutableArray>& is) {
  is.named("NSMutableArray")
      .classMethod<&arrayOf>("array")
      .classMethod<&arrayOfCapacity>("arrayWithCapacity:")
      .classMethod<&arrayOfCapacity>("initWithCapacity:")
      .classMethod<&arrayOfArray>("arrayWithArray:")
      .classMethod<&arrayOfArray>("initWithArray:")
      .method<&initOfArray>("initWithArray:")
      .classMethod<&arrayOfObject>("arrayWithObject:")
      .classMethod<&arrayOfObjects>("arrayWithObjects:count:")
      .classMethod<&arrayOfObjects>("initWithObjects:count:")
      .method<&initOfCapacity>("initWithCapacity:")
      .method<&initWithObjects>("initWithObjects:count:")
      .method<&NSMutableArray::insertObject_atIndex>("insertObject:atIndex:")
      .method<&NSMutableArray::removeObjectAtIndex>("removeObjectAtIndex:")
      .method<&NSMutableArray::replaceObjectAtIndex_withObject>("replaceObjectAtIndex:withObject:")
      .method<&NSMutableArray::addObject>("addObject:")
      .method<&NSMutableArray::addObjectsFromArray>("addObjectsFromArray:")
      .method<&NSMutableArray::insertObjectsFromArray_atIndex>("insertObjectsFromArray:atIndex:")
      .method<&NSMutableArray::removeLastObject>("removeLastObject")
      .method<&NSMutableArray::removeObject>("removeObject:")
      .method<&NSMutableArray::removeObjectIdenticalTo>("removeObjectIdenticalTo:")
      .method<&NSMutableArray::removeObject_inRange>("removeObject:inRange:")
      .method<&NSMutableArray::removeObjectIdenticalTo_inRange>("removeObjectIdenticalTo:inRange:")
      .method<&NSMutableArray::removeObjectsInArray>("removeObjectsInArray:")
      .method<&NSMutableArray::removeObjectsInRange>("removeObjectsInRange:")
      .method<&NSMutableArray::removeAllObjects>("removeAllObjects")
      .method<&filterUsing>("filterUsingPredicate:")
      .method<&NSMutableArray::exchangeObjectAtIndex_withObjectAtIndex>(
          "exchangeObjectAtIndex:withObjectAtIndex:")
      .method<&NSMutableArray::setArray>("setArray:")
      .method<&NSMutableArray::replaceObjectsInRange_withObjectsFromArray>(
          "replaceObjectsInRange:withObjectsFromArray:")
      .method<&NSMutableArray::replaceObjectsInRange_withObjectsFromArray_range>(
          "replaceObjectsInRange:withObjectsFromArray:range:")
      .method<&NSMutableArray::sortUsingFunction_context>("sortUsingFunction:context:")
      .method<&NSMutableArray::sortUsingSelector>("sortUsingSelector:")
      .method<&NSMutableArray::sortUsingDescriptors>("sortUsingDescriptors:");
}

}  // namespace qz
