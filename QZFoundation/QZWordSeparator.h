/// @file
/// Splitting of a run-together name into words, as a value transformer.
#pragma once

#include "QZFoundation/NSValueTransformer-QZFoundation.h"

#pragma GCC visibility push(default)

namespace qz {

/// Turns "value" into "Value", and puts a blank before each titlecase letter. That is Unicode's
/// category of that name, digraphs such as "ǅ", and not the capitals: "someWords" becomes
/// "SomeWords". This is deliberate. There is no way back.
///
/// The class's initialization registers one under "QZWordSeparator". Any thread.
class QZWordSeparator final : public Derives<QZWordSeparator, NSValueTransformer> {
 public:
  static void describe(ClassDescription<QZWordSeparator>& is);

  /// What transformers of this class can do, by Selector too: NSValueTransformer.h.
  static bool allowsReverseTransformation() { return false; }
  static Class* transformedValueClass() { return classOf<NSString>(); }

  /// Nil for nil and for an Object that is no String.
  Ref<NSObject> transformedValue(NSObject* value) const override;
};

}  // namespace qz

#pragma GCC visibility pop
