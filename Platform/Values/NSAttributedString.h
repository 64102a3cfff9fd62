/// @file
/// Text whose stretches have attributes.
#pragma once

#include <cstdint>
#include <vector>

#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSString.h"

#pragma GCC visibility push(default)

namespace qz {

class NSDictionary;

/// Immutable text, each unit of which has a Dictionary of attributes, from names to values.
///
///     auto text = NSAttributedString::initWithString_attributes("now"_ns, attributes);
///     NSRange range;
///     Ref<NSDictionary> here = text->attributesAtIndex_effectiveRange(0, &range);
///
/// Neighbouring units with equal attributes form one run, however they came to have them; a place
/// is found in the logarithm of the number of runs. Any thread; NSMutableAttributedString says what
/// changes.
class NSAttributedString : public Derives<NSAttributedString, NSObject> {
 public:
  static void describe(ClassDescription<NSAttributedString>& is);

  /// An empty one.
  NSAttributedString();
  ~NSAttributedString() override;

  /// The text as it is now, with the attributes as they are now; nil stands for no attributes, as
  /// the empty Dictionary does. A nil text raises NSInvalidArgumentException.
  static Ref<NSAttributedString> initWithString(NSString* string);
  static Ref<NSAttributedString> initWithString_attributes(NSString* string,
                                                           NSDictionary* attributes);
  static Ref<NSAttributedString> initWithAttributedString(NSAttributedString* other);

  /// The text as it is now, and how many units it has.
  Ref<NSString> string() const;
  std::uint32_t length() const noexcept { return text_->length(); }

  /// The attributes of the unit at `index`, never nil. `*range`, unless that is null, becomes the
  /// whole run around it. Raises NSRangeException for an index not below the length.
  Ref<NSDictionary> attributesAtIndex_effectiveRange(std::uint32_t index, NSRange* range) const;

  /// The value of one attribute; nil when the unit has none by that name, and for a nil name.
  /// `*range` becomes all around it that has an equal value, or has none either.
  Ref<NSObject> attribute_atIndex_effectiveRange(NSString* name, std::uint32_t index,
                                                 NSRange* range) const;

  /// The text and attributes of `range`. Raises NSRangeException.
  Ref<NSAttributedString> attributedSubstringFromRange(NSRange range) const;

  /// Equal text and, unit by unit, equal attributes. False for nil.
  bool isEqualToAttributedString(NSAttributedString* other) const;
  bool isEqual(NSObject* other) const override;

  /// The hash of the text.
  std::size_t hash() const override;

  /// This very one, unless it is mutable.
  Ref<NSObject> copy() const override;
  Ref<NSObject> mutableCopy() const override;

  /// Each run's text with its attributes behind it.
  Ref<NSString> description() const override;

 protected:
  /// Neighbouring units with equal attributes; the run before says where it begins.
  struct Run {
    std::uint64_t end;             ///< Behind its last unit.
    Ref<NSDictionary> attributes;  ///< Never nil.
  };
  /// In the order of the text: neighbours differ, and none is empty.
  using Runs = std::vector<Run>;

  /// Of a text and its runs, which end where the text does.
  NSAttributedString(NSString* text, Runs runs);

  /// The runs of `range`, cut to it, with ends counted from its start.
  Runs runsOf(NSRange range) const;

  /// The run that holds the unit at `index`, which is below the length; and the units of a run.
  std::size_t runAt(std::uint32_t index) const;
  NSRange rangeOfRun(std::size_t run) const;

  friend class NSMutableAttributedString;

  /// The text and its runs.
  Ref<NSString> text_;
  Runs runs_;
};

}  // namespace qz

#pragma GCC visibility pop
