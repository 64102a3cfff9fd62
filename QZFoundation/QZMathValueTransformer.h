/// @file
/// Arithmetic and comparison with a constant, as a value transformer; and the functions behind it.
#pragma once

#include <cstdint>

#include "QZFoundation/NSValueTransformer-QZFoundation.h"

#pragma GCC visibility push(default)

namespace qz {

/// What the operators compute. Comparisons answer 1 for true and 0 for false; with a value that is
/// no number only `QZMathNotEqual` is true. Division follows IEEE 754.
double QZMathAdd(double a, double b) noexcept;
double QZMathSubtract(double a, double b) noexcept;
double QZMathMultiply(double a, double b) noexcept;
double QZMathDivide(double a, double b) noexcept;
double QZMathEquals(double a, double b) noexcept;
double QZMathNotEqual(double a, double b) noexcept;
double QZMathGreaterThan(double a, double b) noexcept;
double QZMathGreaterThanOrEqual(double a, double b) noexcept;
double QZMathLessThan(double a, double b) noexcept;
double QZMathLessThanOrEqual(double a, double b) noexcept;

/// Computes with a Number and a constant: "QZMath-multiply-100" turns 0.5 into 50, and back.
///
/// | code | operator | back |
/// |---|---|---|
/// | 0 | "add" | 1 |
/// | 1 | "subtract" | 0 |
/// | 2 | "multiply" | 3 |
/// | 3 | "divide" | 2 |
/// | 4 | "equals" | 4 |
/// | 5 | "notequal" | 5 |
/// | 6 | "greater" | 9 |
/// | 7 | "greaterorequal" | 8 |
/// | 8 | "less" | 7 |
/// | 9 | "lessorequal" | 6 |
///
/// The way back of a comparison is its negation, with the operands in the same order; "equals" and
/// "notequal" are their own. Immutable; any thread.
class QZMathValueTransformer final : public Derives<QZMathValueTransformer, NSValueTransformer> {
 public:
  static void describe(ClassDescription<QZMathValueTransformer>& is);

  /// Of an operator's code and the second operand.
  QZMathValueTransformer(std::int32_t mathOperation, double operand) noexcept
      : mathOperation_(mathOperation), operand_(operand) {}

  /// Raises NSInvalidArgumentException for a code that there is not.
  static Ref<QZMathValueTransformer> initWithMathOperation_operand(std::int32_t mathOperation,
                                                                   double operand);

  /// Of an operator's name and the constant (what a String answers to `doubleValue`). Nil unless
  /// there are two; an operator that there is not raises NSInvalidArgumentException.
  static Ref<QZMathValueTransformer> valueTransformerWithComponents(NSArray* components);

  /// What transformers of this class can do, by Selector too: NSValueTransformer.h.
  static bool allowsReverseTransformation() { return true; }
  static Class* transformedValueClass();

  /// As it was made.
  std::int32_t mathOperation() const noexcept { return mathOperation_; }
  double operand() const noexcept { return operand_; }

  /// A Number (double) of what `value` answers to `doubleValue`; nil for nil.
  Ref<NSObject> transformedValue(NSObject* value) const override;
  Ref<NSObject> reverseTransformedValue(NSObject* value) const override;

 private:
  const std::int32_t mathOperation_;
  const double operand_;
};

}  // namespace qz

#pragma GCC visibility pop
