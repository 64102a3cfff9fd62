#include "QZFoundation/QZMathValueTransformer.h"

#include <string>

#include "Platform/Collections/NSArray.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/Send.h"
#include "Platform/Values/NSNumber.h"

namespace qz {

double QZMathAdd(double a, double b) noexcept { return a + b; }
double QZMathSubtract(double a, double b) noexcept { return a - b; }
double QZMathMultiply(double a, double b) noexcept { return a * b; }
double QZMathDivide(double a, double b) noexcept { return a / b; }
double QZMathEquals(double a, double b) noexcept { return a == b ? 1 : 0; }
double QZMathNotEqual(double a, double b) noexcept { return a != b ? 1 : 0; }
double QZMathGreaterThan(double a, double b) noexcept { return a > b ? 1 : 0; }
double QZMathGreaterThanOrEqual(double a, double b) noexcept { return a >= b ? 1 : 0; }
double QZMathLessThan(double a, double b) noexcept { return a < b ? 1 : 0; }
double QZMathLessThanOrEqual(double a, double b) noexcept { return a <= b ? 1 : 0; }

namespace {

struct Operator {
  NSString* name;
  double (*function)(double, double) noexcept;
  std::int32_t inverse;
};

constexpr std::int32_t operatorCount = 10;

const Operator* operators() {
  static const Operator table[operatorCount] = {
      {"add"_ns, &QZMathAdd, 1},
      {"subtract"_ns, &QZMathSubtract, 0},
      {"multiply"_ns, &QZMathMultiply, 3},
      {"divide"_ns, &QZMathDivide, 2},
      {"equals"_ns, &QZMathEquals, 4},
      {"notequal"_ns, &QZMathNotEqual, 5},
      {"greater"_ns, &QZMathGreaterThan, 9},
      {"greaterorequal"_ns, &QZMathGreaterThanOrEqual, 8},
      {"less"_ns, &QZMathLessThan, 7},
      {"lessorequal"_ns, &QZMathLessThanOrEqual, 6},
  };
  return table;
}

std::int32_t codeOf(NSObject* name) {
  for (std::int32_t code = 0; code < operatorCount; ++code)
    if (equal(operators()[code].name, name)) return code;
  NSException::raise_reason(
      NSInvalidArgumentException,
      NSString::stringWithFormat("QZMathValueTransformer invalid operator \"%@\""_ns, name));
}

double doubleOf(NSObject* value) {
  if (auto* number = as<NSNumber>(value)) return number->doubleValue();
  return send<double>(value, "doubleValue"_sel);
}

Ref<NSObject> compute(std::int32_t code, NSObject* value, double operand) {
  if (value == nullptr) return nullptr;
  return NSNumber::numberWithDouble(operators()[code].function(doubleOf(value), operand));
}

}  // namespace

void QZMathValueTransformer::describe(ClassDescription<QZMathValueTransformer>& is) {
  using Self = QZMathValueTransformer;
  is.named("QZMathValueTransformer")
      .initializer<&Self::initWithMathOperation_operand>("initWithMathOperation:operand:")
      .classMethod<&Self::valueTransformerWithComponents>("valueTransformerWithComponents:")
      .classMethod<&Self::allowsReverseTransformation>("allowsReverseTransformation")
      .classMethod<&Self::transformedValueClass>("transformedValueClass")
      .property<&Self::mathOperation>("mathOperation")
      .property<&Self::operand>("operand");
}

Ref<QZMathValueTransformer> QZMathValueTransformer::initWithMathOperation_operand(
    std::int32_t mathOperation, double operand) {
  if (mathOperation < 0 || mathOperation >= operatorCount)
    detail::raise(
        NSInvalidArgumentException,
        "initWithMathOperation:operand: there is no operation " + std::to_string(mathOperation));
  return make<QZMathValueTransformer>(mathOperation, operand);
}

Ref<QZMathValueTransformer> QZMathValueTransformer::valueTransformerWithComponents(
    NSArray* components) {
  if (components == nullptr || components->count() != 2) return nullptr;
  const std::int32_t code = codeOf(components->objectAtIndex(0));
  return make<QZMathValueTransformer>(code, doubleOf(components->objectAtIndex(1)));
}

Class* QZMathValueTransformer::transformedValueClass() { return classOf<NSNumber>(); }

Ref<NSObject> QZMathValueTransformer::transformedValue(NSObject* value) const {
  return compute(mathOperation_, value, operand_);
}

Ref<NSObject> QZMathValueTransformer::reverseTransformedValue(NSObject* value) const {
  return compute(operators()[mathOperation_].inverse, value, operand_);
}

}  // namespace qz
