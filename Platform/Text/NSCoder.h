/// @file
/// Coders: Objects into archives by key, and back.
#pragma once

#include <cstdint>

#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSString.h"

#pragma GCC visibility push(default)

namespace qz {

/// What an Object gives its values to when it is archived, and takes them from when it is read.
///
/// A class takes part by two operations:
///
///     void Person::encodeWithCoder(NSCoder* coder) const {
///       coder->encodeObject_forKey(name, "name"_ns);
///       coder->encodeInt_forKey(age, "age"_ns);
///     }
///     Ref<Person> Person::initWithCoder(NSCoder* coder) {   // static
///       return make<Person>(as<NSString>(coder->decodeObjectForKey("name"_ns)),
///                           coder->decodeIntForKey("age"_ns));
///     }
///     void Person::describe(ClassDescription<Person>& is) {
///       is.named("Person")
///           .method<&Person::encodeWithCoder>("encodeWithCoder:")
///           .initializer<&Person::initWithCoder>("initWithCoder:");
///     }
///
/// Keys belong to the Object that is encoded or decoded at the moment. One that is nil raises
/// NSInvalidArgumentException, as does one that begins with "$". One thread at a time.
///
/// A class below overrides the three operations that are virtual. Those of this class, which can
/// neither encode nor decode, raise NSInvalidArgumentException.
class NSCoder : public Derives<NSCoder, NSObject> {
 public:
  static void describe(ClassDescription<NSCoder>& is);

  /// Nil stores nothing, in the place of what the key had.
  virtual void encodeObject_forKey(NSObject* object, NSString* key);

  /// What stands under the key, nil when there is nothing; and whether there is something.
  virtual Ref<NSObject> decodeObjectForKey(NSString* key);
  virtual bool containsValueForKey(NSString* key);

  /// Scalars are Numbers. A missing one, or something else, is 0.
  void encodeBool_forKey(bool value, NSString* key);
  void encodeInt_forKey(std::int32_t value, NSString* key);
  void encodeInt64_forKey(std::int64_t value, NSString* key);
  void encodeFloat_forKey(float value, NSString* key);
  void encodeDouble_forKey(double value, NSString* key);
  bool decodeBoolForKey(NSString* key);
  std::int32_t decodeIntForKey(NSString* key);
  std::int64_t decodeInt64ForKey(NSString* key);
  float decodeFloatForKey(NSString* key);
  double decodeDoubleForKey(NSString* key);
};

}  // namespace qz

#pragma GCC visibility pop
