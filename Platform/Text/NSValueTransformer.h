/// @file
/// Value transformers: conversions of single values, found by name.
#pragma once

#include <functional>

#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSString.h"

#pragma GCC visibility push(default)

namespace qz {

class NSArray;

/// Turns a value into another one, and perhaps back. The base class answers what it is given; a
/// class below overrides `transformedValue` and, if it can, `reverseTransformedValue`, and answers
/// two class-level operations:
///
///     class Celsius : public Derives<Celsius, NSValueTransformer> { … };
///     Celsius::describe: is.named("Celsius")
///         .classMethod<&allows>("allowsReverseTransformation")      // bool; true here
///         .classMethod<&itsClass>("transformedValueClass");         // Class*; NSObject here
///
/// Transformers that everybody uses are registered, once, and found by name:
///
///     NSValueTransformer::setValueTransformer_forName(make<Celsius>(), "Celsius"_ns);
///     auto transformer = NSValueTransformer::valueTransformerForName("Celsius"_ns);
///     Ref<NSObject> degrees = transformer->transformedValue(kelvin);
///
/// The table of names serves all threads: looking up takes no lock. What is registered stays alive
/// for the life of the process, also when another one takes its name. Transformers themselves are
/// used by several threads at a time and must allow it.
class NSValueTransformer : public Derives<NSValueTransformer, NSObject> {
 public:
  static void describe(ClassDescription<NSValueTransformer>& is);

  /// What a lambda turns values into; without `back`, reverse transformation raises.
  using Function = std::function<Ref<NSObject>(NSObject*)>;
  static Ref<NSValueTransformer> transformerWithFunctions(Function forth, Function back = nullptr);

  /// The one registered under the name; nil when there is none, and for nil. Constant time.
  static Ref<NSValueTransformer> valueTransformerForName(NSString* name);

  /// Registers `transformer` in the place of the one that had the name; nil leaves the name without
  /// any. Raises NSInvalidArgumentException for a nil name.
  static void setValueTransformer_forName(NSValueTransformer* transformer, NSString* name);

  /// The names that transformers are registered under, in no particular order.
  static Ref<NSArray> valueTransformerNames();

  /// Whether values can be turned back, and the class of those that come out. What the class of a
  /// transformer answers to these Selectors is what counts.
  static bool allowsReverseTransformation() { return true; }
  static Class* transformedValueClass() { return classOf<NSObject>(); }

  /// Nil may go in and come out.
  virtual Ref<NSObject> transformedValue(NSObject* value) const;

  /// The way back: `transformedValue` unless overridden. Raises NSInvalidArgumentException when the
  /// class does not allow it.
  virtual Ref<NSObject> reverseTransformedValue(NSObject* value) const;
};

/// Registered from the start: the opposite truth value (both ways), and whether a value is nil.
inline NSString* const NSNegateBooleanTransformerName = detail::literal<"NSNegateBoolean">();
inline NSString* const NSIsNilTransformerName = detail::literal<"NSIsNil">();
inline NSString* const NSIsNotNilTransformerName = detail::literal<"NSIsNotNil">();

}  // namespace qz

#pragma GCC visibility pop
