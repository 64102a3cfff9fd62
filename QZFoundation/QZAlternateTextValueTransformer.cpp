#include "QZFoundation/QZAlternateTextValueTransformer.h"

#include "Platform/Collections/NSArray.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/Send.h"
#include "Platform/System/NSBundle.h"

namespace qz {

void QZAlternateTextValueTransformer::describe(
    ClassDescription<QZAlternateTextValueTransformer>& is) {
  using Self = QZAlternateTextValueTransformer;
  is.named("QZAlternateTextValueTransformer")
      .initializer<&Self::initWithStrings>("initWithStrings:")
      .classMethod<&Self::valueTransformerWithComponents>("valueTransformerWithComponents:")
      .classMethod<&Self::allowsReverseTransformation>("allowsReverseTransformation")
      .classMethod<&Self::transformedValueClass>("transformedValueClass");
}

QZAlternateTextValueTransformer::QZAlternateTextValueTransformer(NSArray* strings)
    : strings_(NSArray::arrayWithArray(strings)) {}
QZAlternateTextValueTransformer::~QZAlternateTextValueTransformer() = default;

Ref<QZAlternateTextValueTransformer> QZAlternateTextValueTransformer::initWithStrings(
    NSArray* strings) {
  return make<QZAlternateTextValueTransformer>(strings);
}

Ref<QZAlternateTextValueTransformer>
QZAlternateTextValueTransformer::valueTransformerWithComponents(NSArray* components) {
  return initWithStrings(components);
}

Class* QZAlternateTextValueTransformer::transformedValueClass() { return classOf<NSString>(); }

Ref<NSObject> QZAlternateTextValueTransformer::transformedValue(NSObject* value) const {
  Ref<NSString> key;
  const std::uint32_t count = strings_->count();
  if (value != nullptr && count != 0 && value->respondsToSelector("intValue"_sel)) {
    const auto index = send<std::int32_t>(value, "intValue"_sel);
    if (index < 0)
      key = as<NSString>(strings_->objectAtIndex(0));
    else if (static_cast<std::uint32_t>(index) != NSNotFound)
      key = as<NSString>(strings_->objectAtIndex(static_cast<std::uint32_t>(index) < count
                                                     ? static_cast<std::uint32_t>(index)
                                                     : count - 1));
  }
  return NSBundle::mainBundle()->localizedStringForKey_value_table(key, ""_ns, nullptr);
}

}  // namespace qz
