#include "Platform/Collections/detail/CollectionOperators.h"

#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/NSSet.h"
#include "Platform/Collections/detail/ArrayBuilder.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/Send.h"
#include "Platform/Values/NSNull.h"
#include "Platform/Values/NSNumber.h"
#include "Platform/Values/NSString.h"

namespace qz::detail {
namespace {

bool isMissing(NSObject* value) { return value == nullptr || value == NSNull::null(); }

/// Calls `use` with each element of an Array or a Set; false for anything else.
template <class Use>
bool forEachElement(NSObject* collection, Use use) {
  if (auto* array = as<NSArray>(collection)) {
    for (Ref<NSObject> each : *array) use(each.get());
  } else if (auto* set = as<NSSet>(collection)) {
    for (NSObject* each : *set) use(each);
  } else {
    return false;
  }
  return true;
}

/// An element's value at the path; the element itself when there is none.
Ref<NSObject> valueAt(NSObject* element, NSString* path) {
  if (path == nullptr) return element;
  return element->valueForKeyPath(path);
}

/// Calls `use` with the value of each element that has one.
template <class Use>
void forEachValue(NSObject* collection, NSString* path, Use use) {
  forEachElement(collection, [&](NSObject* each) {
    if (isMissing(each)) return;
    const Ref<NSObject> value = valueAt(each, path);
    if (!isMissing(value)) use(value.get());
  });
}

class Total {
 public:
  void add(NSObject* value) {
    ++count_;
    const auto* number = as<NSNumber>(value);
    if (number == nullptr || isFloatingKind(number->kind()))
      floating_ +=
          number != nullptr ? number->doubleValue() : send<double>(value, "doubleValue"_sel);
    else if (number->kind() == NumberKind::UnsignedLongLong)
      addInteger(number->bits());
    else
      addInteger(number->signedBits());
    isFloating_ |= number == nullptr || isFloatingKind(number->kind());
  }

  Ref<NSNumber> sum() const {
    if (isFloating_ || integer_ > std::numeric_limits<std::uint64_t>::max() ||
        integer_ < std::numeric_limits<std::int64_t>::min())
      return NSNumber::numberWithDouble(static_cast<double>(total()));
    if (integer_ > std::numeric_limits<std::int64_t>::max())
      return NSNumber::numberWithUnsignedLongLong(static_cast<std::uint64_t>(integer_));
    return NSNumber::numberWithLongLong(static_cast<std::int64_t>(integer_));
  }

  Ref<NSNumber> average() const {
    if (count_ == 0) return nullptr;
    return NSNumber::numberWithDouble(static_cast<double>(total() / count_));
  }

 private:
  // 2^32 integers of 64 bits fit.
  __extension__ using Wide = __int128;

  template <class T>
  void addInteger(T value) {
    integer_ += value;
  }
  long double total() const { return floating_ + static_cast<long double>(integer_); }

  Wide integer_ = 0;
  long double floating_ = 0;
  std::uint32_t count_ = 0;
  bool isFloating_ = false;
};

Total totalOf(NSObject* collection, NSString* path) {
  Total total;
  forEachValue(collection, path, [&](NSObject* value) { total.add(value); });
  return total;
}

Ref<NSObject> sum(NSObject* collection, NSString* path) { return totalOf(collection, path).sum(); }

Ref<NSObject> average(NSObject* collection, NSString* path) {
  return totalOf(collection, path).average();
}

template <NSComparisonResult wanted>
Ref<NSObject> extreme(NSObject* collection, NSString* path) {
  Ref<NSObject> best;
  forEachValue(collection, path, [&](NSObject* value) {
    if (!best || send<NSComparisonResult>(value, "compare:"_sel, best) == wanted) best = value;
  });
  return best;
}

Ref<NSArray> objects(NSObject* collection, NSString* path) {
  ArrayBuilder values;
  forEachValue(collection, path, [&](NSObject* value) { values.add(value); });
  return values.finish();
}

Ref<NSArray> elementsOfAll(NSObject* collection, NSString* path) {
  ArrayBuilder values;
  const auto add = [&](NSObject* value) {
    if (!isMissing(value)) values.add(value);
  };
  forEachElement(collection, [&](NSObject* each) {
    if (isMissing(each)) return;
    const Ref<NSObject> value = valueAt(each, path);
    if (!isMissing(value) && !forEachElement(value, add))
      raise(NSInvalidArgumentException,
            "a union of collections met one of class " + std::string(value->classObject()->name()));
  });
  return values.finish();
}

template <Ref<NSArray> (*gather)(NSObject*, NSString*)>
Ref<NSObject> unionOf(NSObject* collection, NSString* path) {
  return gather(collection, path);
}

template <Ref<NSArray> (*gather)(NSObject*, NSString*)>
Ref<NSObject> distinctUnionOf(NSObject* collection, NSString* path) {
  Ref<NSSet> values = NSSet::setWithArray(gather(collection, path));
  if (isKind<NSSet>(collection)) return values;
  return values->allObjects();
}

struct Operator {
  std::u16string_view name;
  Ref<NSObject> (*apply)(NSObject* collection, NSString* path);
};

constexpr std::array operators{
    Operator{u"@sum", &sum},
    Operator{u"@avg", &average},
    Operator{u"@min", &extreme<NSOrderedAscending>},
    Operator{u"@max", &extreme<NSOrderedDescending>},
    Operator{u"@unionOfObjects", &unionOf<objects>},
    Operator{u"@distinctUnionOfObjects", &distinctUnionOf<objects>},
    Operator{u"@unionOfArrays", &unionOf<elementsOfAll>},
    Operator{u"@distinctUnionOfArrays", &distinctUnionOf<elementsOfAll>},
    Operator{u"@unionOfSets", &unionOf<elementsOfAll>},
    Operator{u"@distinctUnionOfSets", &distinctUnionOf<elementsOfAll>},
};

}  // namespace

Ref<NSObject> valueForOperatorPath(NSObject* collection, NSString* path) {
  const std::u16string_view text = path->view();
  const std::size_t dot = text.find(u'.');
  const std::u16string_view name = text.substr(0, dot);
  Ref<NSString> rest;
  if (dot != text.npos) rest = NSString::stringWithCharacters(text.substr(dot + 1));
  for (const Operator& each : operators)
    if (each.name == name) return each.apply(collection, rest);
  // The collection's own `valueForKey` would ask the elements.
  Ref<NSObject> value =
      collection->NSObject::valueForKey(NSString::stringWithCharacters(name.substr(1)));
  return value && rest ? value->valueForKeyPath(rest) : value;
}

}  // namespace qz::detail
