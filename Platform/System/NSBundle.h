/// @file
/// Bundles: the resources of programs and libraries, in the user's language.
#pragma once

#include <memory>

#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSString.h"

#pragma GCC visibility push(default)

namespace qz {

class NSArray;
class NSDictionary;

/// A directory of resources:
///
///     Info.plist                          who it belongs to, and the development language
///     Defaults.plist                      a resource for all languages
///     locale/en/Localizable.strings       resources for one language; the default string table
///     locale/de/Localizable.strings
///
/// A program or library finds its bundle in the first of these places. NAME is the file's name, for
/// "libNAME.so.1" the NAME.
///
/// 1. in each directory of QZ_BUNDLE_PATH, a list with colons: NAME.resources, or NAME
/// 2. beside the program or library: NAME.resources
/// 3. under the prefix, which is what stands before the last "bin", "sbin" or "lib…" of where the
///    program or library is: share/NAME
///
/// A directory not called .resources must hold an Info.plist, to tell it from others of that name.
///
/// Info.plist is a Dictionary with CFBundleIdentifier, CFBundleName, CFBundleVersion and
/// CFBundleDevelopmentRegion (the development language, "en" when it is not said).
///
/// A bundle is made once for each directory and lives as long as the process. Any thread.
class NSBundle : public Derives<NSBundle, NSObject> {
 public:
  static void describe(ClassDescription<NSBundle>& is);
  ~NSBundle() override;

  /// The running program's. Never nil: without a directory of resources it has the path of the
  /// program's directory, no resources and no information.
  static Ref<NSBundle> mainBundle();

  /// The one in that directory; nil when there is no such directory.
  static Ref<NSBundle> bundleWithPath(NSString* path);

  /// That of the program or library which describes the class; the main bundle for a library that
  /// has none of its own, and for nil.
  static Ref<NSBundle> bundleForClass(Class* aClass);

  /// The one with that CFBundleIdentifier: of those made so far, else in the three places above for
  /// the program and each library that is loaded, where it must be called like the identifier or
  /// the part behind its last point. Nil when there is none, and for nil.
  static Ref<NSBundle> bundleWithIdentifier(NSString* identifier);

  /// Those made so far; the main bundle is the first.
  static Ref<NSArray> allBundles();

  /// The directory, absolute.
  Ref<NSString> bundlePath() const;

  /// The same; nil for a main bundle without resources.
  Ref<NSString> resourcePath() const;

  /// The Info.plist; empty when there is none. One that cannot be read is reported once on the
  /// diagnostic stream and counts as none.
  Ref<NSDictionary> infoDictionary() const;

  /// Nil when the information does not say.
  Ref<NSObject> objectForInfoDictionaryKey(NSString* key) const;

  /// The CFBundleIdentifier; nil when the information does not say.
  Ref<NSString> bundleIdentifier() const;

  /// The path of the resource "NAME.TYPE" ("NAME" for a nil or empty type): in the first of the
  /// preferred localizations that has it, else among those for all languages. Nil when there is
  /// none, and for a nil or empty name. In `directory`, a relative path, when it is not nil.
  Ref<NSString> pathForResource_ofType(NSString* name, NSString* type) const;
  Ref<NSString> pathForResource_ofType_inDirectory(NSString* name, NSString* type,
                                                   NSString* directory) const;

  /// The same in that localization, else among those for all languages (where alone a nil
  /// localization looks).
  Ref<NSString> pathForResource_ofType_inDirectory_forLocalization(NSString* name, NSString* type,
                                                                   NSString* directory,
                                                                   NSString* localization) const;

  /// The languages that there are resources for: the directories in "locale", by name.
  Ref<NSArray> localizations() const;

  /// Those of `localizations` that the user prefers, the best first, and at the end the development
  /// one. A preferred "de-AT" brings "de-AT" and then "de".
  Ref<NSArray> preferredLocalizations() const;
  Ref<NSString> developmentLocalization() const;

  /// The text for `key` in the table, which is the resource "TABLE.strings" ("Localizable" for a
  /// nil or empty name): that of the first preferred localization which has the key, else of the
  /// table for all languages. A key without a text answers `value`, and the key itself when that is
  /// nil or empty. A nil key answers `value`, and the empty String when that is nil. Never nil.
  ///
  /// Tables are UTF-8 or, with a byte-order mark, UTF-16, and read once. One that cannot be read
  /// counts as empty, and why is said once on the diagnostic stream.
  Ref<NSString> localizedStringForKey_value_table(NSString* key, NSString* value,
                                                  NSString* table) const;

  /// The languages the user reads, such as "de-AT", the best first: from LANGUAGE (a list with
  /// colons), then the first that is set of LC_ALL, LC_MESSAGES and LANG. Where that one is "C", or
  /// none is set, there are no preferred languages and bundles use their development language.
  /// The environment is read once.
  static Ref<NSArray> preferredLanguages();

  /// Has every bundle of the process use these languages (Strings such as "de-AT" or "de_AT") from
  /// now on. Nil goes back to the environment, which is read anew.
  static void setPreferredLanguages(NSArray* languages);

  /// "NSBundle /usr/share/example"
  Ref<NSString> description() const override;

 private:
  class Contents;

 public:
  /// Private: for the functions above.
  explicit NSBundle(std::unique_ptr<Contents> contents);

 private:
  const std::unique_ptr<Contents> contents_;
};

}  // namespace qz

#pragma GCC visibility pop
