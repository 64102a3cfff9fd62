/// @file
/// Value transformers made of names.
///
///     auto percent = valueTransformerWithDynamicName("QZMath-multiply-100"_ns);
///     percent->transformedValue(NSNumber::of(0.5));   // 50
#pragma once

#include "Platform/Text/NSValueTransformer.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

class NSArray;

/// The transformer registered under the name. When there is none, the name is cut at each "-": the
/// first piece with "ValueTransformer" behind it names a class, which is asked for a transformer
/// with the other pieces (`valueTransformerWithComponents`; nil when there are none); that is then
/// registered under the whole name. Nil, with nothing registered, for nil, when there is no such
/// class of transformers, and when it makes none. What the class raises passes through.
///
/// Any thread. Two that ask for one new name at a time may both make one; the later stays.
Ref<NSValueTransformer> valueTransformerWithDynamicName(NSString* name);

/// A new transformer of the class, made of Strings; nil when it cannot be. Classes answer in their
/// own way; where they do not, the Strings count for nothing. Raises for a class that is none of
/// transformers.
Ref<NSValueTransformer> valueTransformerWithComponents(Class* aClass, NSArray* components);

/// Reads ValueTransformerInfo.plist, a resource of the main bundle: a Dictionary that names classes
/// to be initialized ("transformerClasses"), which may register transformers, and dynamic names to
/// be made ("dynamicValueTransformerNames"). What is missing, of another kind or no good is passed
/// over without a word, exceptions included. For the start of a program.
void loadTransformers();

}  // namespace qz

#pragma GCC visibility pop
