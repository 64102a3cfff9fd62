/// @file
/// Keyed archives: Objects as binary property lists.
#pragma once

#include <memory>

#include "Platform/Text/NSCoder.h"

#pragma GCC visibility push(default)

namespace qz {

class NSArray;
class NSData;
class NSError;

/// Writes Objects, with all that they refer to, to an archive.
///
///     Ref<NSData> data = NSKeyedArchiver::archivedDataWithRootObject(person);
///     Ref<NSError> error;
///     auto again = as<Person>(NSKeyedUnarchiver::unarchivedObjectOfClasses_fromData_error(
///         NSArray::arrayWithObject(classOf<Person>()), data, &error));
///
/// Takes Strings, Numbers, Data, Dates, Null, Arrays, Dictionaries and Sets, mutable or not, and
/// counted Sets, and every Object whose class has `encodeWithCoder:`, as number formatters, sort
/// descriptors, URLs, UUIDs and index paths have; any other raises NSInvalidArgumentException, and
/// so does what is nested deeper than 1000 levels. An Object that is referred to several times is
/// written, and read, once.
///
/// The archive is a binary property list, a Dictionary: "$version" is 1; "$objects" has the Objects
/// ("$null" first), to which NSPropertyListUIDs refer by index; "$top" has the references under the
/// keys that were encoded first. An Object that no property list has is a Dictionary of its keys,
/// in which "$class" refers to the name of its class.
class NSKeyedArchiver final : public Derives<NSKeyedArchiver, NSCoder> {
 public:
  static void describe(ClassDescription<NSKeyedArchiver>& is);

  NSKeyedArchiver();
  ~NSKeyedArchiver() override;

  /// The archive of one Object, which may be nil, under the key "root".
  static Ref<NSData> archivedDataWithRootObject(NSObject* root);

  void encodeObject_forKey(NSObject* object, NSString* key) override;
  bool containsValueForKey(NSString* key) override;

  /// The archive of what has been encoded.
  Ref<NSData> encodedData() const;

 private:
  class Contents;
  const std::unique_ptr<Contents> contents_;
};

/// Reads Objects from a keyed archive, of classes that the caller expects and no others: what an
/// archive says must not choose which code runs.
///
/// Property-list values, Null, Arrays, Dictionaries and Sets are always expected. Classes are told
/// with those below them. A sort descriptor brings the Selector that sorting by it sends: look at
/// it before sorting by one from an archive that others may have written.
class NSKeyedUnarchiver final : public Derives<NSKeyedUnarchiver, NSCoder> {
 public:
  static void describe(ClassDescription<NSKeyedUnarchiver>& is);
  ~NSKeyedUnarchiver() override;

  /// The Object under the key "root", and all that it refers to. Nil when that is nil, and when
  /// anything is wrong, which `error`, which may be null, then says: bytes that are no archive, a
  /// class that is unknown or not among `classes` (an Array of Class; nil counts as empty) or
  /// cannot be decoded, Objects that refer to themselves, members of Sets and keys of Dictionaries
  /// that come to more than a million Objects, and exceptions raised while decoding.
  static Ref<NSObject> unarchivedObjectOfClasses_fromData_error(NSArray* classes, NSData* data,
                                                                Ref<NSError>* error);

  /// For archives with several keys. Nil, and an Error, when the bytes are no archive.
  static Ref<NSKeyedUnarchiver> initForReadingFromData_classes_error(NSData* data, NSArray* classes,
                                                                     Ref<NSError>* error);

  /// Nil also when something is wrong; `error` says so.
  Ref<NSObject> decodeObjectForKey(NSString* key) override;
  bool containsValueForKey(NSString* key) override;

  /// What went wrong first; nil when nothing did.
  Ref<NSError> error() const;

 private:
  class Contents;
  explicit NSKeyedUnarchiver(std::unique_ptr<Contents> contents);

  const std::unique_ptr<Contents> contents_;
};

/// The code of Errors of archives, in NSCocoaErrorDomain.
inline constexpr std::int32_t NSCoderReadCorruptError = 4864;

}  // namespace qz

#pragma GCC visibility pop
