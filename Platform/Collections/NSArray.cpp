#include "Platform/Collections/NSArray.h"

#include <algorithm>
#include <string>
#include <utility>

#include "Platform/Collections/NSEnumerator.h"
#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Collections/NSPredicate.h"
#include "Platform/Collections/detail/ArraySort.h"
#include "Platform/Collections/detail/CollectionOperators.h"
#include "Platform/Collections/detail/DescriptionPrinter.h"
#include "Platform/Collections/detail/EqualityGuard.h"
#include "Platform/Collections/detail/Membership.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/Send.h"
#include "Platform/Values/NSNull.h"
#include "Platform/Values/detail/UnitBuffer.h"

namespace qz {

// Making.

Ref<NSArray> NSArray::array() { return detail::emptyArray(); }

Ref<NSArray> NSArray::arrayWithObject(NSObject* object) { return fromSpan({&object, 1}); }

Ref<NSArray> NSArray::arrayWithObjects(std::initializer_list<NSObject*> objects) {
  return fromSpan({objects.begin(), objects.size()});
}

Ref<NSArray> NSArray::arrayWithObjects_count(NSObject* const* objects, std::uint32_t count) {
  if (count > 0)
    detail::requireArgument("+[NSArray arrayWithObjects:count:]", "the buffer", objects);
  return fromSpan({objects, count});
}

Ref<NSArray> NSArray::initWithObjects_count(NSObject* const* objects, std::uint32_t count) {
  return arrayWithObjects_count(objects, count);
}

Ref<NSArray> NSArray::fromSpan(std::span<NSObject* const> objects) {
  detail::ArrayBuilder builder;
  builder.addAll(objects);
  return builder.finish();
}

Ref<NSArray> NSArray::arrayWithArray(NSArray* other) {
  return other == nullptr ? array() : as<NSArray>(other->copy());
}

// The primitives, as an empty Array has them.

std::uint32_t NSArray::count() const { return 0; }

Ref<NSObject> NSArray::objectAtIndex(std::uint32_t index) const {
  detail::raiseIndex("-[NSArray objectAtIndex:]", index, count());
}

std::optional<std::span<NSObject* const>> NSArray::contiguous() const { return std::nullopt; }

const std::uint32_t* NSArray::mutationCounter() const { return &detail::neverChanged; }

// Walking.

void detail::raiseChanged() {
  raise(NSGenericException, "a collection was changed while it was being enumerated");
}

void detail::refuseElement(const Class* wanted, const NSObject* given) {
  raise(NSInvalidArgumentException,
        "an element of class " + std::string(given->classObject()->name()) + " stands where a " +
            std::string(wanted->name()) + " is wanted");
}

Ref<NSObject> detail::elementAt(const NSArray* array, std::uint32_t index) {
  Ref<NSObject> element = array->objectAtIndex(index);
  return element ? std::move(element) : Ref<NSObject>(NSNull::null());
}

detail::ArrayIterator detail::ArrayIterator::first(const NSArray* array) {
  return array == nullptr ? ArrayIterator() : within(array, 0, array->count());
}

detail::ArrayIterator detail::ArrayIterator::within(const NSArray* array, std::uint32_t from,
                                                    std::uint32_t to) {
  ArrayIterator place;
  place.changes_ = array->mutationCounter();
  place.expected_ = *place.changes_;
  place.index_ = from;
  place.end_ = to;
  if (const auto elements = array->contiguous()) {
    place.elements_ = elements->data();
    return place;
  }
  place.array_ = array;
  if (from < to) place.element_ = elementAt(array, from);
  return place;
}

detail::ArrayIterator detail::ArrayIterator::last(const NSArray* array) {
  ArrayIterator place;
  if (array != nullptr) place.index_ = place.end_ = array->count();
  return place;
}

namespace {

/// Walks an Array in either direction.
class ArrayEnumerator final : public NSEnumerator {
 public:
  ArrayEnumerator(const NSArray* array, bool forwards)
      : forwards_(forwards),
        left_(array->count()),
        index_(forwards ? 0 : left_),
        expected_(*array->mutationCounter()),
        changes_(array->mutationCounter()),
        array_(array) {}

