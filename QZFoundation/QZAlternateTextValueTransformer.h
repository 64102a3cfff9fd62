/// @file
/// Choice of a text by number, as a value transformer.
#pragma once

#include "QZFoundation/NSValueTransformer-QZFoundation.h"

#pragma GCC visibility push(default)

namespace qz {

/// Turns a number into one of several texts: "QZAlternateText-Off-On" turns 0 into "Off", and 1 and
/// above into "On". The texts are keys of the application's messages: what comes out is looked up
/// in the main bundle's default table. There is no way back. Immutable; any thread.
class QZAlternateTextValueTransformer final
    : public Derives<QZAlternateTextValueTransformer, NSValueTransformer> {
 public:
  static void describe(ClassDescription<QZAlternateTextValueTransformer>& is);

  /// Keeps a copy of `strings`; nil counts as empty.
  explicit QZAlternateTextValueTransformer(NSArray* strings);
  ~QZAlternateTextValueTransformer() override;
  static Ref<QZAlternateTextValueTransformer> initWithStrings(NSArray* strings);

  /// The same, under the name that dynamic names ask for.
  static Ref<QZAlternateTextValueTransformer> valueTransformerWithComponents(NSArray* components);

  /// What transformers of this class can do, by Selector too: NSValueTransformer.h.
  static bool allowsReverseTransformation() { return false; }
  static Class* transformedValueClass();

  /// The text whose place is what `value` answers to `intValue`; the first one below 0, the last
  /// one behind the end. The empty String for a value that answers nothing to that, for NSNotFound,
  /// for nil, and when there are no texts.
  Ref<NSObject> transformedValue(NSObject* value) const override;

 private:
  const Ref<NSArray> strings_;
};

}  // namespace qz

#pragma GCC visibility pop
