/// @file
/// Predicates: conditions as Objects.
#pragma once

#include <functional>
#include <initializer_list>

#include "Platform/Runtime/Derives.h"

#pragma GCC visibility push(default)

namespace qz {

class NSArray;

/// A condition that an Object meets or does not.
///
///     auto adult = NSPredicate::predicateWithKeyPath_selector_value(
///         "age"_ns, "isGreaterThan:"_sel, NSNumber::numberWithInt(17));
///     auto known = NSPredicate::predicateWithBlock([&](NSObject* each) { return knows(each); });
///     people->filteredArrayUsingPredicate(NSPredicate::andPredicateWithSubpredicates({adult,
///     known}));
///
/// A derived class overrides `evaluateWithObject`. The predicates made here are immutable.
class NSPredicate : public Derives<NSPredicate, NSObject> {
 public:
  static void describe(ClassDescription<NSPredicate>& is);

  /// Whether `object`, which may be nil, meets the condition.
  virtual bool evaluateWithObject(NSObject* object) const = 0;

  /// True for what `block` says; keeps `block`. An empty one raises NSInvalidArgumentException.
  static Ref<NSPredicate> predicateWithBlock(std::function<bool(NSObject*)> block);

  /// Always `value`.
  static Ref<NSPredicate> predicateWithValue(bool value);

  /// True when the Object's value at `keyPath` answers `selector` with `value` by something other
  /// than zero or nil. A nil key path means the Object itself; a value of nil at the path is false.
  static Ref<NSPredicate> predicateWithKeyPath_selector_value(NSString* keyPath, Selector selector,
                                                              NSObject* value);

  /// True when all are, any is, or the one is not; asks them in order, no more than needed.
  /// Nil or another kind of Object among them raises NSInvalidArgumentException. None at all:
  /// `and` is true, `or` false. Keeps the predicates.
  static Ref<NSPredicate> andPredicateWithSubpredicates(NSArray* parts);
  static Ref<NSPredicate> andPredicateWithSubpredicates(std::initializer_list<NSPredicate*> parts);
  static Ref<NSPredicate> orPredicateWithSubpredicates(NSArray* parts);
  static Ref<NSPredicate> orPredicateWithSubpredicates(std::initializer_list<NSPredicate*> parts);
  static Ref<NSPredicate> notPredicateWithSubpredicate(NSPredicate* part);

  /// This very predicate.
  Ref<NSObject> copy() const override;
};

}  // namespace qz

#pragma GCC visibility pop
