#include "Platform/Text/NSCoder.h"

#include <string>

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSNumber.h"

namespace qz {
namespace {

[[noreturn]] void refuse(const NSCoder* coder, const char* operation) {
  detail::raise(NSInvalidArgumentException,
                std::string(coder->classObject()->name()) + " has no " + operation);
}

}  // namespace

void NSCoder::describe(ClassDescription<NSCoder>& is) {
  is.named("NSCoder")
      .method<&NSCoder::encodeObject_forKey>("encodeObject:forKey:")
      .method<&NSCoder::decodeObjectForKey>("decodeObjectForKey:")
      .method<&NSCoder::containsValueForKey>("containsValueForKey:")
      .method<&NSCoder::encodeBool_forKey>("encodeBool:forKey:")
      .method<&NSCoder::encodeInt_forKey>("encodeInt:forKey:")
      .method<&NSCoder::encodeInt64_forKey>("encodeInt64:forKey:")
      .method<&NSCoder::encodeFloat_forKey>("encodeFloat:forKey:")
      .method<&NSCoder::encodeDouble_forKey>("encodeDouble:forKey:")
      .method<&NSCoder::decodeBoolForKey>("decodeBoolForKey:")
      .method<&NSCoder::decodeIntForKey>("decodeIntForKey:")
      .method<&NSCoder::decodeInt64ForKey>("decodeInt64ForKey:")
      .method<&NSCoder::decodeFloatForKey>("decodeFloatForKey:")
      .method<&NSCoder::decodeDoubleForKey>("decodeDoubleForKey:");
}

void NSCoder::encodeObject_forKey(NSObject*, NSString*) { refuse(this, "encodeObject:forKey:"); }
Ref<NSObject> NSCoder::decodeObjectForKey(NSString*) { refuse(this, "decodeObjectForKey:"); }
bool NSCoder::containsValueForKey(NSString*) { refuse(this, "containsValueForKey:"); }

void NSCoder::encodeBool_forKey(bool value, NSString* key) {
  encodeObject_forKey(NSNumber::of(value), key);
}
void NSCoder::encodeInt_forKey(std::int32_t value, NSString* key) {
  encodeObject_forKey(NSNumber::of(value), key);
}
void NSCoder::encodeInt64_forKey(std::int64_t value, NSString* key) {
  encodeObject_forKey(NSNumber::of(value), key);
}
void NSCoder::encodeFloat_forKey(float value, NSString* key) {
  encodeObject_forKey(NSNumber::of(value), key);
}
void NSCoder::encodeDouble_forKey(double value, NSString* key) {
  encodeObject_forKey(NSNumber::of(value), key);
}

bool NSCoder::decodeBoolForKey(NSString* key) {
  const auto number = as<NSNumber>(decodeObjectForKey(key));
  return number && number->boolValue();
}
std::int32_t NSCoder::decodeIntForKey(NSString* key) {
  const auto number = as<NSNumber>(decodeObjectForKey(key));
  return number ? number->intValue() : 0;
}
std::int64_t NSCoder::decodeInt64ForKey(NSString* key) {
  const auto number = as<NSNumber>(decodeObjectForKey(key));
  return number ? number->longLongValue() : 0;
}
float NSCoder::decodeFloatForKey(NSString* key) {
  const auto number = as<NSNumber>(decodeObjectForKey(key));
  return number ? number->floatValue() : 0;
}
double NSCoder::decodeDoubleForKey(NSString* key) {
  const auto number = as<NSNumber>(decodeObjectForKey(key));
  return number ? number->doubleValue() : 0;
}

}  // namespace qz
