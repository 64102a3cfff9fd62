/// @file
/// Text and attributes that change.
#pragma once

#include <cstdint>

#include "Platform/Values/NSAttributedString.h"

#pragma GCC visibility push(default)

namespace qz {

/// An attributed String that can be changed. A change takes time in proportion to the units and
/// runs behind it. One that fails with an exception changes nothing. Not to be changed while
/// another thread uses it.
///
/// Ranges beyond the length raise NSRangeException; nil raises NSInvalidArgumentException except
/// where it has a meaning.
class NSMutableAttributedString final
    : public Derives<NSMutableAttributedString, NSAttributedString> {
 public:
  static void describe(ClassDescription<NSMutableAttributedString>& is);

  /// An empty one.
  NSMutableAttributedString();

  /// The counterparts of NSAttributedString's.
  static Ref<NSMutableAttributedString> initWithString(NSString* string);
  static Ref<NSMutableAttributedString> initWithString_attributes(NSString* string,
                                                                  NSDictionary* attributes);
  static Ref<NSMutableAttributedString> initWithAttributedString(NSAttributedString* other);

  // Attributes ------------------------------------------------------------------------------------

  /// Gives `range` these attributes and no others; nil takes all away.
  void setAttributes_range(NSDictionary* attributes, NSRange range);

  /// Gives `range` these attributes, in place of those by the same names; nil adds none.
  void addAttributes_range(NSDictionary* attributes, NSRange range);
  void addAttribute_value_range(NSString* name, NSObject* value, NSRange range);

  /// Takes away the attribute by that name, where there is one.
  void removeAttribute_range(NSString* name, NSRange range);

  // Text ------------------------------------------------------------------------------------------

  /// Puts `string` in the place of `range`. It has the attributes of the first unit replaced; where
  /// none is replaced, those of the unit before, or at the start those of the unit behind.
  void replaceCharactersInRange_withString(NSRange range, NSString* string);

  /// The same with the attributes that `string` brings.
  void replaceCharactersInRange_withAttributedString(NSRange range, NSAttributedString* string);

  /// Takes text out, and puts text with its attributes at the end.
  void deleteCharactersInRange(NSRange range);
  void appendAttributedString(NSAttributedString* string);

  /// Raises NSRangeException for an index above the length.
  void insertAttributedString_atIndex(NSAttributedString* string, std::uint32_t index);

  /// Becomes the text and the attributes of `string`.
  void setAttributedString(NSAttributedString* string);

  Ref<NSObject> copy() const override;

 private:
  friend class NSAttributedString;

  NSMutableAttributedString(NSString* text, Runs runs);

  template <class Change>
  void changeAttributes(NSRange range, Change change);
  void replaceRuns(NSRange range, Runs added, NSString* text);
};

}  // namespace qz

#pragma GCC visibility pop
