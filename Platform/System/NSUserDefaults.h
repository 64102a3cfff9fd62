/// @file
/// User defaults: a program's settings, kept from one run to the next.
#pragma once

#include <cstdint>
#include <memory>

#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSString.h"

#pragma GCC visibility push(default)

namespace qz {

class NSArray;
class NSData;
class NSDictionary;
class NSError;

/// Settings by name: property-list values that are looked for in three domains, in this order.
///
/// 1. Arguments: "-name value" on the program's command line. A value in old-style property-list
///    text, such as `(a, b)`, is that list; any other is a String. Words that begin with "--" are
///    no names, and a value begins with "-" only if it is a number.
/// 2. The application's: what was set, kept in a file of the user's.
/// 3. Registered: what the program falls back to, for this run only.
///
/// The file is $XDG_CONFIG_HOME/NAME/defaults.plist, in ~/.config where that variable is not set,
/// or not to an absolute path. NAME is the main bundle's identifier, the program's name when it has
/// none. It is written in XML (in binary where a text has what XML has no room for) and may be
/// edited by hand.
///
///     auto defaults = NSUserDefaults::standardUserDefaults();
///     defaults->registerDefaults(NSDictionary::of({{"columns"_ns, NSNumber::of(80)}}));
///     int columns = defaults->integerForKey("columns"_ns);
///     defaults->setInteger_forKey(100, "columns"_ns);
///
/// What is set shows at once in this process, and is in the file half a second later, or when
/// `synchronize` answers, or when the process ends in an orderly way. Several processes may do so:
/// each writes only the names it has set or removed, under a lock, into the file as it is then; the
/// last one to write a name wins. What others wrote shows after the next writing or `synchronize`.
/// A file that cannot be read as a Dictionary is kept under a name with ".damaged" at its end, and
/// why is said once on the diagnostic stream.
///
/// Values are copied, and what is answered is immutable. A nil name raises
/// NSInvalidArgumentException, and so does a value that is no property list. Any thread.
class NSUserDefaults final : public Derives<NSUserDefaults, NSObject> {
 public:
  static void describe(ClassDescription<NSUserDefaults>& is);
  ~NSUserDefaults() override;

  /// The program's; always the same.
  static Ref<NSUserDefaults> standardUserDefaults();

  /// Those of another NAME, which several programs may share: a name for a directory, without
  /// slashes. They have the arguments of this program too, and registered values of their own. Nil
  /// for a nil or empty name, and for one that no directory can have.
  static Ref<NSUserDefaults> initWithSuiteName(NSString* name);

  // Reading ---------------------------------------------------------------------------------------

  /// The value of the first domain that has one; nil when none has.
  Ref<NSObject> objectForKey(NSString* key) const;

  /// The same if it is of that kind, else nil. A Number counts as the String it reads as.
  Ref<NSString> stringForKey(NSString* key) const;
  Ref<NSArray> arrayForKey(NSString* key) const;
  Ref<NSDictionary> dictionaryForKey(NSString* key) const;
  Ref<NSData> dataForKey(NSString* key) const;

  /// If all its elements are Strings.
  Ref<NSArray> stringArrayForKey(NSString* key) const;

  /// A Number's value, or that of a String that reads as one; 0 for anything else.
  std::int64_t integerForKey(NSString* key) const;
  float floatForKey(NSString* key) const;
  double doubleForKey(NSString* key) const;

  /// Of a Number whether it is not 0, of a String whether it begins with Y, y, T, t or a digit
  /// above 0; false for anything else.
  bool boolForKey(NSString* key) const;

  /// Everything that `objectForKey` answers.
  Ref<NSDictionary> dictionaryRepresentation() const;

  // Changing the application's domain -------------------------------------------------------------

  /// Sets the value, a Number in the middle four; nil removes it.
  void setObject_forKey(NSObject* value, NSString* key);
  void setInteger_forKey(std::int64_t value, NSString* key);
  void setFloat_forKey(float value, NSString* key);
  void setDouble_forKey(double value, NSString* key);
  void setBool_forKey(bool value, NSString* key);
  void removeObjectForKey(NSString* key);

  /// Writes what was set, and reads what others wrote. False when that fails; what was set then
  /// stays set in this process and is tried again later. `error` may be null.
  bool synchronize();
  bool synchronizeReturningError(Ref<NSError>* error);

  /// The file. Whether it is there is not asked.
  Ref<NSString> path() const;

  // The other domains -----------------------------------------------------------------------------

  /// Adds values to fall back to; those of the same names are replaced. Nil counts as empty.
  void registerDefaults(NSDictionary* values);

  /// What the command line says. Never nil.
  Ref<NSDictionary> argumentDomain() const;

  /// What was registered. Never nil.
  Ref<NSDictionary> registrationDomain() const;

  // By key: `objectForKey`, `setObject_forKey`.
  Ref<NSObject> valueForKey(NSString* key) override;
  void setValue_forKey(NSObject* value, NSString* key) override;

 private:
  class Contents;

  void announceChange();

 public:
  /// Private: for the functions above.
  explicit NSUserDefaults(std::unique_ptr<Contents> contents);

 private:
  const std::unique_ptr<Contents> contents_;
};

/// Posted by the user defaults that a value was set in, removed from, registered with, or, when
/// `synchronize` finds that other processes wrote, read anew: on the thread that did it, at once.
inline NSString* const NSUserDefaultsDidChangeNotification =
    detail::literal<"NSUserDefaultsDidChangeNotification">();

}  // namespace qz

#pragma GCC visibility pop
