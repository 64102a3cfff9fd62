#include "QZFoundation/QZWordSeparator.h"

#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Values/NSCharacterSet.h"
#include "QZFoundation/NSString-QZSearch.h"

namespace qz {

void QZWordSeparator::describe(ClassDescription<QZWordSeparator>& is) {
  is.named("QZWordSeparator")
      .initialize([] {
        NSValueTransformer::setValueTransformer_forName(make<QZWordSeparator>(),
                                                        "QZWordSeparator"_ns);
      })
      .classMethod<&QZWordSeparator::allowsReverseTransformation>("allowsReverseTransformation")
      .classMethod<&QZWordSeparator::transformedValueClass>("transformedValueClass");
}

Ref<NSObject> QZWordSeparator::transformedValue(NSObject* value) const {
  Ref<NSString> text = as<NSString>(Ref<NSObject>(value));
  if (!text) return nullptr;
  if (text->length() != 0) {
    const Ref<NSString> first = text->substringToIndex(1)->capitalizedString();
    text = first->stringByAppendingString(text->substringFromIndex(1));
  }
  return stringsBySeparatingAtCharactersInSet(text, NSCharacterSet::capitalizedLetterCharacterSet())
      ->componentsJoinedByString(" "_ns);
}

}  // namespace qz
