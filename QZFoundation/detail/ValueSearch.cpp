#include "QZFoundation/detail/ValueSearch.h"

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/Send.h"
#include "Platform/Values/NSNumber.h"

namespace qz::detail {
namespace {

/// The integer that `value` is, when Numbers are compared by nothing but their own `isEqual:`.
std::optional<std::int64_t> plainInteger(NSObject* value, Selector selector) {
  const auto* number = as<NSNumber>(value);
  if (number == nullptr || selector != "isEqual:"_sel || isFloatingKind(number->kind()))
    return std::nullopt;
  if (number->exceedsInt64()) return std::nullopt;
  if (lookUp(number, selector).imp != InstanceMethod<NSObject, &NSObject::isEqual>::spec().imp)
    return std::nullopt;
  return number->signedBits();
}

// A word holds these kinds as 64-bit integers.
bool isSignedWord(Kind kind) { return isInteger(kind) && kind != Kind::UInt64; }

}  // namespace

ValueSearch::ValueSearch(NSObject* value, NSString* keyPath, Selector selector)
    : value_(value),
      selector_(selector),
      reader_(keyPath),
      integer_(plainInteger(value, selector)) {}

bool ValueSearch::matches(NSObject* element) {
  Ref<NSObject> found;
  try {
    if (integer_) {
      const DispatchEntry* getter = reader_.getterOf(element);
      if (getter != nullptr && isSignedWord(shapeAnswer(getter->shape))) {
        reader_.call(*getter, element);
        return static_cast<std::int64_t>(reader_.call(*getter, element)) == *integer_;
      }
    }
    reader_.read(element);
    found = reader_.read(element);
  } catch (const Raised& raised) {
    if (!raised.is(NSUndefinedKeyException)) throw;
    return false;
  }
  return found && found->performSelector_withObject(selector_, value_).boolValue();
}

}  // namespace qz::detail
