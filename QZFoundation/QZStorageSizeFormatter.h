/// @file
/// Sizes of files and disks: "1.5 MB".
#pragma once

#include <cstdint>

#include "Platform/Text/NSNumberFormatter.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

/// Turns a count of bytes into text with a unit, and reads such text.
///
///     QZStorageSizeFormatter::storageSizeStringForBytes(1'500'000);   // "1.5 MB"
///
/// The unit is the greatest of TB, GB, MB, KB and bytes that the count reaches; the number before
/// it is formatted as NSNumberFormatter is set, from a quotient of single precision. Units are not
/// translated.
///
/// Reading finds the unit wherever it stands, case aside, and overlooks what follows. The number
/// before it is cut to a whole one first, so that "1.5 KB" is one kilobyte. Products beyond 64 bits
/// wrap around.
///
/// Threads: as NSNumberFormatter.
class QZStorageSizeFormatter : public Derives<QZStorageSizeFormatter, NSNumberFormatter> {
 public:
  static void describe(ClassDescription<QZStorageSizeFormatter>& is);

  /// In the mode of the platform: decimal units from version 678 on, which is this one.
  QZStorageSizeFormatter();
  static Ref<QZStorageSizeFormatter> init();

  /// The number formatter's settings from an archive, and the mode of the platform: the mode is
  /// never archived.
  static Ref<QZStorageSizeFormatter> initWithCoder(NSCoder* coder);

  /// "1.5 MB" by one formatter of the process, in the format "#,##0.0;0;#,##0.0" and the process's
  /// locale: "0 bytes", "512.0 bytes", "1.0 KB". A count from 2⁶³ on shows as "--". Any thread.
  static Ref<NSString> storageSizeStringForBytes(std::uint64_t bytes);

  /// 0 for binary units (a kilobyte is 1024 bytes), anything else for decimal ones (1000 bytes).
  std::int32_t storageSizeMode() const noexcept { return mode_; }
  void setStorageSizeMode(std::int32_t mode) noexcept { mode_ = mode; }

  /// The text for a Number: "--" for one that reads as negative in 64 bits. Nil for another Object.
  Ref<NSString> stringForObjectValue(NSObject* object) const override;

  /// The number of bytes as NSNumberFormatter writes it, without a unit.
  Ref<NSString> editingStringForObjectValue(NSObject* object) const override;

  /// Reads a size; the result is an `UnsignedLongLong`, or nil in case of an error, which is that
  /// of NSNumberFormatter for the number. Raises NSInvalidArgumentException for a nil string.
  bool getObjectValue_forString_errorDescription(Ref<NSObject>* object, NSString* string,
                                                 Ref<NSString>* error) const override;

  Ref<NSObject> copy() const override;

 private:
  std::int32_t mode_;
};

}  // namespace qz

#pragma GCC visibility pop
