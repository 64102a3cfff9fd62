/// @file
/// Formatters: Objects into text for people, and back.
#pragma once

#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSString.h"

#pragma GCC visibility push(default)

namespace qz {

/// What turns Objects of some kind into text, and such text into Objects. Abstract: a class below
/// overrides at least `stringForObjectValue`.
///
///     Ref<NSObject> value;
///     Ref<NSString> error;
///     if (!formatter->getObjectValue_forString_errorDescription(&value, text, &error))
///       show(error);
///
/// A formatter that nobody changes any more may format and parse in several threads at once; one
/// that is being set up belongs to one thread. Classes below say so when they differ.
class NSFormatter : public Derives<NSFormatter, NSObject> {
 public:
  static void describe(ClassDescription<NSFormatter>& is);

  /// One that can do nothing, for classes below to have one as well.
  static Ref<NSFormatter> init();

  /// The text for `object`; nil for an Object of another kind, and for nil. Raises
  /// NSInvalidArgumentException unless overridden.
  virtual Ref<NSString> stringForObjectValue(NSObject* object) const;

  /// The text that a person would start from to change it: `stringForObjectValue` unless
  /// overridden.
  virtual Ref<NSString> editingStringForObjectValue(NSObject* object) const;

  /// Reads `string`. Puts what it says in `*object`, and nil or a text that tells what is wrong
  /// with it in `*error`; either place may be null. True when nothing is wrong. Raises
  /// NSInvalidArgumentException unless overridden, and for a nil string.
  virtual bool getObjectValue_forString_errorDescription(Ref<NSObject>* object, NSString* string,
                                                         Ref<NSString>* error) const;

 protected:
  /// What a parse that found `value` or failed with `message` hands out and answers.
  static bool deliver(Ref<NSObject>* object, Ref<NSString>* error, Ref<NSObject> value,
                      Ref<NSString> message);

  /// `text` for quoting in a message: long ones are cut.
  static Ref<NSString> excerpt(NSString* text);
};

}  // namespace qz

#pragma GCC visibility pop
