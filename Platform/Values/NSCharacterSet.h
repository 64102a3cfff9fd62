/// @file
/// Character sets: which characters belong together.
#pragma once

#include <cstdint>

#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSRange.h"
#include "Platform/Values/detail/CodePointSet.h"

#pragma GCC visibility push(default)

namespace qz {

class NSMutableCharacterSet;

/// A set of Unicode code points, from every plane.
///
///     NSCharacterSet* blanks = NSCharacterSet::whitespaceCharacterSet();
///     Ref<NSArray> words = text->componentsSeparatedByCharactersInSet(blanks);
///
/// The standard sets follow the general categories of the Unicode version that ICU brings; each is
/// made on first use, then shared, and never goes. A test of one character takes constant time, and
/// logarithmic time in the number of ranges beyond U+FFFF. Immutable Sets may be used by any number
/// of threads; NSMutableCharacterSet says what changes.
class NSCharacterSet : public Derives<NSCharacterSet, NSObject> {
 public:
  static void describe(ClassDescription<NSCharacterSet>& is);

  /// The empty set, and one of the members given.
  NSCharacterSet() noexcept = default;
  explicit NSCharacterSet(detail::CodePointSet members) noexcept : members_(std::move(members)) {}

  // Standard sets ---------------------------------------------------------------------------------

  static Ref<NSCharacterSet> letterCharacterSet();             ///< Letters and marks: L*, M*.
  static Ref<NSCharacterSet> lowercaseLetterCharacterSet();    ///< Ll.
  static Ref<NSCharacterSet> uppercaseLetterCharacterSet();    ///< Lu and Lt.
  static Ref<NSCharacterSet> capitalizedLetterCharacterSet();  ///< Titlecase letters: Lt.
  static Ref<NSCharacterSet> decimalDigitCharacterSet();       ///< Nd.
  static Ref<NSCharacterSet> alphanumericCharacterSet();       ///< L*, M*, N*.
  static Ref<NSCharacterSet> nonBaseCharacterSet();            ///< Marks: M*.
  static Ref<NSCharacterSet> punctuationCharacterSet();        ///< P*.
  static Ref<NSCharacterSet> symbolCharacterSet();             ///< S*.
  static Ref<NSCharacterSet> controlCharacterSet();            ///< Cc and Cf.
  static Ref<NSCharacterSet> illegalCharacterSet();     ///< Unassigned and non-characters: Cn.
  static Ref<NSCharacterSet> whitespaceCharacterSet();  ///< Zs and the tab.

  /// What ends a line: U+000A to U+000D, U+0085, U+2028 and U+2029.
  static Ref<NSCharacterSet> newlineCharacterSet();

  /// The union of the two before.
  static Ref<NSCharacterSet> whitespaceAndNewlineCharacterSet();

  /// The characters that canonical decomposition takes apart.
  static Ref<NSCharacterSet> decomposableCharacterSet();

  // Making ----------------------------------------------------------------------------------------

  /// Of the characters in a String: surrogate pairs count as the one they stand for. Raises
  /// NSInvalidArgumentException for nil.
  static Ref<NSCharacterSet> characterSetWithCharactersInString(NSString* characters);

  /// Of the code points from the location on. Raises NSRangeException beyond U+10FFFF.
  static Ref<NSCharacterSet> characterSetWithRange(NSRange range);

  /// All others; immutable.
  Ref<NSCharacterSet> invertedSet() const;

  // Asking ----------------------------------------------------------------------------------------

  /// Whether the unit, or the code point, belongs to the set. A surrogate unit is one only when the
  /// set holds that very unit.
  bool characterIsMember(char16_t unit) const noexcept { return members_.holdsUnit(unit); }
  bool longCharacterIsMember(char32_t point) const noexcept { return members_.holds(point); }

  /// Whether there are members among the 65536 code points of a plane (0 to 16).
  bool hasMemberInPlane(std::uint8_t plane) const noexcept;

  /// Whether all members of `other` are in this set. Raises NSInvalidArgumentException for nil.
  bool isSupersetOfSet(NSCharacterSet* other) const;

  /// For parsers: the members, valid while the set lives and is not changed.
  const detail::CodePointSet& members() const noexcept QZ_LIFETIME_BOUND { return members_; }

  /// The same members, mutable or not.
  bool isEqual(NSObject* other) const override;
  std::size_t hash() const override;

  /// This very set, unless it is mutable.
  Ref<NSObject> copy() const override;
  Ref<NSObject> mutableCopy() const override;

 protected:
  /// What a mutable set changes.
  detail::CodePointSet members_;
};

/// A Set whose members can change. Each change takes time linear in the set's ranges. What changes
/// a set must not run while another thread uses it. Nil raises NSInvalidArgumentException, a range
/// beyond U+10FFFF NSRangeException.
class NSMutableCharacterSet final : public Derives<NSMutableCharacterSet, NSCharacterSet> {
 public:
  static void describe(ClassDescription<NSMutableCharacterSet>& is);

  using Derives::Derives;

  /// An empty set.
  static Ref<NSMutableCharacterSet> characterSet();

  /// Puts code points in, and takes them out; surrogate pairs count as the one they stand for.
  void addCharactersInRange(NSRange range);
  void addCharactersInString(NSString* characters);
  void removeCharactersInRange(NSRange range);
  void removeCharactersInString(NSString* characters);

  /// Adds the members of `other`.
  void formUnionWithCharacterSet(NSCharacterSet* other);

  /// Keeps only members of `other`.
  void formIntersectionWithCharacterSet(NSCharacterSet* other);

  /// From now on the members are all others.
  void invert();

  /// An immutable set of the members there are now.
  Ref<NSObject> copy() const override;
};

}  // namespace qz

#pragma GCC visibility pop