  Ref<NSObject> nextObject() override {
    if (!array_) return nullptr;
    if (*changes_ != expected_) detail::raiseChanged();
    if (left_ == 0) {
      array_ = nullptr;
      return nullptr;
    }
    --left_;
    return detail::elementAt(array_, forwards_ ? index_++ : --index_);
  }

 private:
  bool forwards_;
  std::uint32_t left_;
  std::uint32_t index_;
  std::uint32_t expected_;
  const std::uint32_t* changes_;
  Ref<const NSArray> array_;
};

}  // namespace

Ref<NSEnumerator> NSArray::objectEnumerator() const { return make<ArrayEnumerator>(this, true); }

Ref<NSEnumerator> NSArray::reverseObjectEnumerator() const {
  return make<ArrayEnumerator>(this, false);
}

// Reading.

Ref<NSObject> NSArray::lastObject() const {
  const std::uint32_t size = count();
  return size == 0 ? nullptr : objectAtIndex(size - 1);
}

void NSArray::getObjects(NSObject** buffer) const {
  for (NSObject* each : *this) {
    // The walk's own count is the only one there is.
    if (each->retainCount() == 1 && !contiguous())
      detail::raise(NSInvalidArgumentException,
                    "-[NSArray getObjects:]: an element is made on demand and would not live on");
    *buffer++ = each;
  }
}

std::vector<Ref<NSObject>> NSArray::toVector() const {
  std::vector<Ref<NSObject>> all;
  all.reserve(count());
  for (NSObject* each : *this) all.emplace_back(each);
  return all;
}

bool NSArray::containsObject(NSObject* object) const { return indexOfObject(object) != NSNotFound; }

namespace {

template <class Test>
std::uint32_t firstIndex(detail::ArrayIterator place, const Test& test) {
  for (; !place.isAtEnd(); ++place)
    if (test(*place)) return place.index();
  return NSNotFound;
}

auto isEqualTo(NSObject* object) {
  return [=](NSObject* each) { return each == object || object->isEqual(each); };
}

auto isIdenticalTo(NSObject* object) {
  return [=](NSObject* each) { return each == object; };
}

detail::ArrayIterator walkWithin(const char* operation, const NSArray* array, NSRange range) {
  detail::requireRange(operation, range, array->count());
  return detail::ArrayIterator::within(array, range.location, range.location + range.length);
}

}  // namespace

std::uint32_t NSArray::indexOfObject(NSObject* object) const {
  if (object == nullptr) return NSNotFound;
  return firstIndex(begin(), isEqualTo(object));
}

std::uint32_t NSArray::indexOfObjectIdenticalTo(NSObject* object) const {
  return firstIndex(begin(), isIdenticalTo(object));
}

std::uint32_t NSArray::indexOfObject_inRange(NSObject* object, NSRange range) const {
  const auto walk = walkWithin("-[NSArray indexOfObject:inRange:]", this, range);
  return object == nullptr ? NSNotFound : firstIndex(walk, isEqualTo(object));
}

std::uint32_t NSArray::indexOfObjectIdenticalTo_inRange(NSObject* object, NSRange range) const {
  const auto walk = walkWithin("-[NSArray indexOfObjectIdenticalTo:inRange:]", this, range);
  return firstIndex(walk, isIdenticalTo(object));
}

std::uint32_t NSArray::indexOfObjectPassingTest(
    const std::function<bool(NSObject*, std::uint32_t)>& test) const {
  detail::requireArgument("-[NSArray indexOfObjectPassingTest]", "the test",
                          test ? &test : nullptr);
  std::uint32_t index = 0;
  return firstIndex(begin(), [&](NSObject* each) { return test(each, index++); });
}

std::vector<std::uint32_t> NSArray::indexesOfObjectsPassingTest(
    const std::function<bool(NSObject*, std::uint32_t)>& test) const {
  detail::requireArgument("-[NSArray indexesOfObjectsPassingTest]", "the test",
                          test ? &test : nullptr);
  std::vector<std::uint32_t> indexes;
  std::uint32_t index = 0;
  for (NSObject* each : *this) {
    if (test(each, index)) indexes.push_back(index);
    ++index;
  }
  return indexes;
}

Ref<NSObject> NSArray::firstObjectCommonWithArray(NSArray* other) const {
  detail::Membership others(other);
  for (NSObject* each : *this)
    if (others.contains(each)) return each;
  return nullptr;
}

Ref<NSString> NSArray::componentsJoinedByString(NSString* separator) const {
  const std::u16string_view between = separator != nullptr ? separator->view() : u"";
  std::size_t length = 0;
  for (NSObject* each : *this)
    if (auto* string = as<NSString>(each)) length += string->length() + between.size();
  detail::UnitBuffer text;
  text.room(length);
  bool first = true;
  for (NSObject* each : *this) {
    if (!first) text.append(between);
    first = false;
    if (auto* string = as<NSString>(each))
      text.append(string->view());
    else if (const Ref<NSString> words = each->description())
      text.append(words->view());
  }
  return text.toString();
}

void NSArray::makeObjectsPerformSelector(Selector selector) const {
  for (Ref<NSObject> each : *this) each->performSelector(selector);
}

void NSArray::makeObjectsPerformSelector_withObject(Selector selector, NSObject* object) const {
  for (Ref<NSObject> each : *this) each->performSelector_withObject(selector, object);
}

// New Arrays.

Ref<NSArray> NSArray::subarrayWithRange(NSRange range) const {
  detail::requireRange("-[NSArray subarrayWithRange:]", range, count());
  if (const auto elements = contiguous())
    return fromSpan(elements->subspan(range.location, range.length));
  detail::ArrayBuilder builder(range.length);
  for (std::uint32_t i = 0; i < range.length; ++i)
    builder.take(detail::elementAt(this, range.location + i));
  return builder.finish();
}

Ref<NSArray> NSArray::arrayByAddingObject(NSObject* object) const {
  detail::ArrayBuilder builder(std::size_t{count()} + 1);
  builder.addAll(this);
  builder.add(object);
  return builder.finish();
}

Ref<NSArray> NSArray::arrayByAddingObjectsFromArray(NSArray* other) const {
  detail::ArrayBuilder builder(std::size_t{count()} + (other == nullptr ? 0 : other->count()));
  builder.addAll(this);
  builder.addAll(other);
  return builder.finish();
}

Ref<NSArray> NSArray::filteredArrayUsingPredicate(NSPredicate* predicate) const {
  detail::requireArgument("-[NSArray filteredArrayUsingPredicate:]", "the predicate", predicate);
  return filteredArrayUsingPredicate(
      [=](NSObject* each) { return predicate->evaluateWithObject(each); });
}

Ref<NSArray> NSArray::filteredArrayUsingPredicate(
    const std::function<bool(NSObject*)>& test) const {
  detail::requireArgument("-[NSArray filteredArrayUsingPredicate:]", "the function",
                          test ? &test : nullptr);
  detail::ArrayBuilder builder;
  for (Ref<NSObject> each : *this)
    if (test(each)) builder.take(std::move(each));
  return builder.finish();
}

namespace {

/// The Array of `array`'s elements as `sort` orders them. Only borrowed pointers are moved about,
/// so whatever the comparison throws leaves nothing to repair.
template <class Sort>
Ref<NSArray> sorted(const NSArray* array, const Sort& sort) {
  detail::ArrayBuilder builder;
  builder.addAll(array);
  std::vector<NSObject*> order(builder.elements().begin(), builder.elements().end());
  sort(std::span(order));
  std::copy(order.begin(), order.end(), builder.elements().begin());
  return builder.finish();
}

}  // namespace

Ref<NSArray> NSArray::sortedArrayUsingFunction_context(NSSortFunction compare,
                                                       void* context) const {
  detail::requireArgument("-[NSArray sortedArrayUsingFunction:context:]", "the function",
                          reinterpret_cast<const void*>(compare));
  return sorted(this, [=](std::span<NSObject*> elements) {
    detail::sortUsingFunction(elements, compare, context);
  });
}

Ref<NSArray> NSArray::sortedArrayUsingSelector(Selector selector) const {
  return sorted(
      this, [=](std::span<NSObject*> elements) { detail::sortUsingSelector(elements, selector); });
}

Ref<NSArray> NSArray::sortedArrayUsingDescriptors(NSArray* descriptors) const {
  return sorted(this, [=](std::span<NSObject*> elements) {
    detail::sortUsingDescriptors(elements, descriptors);
  });
}

// As an Object.

bool NSArray::isEqualToArray(NSArray* other) const {
  if (other == this) return true;
  if (other == nullptr || other->count() != count()) return false;
  const detail::EqualityGuard guard(this, other);
  if (guard.isUnderWay()) return true;
  auto theirs = other->begin();
  for (NSObject* ours : *this) {
    if (!equal(ours, *theirs)) return false;
    ++theirs;
  }
  return true;
}

bool NSArray::isEqual(NSObject* other) const {
  return other == this || isEqualToArray(as<NSArray>(other));
}

std::size_t NSArray::hash() const {
  constexpr std::uint32_t sampled = 8;  // at either end
  const std::uint32_t size = count();
  std::size_t hash = size;
  const auto mix = [&](std::uint32_t index) {
    const Ref<NSObject> element = detail::elementAt(this, index);
    const auto* nested = as<NSArray>(element.get());
    hash = hash * 0x9E3779B97F4A7C15U + (nested != nullptr ? nested->count() : element->hash());
  };
  for (std::uint32_t i = 0; i < std::min(size, sampled); ++i) mix(i);
  for (std::uint32_t i = std::max(sampled, size - std::min(size, sampled)); i < size; ++i) mix(i);
  return hash;
}

Ref<NSString> NSArray::description() const {
  detail::DescriptionPrinter printer(this, detail::arrayStyle);
  if (printer.entered())
    for (NSObject* each : *this) printer.element(each);
  return printer.finish();
}

Ref<NSObject> NSArray::copy() const {
  detail::ArrayBuilder builder;
  builder.addAll(this);
  return builder.finish();
}

Ref<NSObject> NSArray::mutableCopy() const {
  return NSMutableArray::arrayWithArray(const_cast<NSArray*>(this));
}

namespace {

template <class Value>
Ref<NSArray> valuesOf(const NSArray* array, const Value& value) {
  detail::ArrayBuilder builder(array->count());
  for (Ref<NSObject> each : *array) {
    Ref<NSObject> found = value(each.get());
    builder.take(found ? std::move(found) : Ref<NSObject>(NSNull::null()));
  }
  return builder.finish();
}

}  // namespace

Ref<NSObject> NSArray::valueForKey(NSString* key) {
  if (key != nullptr && key->view().starts_with(u'@'))
    return detail::valueForOperatorPath(this, key);
  return valuesOf(this, [=](NSObject* each) { return each->valueForKey(key); });
}

// The whole path goes to each element, so that a step on the way that answers nil gives Null, as
// the last one does.
Ref<NSObject> NSArray::valueForKeyPath(NSString* keyPath) {
  const std::size_t at = keyPath == nullptr ? 0 : detail::operatorStart(keyPath->view());
  if (keyPath != nullptr && at != std::u16string_view::npos) {
    if (at == 0) return detail::valueForOperatorPath(this, keyPath);
    const auto before = NSString::stringWithCharacters(keyPath->view().substr(0, at - 1));
    const auto after = NSString::stringWithCharacters(keyPath->view().substr(at));
    return valueForKeyPath(before)->valueForKeyPath(after);
  }
  return valuesOf(this, [=](NSObject* each) { return each->valueForKeyPath(keyPath); });
}

void NSArray::setValue_forKey(NSObject* value, NSString* key) {
  for (Ref<NSObject> each : *this) each->setValue_forKey(value, key);
}

void NSArray::setValue_forKeyPath(NSObject* value, NSString* keyPath) {
  for (Ref<NSObject> each : *this) each->setValue_forKeyPath(value, keyPath);
}

// By Selector.

namespace {

Ref<NSArray> emptyOf(Class* aClass) {
  if (aClass == classOf<NSArray>()) return NSArray::array();
  return as<NSArray>(aClass->newObject());
}

Ref<NSArray> initWithObjects(NSArray*, NSObject* const* objects, std::uint32_t count) {
  return NSArray::initWithObjects_count(objects, count);
}

Ref<NSArray> filteredUsingPredicate(NSArray* array, NSPredicate* predicate) {
  return array->filteredArrayUsingPredicate(predicate);
}

}  // namespace

void NSArray::describe(ClassDescription<NSArray>& is) {
  is.named("NSArray")
      .classMethod<&emptyOf>("array")
      .classMethod<&NSArray::arrayWithObject>("arrayWithObject:")
      .classMethod<&NSArray::arrayWithObjects_count>("arrayWithObjects:count:")
      .classMethod<&NSArray::initWithObjects_count>("initWithObjects:count:")
      .classMethod<&NSArray::arrayWithArray>("arrayWithArray:")
      .initializer<&NSArray::initWithArray>("initWithArray:")
      .method<&initWithObjects>("initWithObjects:count:")
      .method<&NSArray::count>("count")
      .method<&NSArray::objectAtIndex>("objectAtIndex:")
      .method<&NSArray::lastObject>("lastObject")
      .method<&NSArray::getObjects>("getObjects:")
      .method<&NSArray::objectEnumerator>("objectEnumerator")
      .method<&NSArray::reverseObjectEnumerator>("reverseObjectEnumerator")
      .method<&NSArray::containsObject>("containsObject:")
      .method<&NSArray::indexOfObject>("indexOfObject:")
      .method<&NSArray::indexOfObjectIdenticalTo>("indexOfObjectIdenticalTo:")
      .method<&NSArray::indexOfObject_inRange>("indexOfObject:inRange:")
      .method<&NSArray::indexOfObjectIdenticalTo_inRange>("indexOfObjectIdenticalTo:inRange:")
      .method<&NSArray::firstObjectCommonWithArray>("firstObjectCommonWithArray:")
      .method<&NSArray::componentsJoinedByString>("componentsJoinedByString:")
      .method<&NSArray::makeObjectsPerformSelector>("makeObjectsPerformSelector:")
      .method<&NSArray::makeObjectsPerformSelector_withObject>(
          "makeObjectsPerformSelector:withObject:")
      .method<&NSArray::subarrayWithRange>("subarrayWithRange:")
      .method<&NSArray::arrayByAddingObject>("arrayByAddingObject:")
      .method<&NSArray::arrayByAddingObjectsFromArray>("arrayByAddingObjectsFromArray:")
      .method<&filteredUsingPredicate>("filteredArrayUsingPredicate:")
      .method<&NSArray::sortedArrayUsingFunction_context>("sortedArrayUsingFunction:context:")
      .method<&NSArray::sortedArrayUsingSelector>("sortedArrayUsingSelector:")
      .method<&NSArray::sortedArrayUsingDescriptors>("sortedArrayUsingDescriptors:")
      .method<&NSArray::isEqualToArray>("isEqualToArray:");
}

}  // namespace qz
