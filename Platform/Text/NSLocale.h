/// @file
/// Locales: how a language and a region write numbers, dates and names.
#pragma once

#include <string>

#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSString.h"

#pragma GCC visibility push(default)

namespace qz {

/// A language and a region, told by an identifier: "de", "de_AT", "zh_Hant_TW", with Unicode's
/// keywords if need be ("de_DE@calendar=buddhist"). What is known of it is CLDR's data.
///
///     auto austria = NSLocale::localeWithLocaleIdentifier("de_AT"_ns);
///     austria->decimalSeparator();   // ","
///
/// Immutable; any thread.
class NSLocale final : public Derives<NSLocale, NSObject> {
 public:
  static void describe(ClassDescription<NSLocale>& is);

  /// What the environment says when it is first asked for: LC_ALL, else LANG. "C" and "POSIX", and
  /// an environment that says nothing, are "en_US_POSIX". Formatters that are given no locale take
  /// LC_NUMERIC (numbers) or LC_TIME (dates) between these two.
  static Ref<NSLocale> currentLocale();

  /// The root: no language, no region, the same everywhere.
  static Ref<NSLocale> systemLocale();

  /// The locale by an identifier, in Unicode's form or as a BCP 47 tag ("de-AT"). What is no
  /// identifier at all gives the root; an unknown language or region keeps its name and behaves as
  /// the nearest one that is known. Nil for nil.
  static Ref<NSLocale> localeWithLocaleIdentifier(NSString* identifier);
  static Ref<NSLocale> initWithLocaleIdentifier(NSString* identifier);

  /// The identifier in its usual form: "de_AT" for "DE-at"; nil for nil.
  static Ref<NSString> canonicalLocaleIdentifierFromString(NSString* identifier);

  /// All identifiers that there is data for.
  static Ref<NSArray> availableLocaleIdentifiers();

  /// Its parts: "" for one that the identifier does not have.
  Ref<NSString> localeIdentifier() const { return identifier_; }
  Ref<NSString> languageCode() const;
  Ref<NSString> scriptCode() const;
  Ref<NSString> countryCode() const;
  Ref<NSString> variantCode() const;

  /// How numbers are written.
  Ref<NSString> decimalSeparator() const;
  Ref<NSString> groupingSeparator() const;
  Ref<NSString> currencySymbol() const;
  Ref<NSString> currencyCode() const;  ///< ISO 4217: "EUR"; "XXX" when no region tells.

  /// The name of `identifier` for readers of this locale: "Deutsch (Österreich)". Nil for nil.
  Ref<NSString> displayNameForLocaleIdentifier(NSString* identifier) const;

  /// The same identifier.
  bool isEqual(NSObject* other) const override;
  std::size_t hash() const override;
  Ref<NSObject> copy() const override;
  Ref<NSString> description() const override;

  /// The identifier in ASCII.
  const std::string& name() const noexcept QZ_LIFETIME_BOUND { return name_; }

 private:
  explicit NSLocale(std::string name);
  static Ref<NSLocale> named(std::string name);

  std::string name_;
  Ref<NSString> identifier_;
};

}  // namespace qz

#pragma GCC visibility pop
