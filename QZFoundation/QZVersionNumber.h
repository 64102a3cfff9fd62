/// @file
/// Version numbers.
#pragma once

#include <cstdint>

#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSString.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

class NSArray;
class NSEnumerator;
class NSMutableArray;
class NSNumber;

/// A version such as "10.4.11" or "2.0b3" as a list of numbers, the most significant first.
///
///     auto installed = QZVersionNumber::versionWithString("10.4.11"_ns);
///     auto wanted = QZVersionNumber::versionWithString("10.4.9"_ns);
///     installed->compare(wanted);   // NSOrderedDescending: by number, not by text
///
/// The letters "a" and "b" are digits too: their character code minus 122, so -25 and -24. Being
/// negative they come before the release that they lead to: 1.0a2, 1.0b1, 1.0. Missing digits count
/// as 0, so 1 and 1.0 are the same version, are equal and have the same hash.
///
/// The list has the key "digits" and can be observed. One thread at a time may change a version.
/// Nil where a String, a version or a Number is wanted raises NSInvalidArgumentException unless
/// something else is said.
class QZVersionNumber : public Derives<QZVersionNumber, NSObject> {
 public:
  static void describe(ClassDescription<QZVersionNumber>& is);

  /// Without digits: the same version as 0.
  QZVersionNumber();
  ~QZVersionNumber() override;

  /// Reads numbers, which may have a sign, each with one "." behind it or none, and runs of "a" and
  /// "b", of which the first letter counts; blanks may stand between. The rest, from the first
  /// character that fits none of this, is ignored: "1.2c3" is 1.2. Nil for nil.
  static Ref<QZVersionNumber> versionWithString(NSString* string);
  static Ref<QZVersionNumber> initWithString(NSString* string);

  /// Of a copy of an Array of Numbers. Nil counts as an empty one.
  static Ref<QZVersionNumber> initWithDigits(NSArray* digits);

  /// How the version that the first String reads as orders against that of the second. Nil reads as
  /// the empty String. Makes no Objects.
  static NSComparisonResult compareVersionString_withVersionString(NSString* first,
                                                                   NSString* second);

  /// The digits with points between those that are not negative, and letters for the others:
  /// "1.0b3". Empty without digits.
  Ref<NSString> versionString() const;

  /// Digit by digit; missing ones are 0. Raises NSInvalidArgumentException for nil.
  NSComparisonResult compare(QZVersionNumber* other) const;

  /// The first digit. Raises NSRangeException when there is none.
  std::uint32_t majorVersionNumber() const;

  // The list --------------------------------------------------------------------------------------

  /// A copy.
  Ref<NSArray> digits() const;

  /// Nil counts as an empty Array.
  void setDigits(NSArray* digits);

  /// Changing the list makes the enumerator's next step raise.
  Ref<NSEnumerator> digitEnumerator() const;

  /// Indices out of range raise NSRangeException.
  std::uint32_t countOfDigits() const;
  Ref<NSNumber> objectInDigitsAtIndex(std::uint32_t index) const;
  void insertObject_inDigitsAtIndex(NSNumber* digit, std::uint32_t index);
  void removeObjectFromDigitsAtIndex(std::uint32_t index);

  /// Adds at the end, and tells the observers of "digits".
  void addDigit(NSNumber* digit);

  // As an Object ----------------------------------------------------------------------------------

  /// True for a version that compares as the same.
  bool isEqual(NSObject* other) const override;
  std::size_t hash() const override;

  /// "<QZVersionNumber: 0xaddress>: {digits = (…), versionString = 1.0b3}"
  Ref<NSString> description() const override;

 private:
  Ref<NSMutableArray> digits_;
};

}  // namespace qz

#pragma GCC visibility pop
