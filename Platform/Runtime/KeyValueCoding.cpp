// Key-value access: a key names the operation without arguments that reads it and the one, named
// "set" and the key, that writes it; properties and fields are entered as such operations.
#include <array>
#include <deque>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/NSDictionary.h"
#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/Runtime/Class.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/NSKeyValueObserving.h"
#include "Platform/Runtime/Send.h"
#include "Platform/Runtime/detail/KeyValue.h"
#include "Platform/Runtime/detail/Suggestion.h"
#include "Platform/Values/NSNull.h"
#include "Platform/Values/NSNumber.h"
#include "Platform/Values/NSString.h"

namespace qz::detail {
namespace {

constexpr std::size_t cacheSize = 1024;
constinit std::array<std::atomic<const Key*>, cacheSize> keyCache{};

// Literals neither change nor go away, so their address tells the key without a look at the text.
constexpr std::size_t literalCacheSize = 256;
constinit std::array<std::atomic<const Key*>, literalCacheSize> literalCache{};

std::atomic<const Key*>& literalPlace(const NSString* text) {
  return literalCache[reinterpret_cast<std::uintptr_t>(text) / alignof(std::max_align_t) %
                      literalCacheSize];
}

void rememberLiteral(const NSString* text, const Key& key) {
  if (vptrOf(text) != vptrOf(""_ns)) return;
  const NSString* known = nullptr;
  if (key.literal.compare_exchange_strong(known, text, std::memory_order_relaxed) || known == text)
    literalPlace(text).store(&key, std::memory_order_release);
}

struct Keys {
  std::mutex mutex;
  std::unordered_map<std::u16string_view, const Key*> byText;
  std::deque<Key> all;
};

// These operations are no values, and calling them by a key would upset an Object's ownership.
bool isOwnership(std::string_view name) {
  return name == "retain" || name == "release" || name == "autorelease" || name == "dealloc";
}

// Only names that some class has as an operation become Keys: what a program is asked for from
// outside must not grow the table without bound.
[[gnu::noinline]] const Key* findKeySlowly(NSString* text, std::size_t slot) {
  static auto* const keys = new Keys();
  std::lock_guard lock(keys->mutex);
  if (auto found = keys->byText.find(text->view()); found != keys->byText.end()) {
    keyCache[slot].store(found->second, std::memory_order_release);
    return found->second;
  }
  const std::string name = text->UTF8String();
  const SelectorRecord* getter = isOwnership(name) ? nullptr : findSelector(name);
  const SelectorRecord* setter = findSelector(setterName(name));
  if (getter == nullptr && setter == nullptr) return nullptr;
  Key& key = keys->all.emplace_back();
  key.text = text->view();
  key.hash = text->hash();
  // Interned here, so that a class that comes later and has only the other one is found too.
  key.getter = isOwnership(name) ? Selector() : Selector::named(name);
  key.setter = Selector::named(setterName(name));
  keys->byText.emplace(key.text, &key);
  keyCache[slot].store(&key, std::memory_order_release);
  return &key;
}

[[gnu::noinline]] const Key* findKeyByText(NSString* text) {
  const std::size_t hash = text->hash();
  const std::size_t slot = hash % cacheSize;
  const Key* key = keyCache[slot].load(std::memory_order_acquire);
  if (key == nullptr || key->hash != hash || key->text != text->view()) [[unlikely]]
    key = findKeySlowly(text, slot);
  if (key != nullptr) rememberLiteral(text, *key);
  return key;
}

}  // namespace

const Key* findKey(NSString* text) {
  const Key* key = literalPlace(text).load(std::memory_order_acquire);
  if (key != nullptr && key->literal.load(std::memory_order_relaxed) == text) return key;
  return findKeyByText(text);
}

const DispatchEntry* findGetter(const NSObject* object, const Key* key) {
  if (key == nullptr || !key->getter) return nullptr;
  const DispatchEntry& entry = lookUp(object, key->getter);
  static_assert(static_cast<int>(Kind::Void) == 0 && Kind::Double < Kind::Bytes &&
                Kind::Bytes < Kind::Value && static_cast<Shape>(Kind::Value) < missingShape);
  const bool isValue = shapeArguments(entry.shape) == 0 && shapeAnswer(entry.shape) != Kind::Void &&
                       shapeAnswer(entry.shape) <= Kind::Double;
  return isValue ? &entry : nullptr;
}

Ref<NSObject> boxWord(Word word, Kind kind) {
  switch (kind) {
    case Kind::Object:
      return Ref<NSObject>(reinterpret_cast<NSObject*>(word), adopt);
    case Kind::Selector:
      return NSStringFromSelector(plainFromWord<Selector>(word));
    case Kind::Bool:
      return NSNumber::numberWithBool(word != 0);
    case Kind::Int8:
      return NSNumber::numberWithChar(plainFromWord<signed char>(word));
    case Kind::UInt8:
      return NSNumber::numberWithUnsignedChar(plainFromWord<unsigned char>(word));
    case Kind::Int16:
      return NSNumber::numberWithShort(plainFromWord<std::int16_t>(word));
    case Kind::UInt16:
      return NSNumber::numberWithUnsignedShort(plainFromWord<std::uint16_t>(word));
    case Kind::Int32:
      return NSNumber::numberWithInt(plainFromWord<std::int32_t>(word));
    case Kind::UInt32:
      return NSNumber::numberWithUnsignedInt(plainFromWord<std::uint32_t>(word));
    case Kind::Int64:
      return NSNumber::numberWithLongLong(plainFromWord<std::int64_t>(word));
    case Kind::UInt64:
      return NSNumber::numberWithUnsignedLongLong(plainFromWord<std::uint64_t>(word));
    case Kind::Float:
      return NSNumber::numberWithFloat(plainFromWord<float>(word));
    case Kind::Double:
      return NSNumber::numberWithDouble(plainFromWord<double>(word));
    default:
      return nullptr;
  }
}

namespace {

template <class T>
Word ask(NSObject* value, Selector exact) {
  if (value->respondsToSelector(exact)) return toWord(send<T>(value, exact));
  // What has no such narrow form, as a String, is asked for its widest integer.
  if constexpr (std::is_integral_v<T>)
    if (value->respondsToSelector("longLongValue"_sel))
      return toWord(static_cast<T>(send<std::int64_t>(value, "longLongValue"_sel)));
  return toWord(send<T>(value, exact));
}

}  // namespace

Word unboxWord(NSObject* value, Kind kind) {
  if (auto* number = as<NSNumber>(value)) {
    switch (kind) {
      case Kind::Int32:
        return toWord(number->intValue());
      case Kind::Bool:
        return number->boolValue();
      case Kind::Int64:
        return toWord(number->longLongValue());
      case Kind::Double:
        return toWord(number->doubleValue());
      default:
        break;
    }
  }
  switch (kind) {
    case Kind::Bool:
      return ask<bool>(value, "boolValue"_sel);
    case Kind::Int8:
      return ask<std::int8_t>(value, "charValue"_sel);
    case Kind::UInt8:
      return ask<std::uint8_t>(value, "unsignedCharValue"_sel);
    case Kind::Int16:
      return ask<std::int16_t>(value, "shortValue"_sel);
    case Kind::UInt16:
      return ask<std::uint16_t>(value, "unsignedShortValue"_sel);
    case Kind::Int32:
      return ask<std::int32_t>(value, "intValue"_sel);
    case Kind::UInt32:
      return ask<std::uint32_t>(value, "unsignedIntValue"_sel);
    case Kind::Int64:
      return ask<std::int64_t>(value, "longLongValue"_sel);
    case Kind::UInt64:
      return ask<std::uint64_t>(value, "unsignedLongLongValue"_sel);
    case Kind::Float:
      return ask<float>(value, "floatValue"_sel);
    default:
      return ask<double>(value, "doubleValue"_sel);
  }
}

namespace {

// Key paths are few and asked for again and again: each thread keeps the last ones it cut up.
struct CutPath {
  Ref<NSString> path;
  std::vector<Ref<NSString>> keys;
  Ref<NSString> rest;  // from the first operator behind the first key on
  int readers = 0;     // reading a value may cut other paths, which must not push this one out

  void cut(NSString* text) {
    path = nullptr;
    keys.clear();
    rest = nullptr;
    const std::u16string_view units = text->view();
    for (std::size_t from = 0;;) {
      if (from != 0 && units.substr(from).starts_with(u'@')) {
        rest = NSString::stringWithCharacters(units.substr(from));
        break;
      }
      const std::size_t dot = units.find(u'.', from);
      keys.push_back(NSString::stringWithCharacters(units.substr(from, dot - from)));
      if (dot == std::u16string_view::npos) break;
      from = dot + 1;
    }
    path = NSString::stringWithString(text);
  }
};

// What runs while the thread ends may still read paths when the cache has gone.
constinit thread_local bool isCacheGone = false;

struct CutPaths {
  ~CutPaths() { isCacheGone = true; }

  std::array<CutPath, 32> places;
};

/// Walks the keys of a path while it lives.
class PathWalk {
 public:
  explicit PathWalk(NSString* path) : cut_(&own_) {
    bool isKnown = false;
    if (!isCacheGone) [[likely]] {
      thread_local CutPaths cache;
      CutPath& place = cache.places[path->hash() % cache.places.size()];
      isKnown = place.path && place.path->isEqualToString(path);
      if (isKnown || place.readers == 0) cut_ = &place;
    }
    if (!isKnown) cut_->cut(path);
    ++cut_->readers;
  }
  ~PathWalk() { --cut_->readers; }
  PathWalk(const PathWalk&) = delete;
  PathWalk& operator=(const PathWalk&) = delete;

  const std::vector<Ref<NSString>>& keys() const { return cut_->keys; }
  NSString* rest() const { return cut_->rest; }

 private:
  CutPath* cut_;
  CutPath own_;
};

void requireKey(NSString* key) {
  if (key == nullptr) raise(NSInvalidArgumentException, "a key is nil");
}

}  // namespace
}  // namespace qz::detail

namespace qz {

namespace {
// A class that nobody has mentioned so far has not entered its names yet.
const detail::Key* findKeyOf(const NSObject* object, NSString* key) {
  if (const detail::Key* known = detail::findKey(key)) [[likely]]
    return known;
  object->classObject();
  return detail::findKey(key);
}
}  // namespace

Ref<NSObject> NSObject::valueForKey(NSString* key) {
  detail::requireKey(key);
  const detail::Key* known = findKeyOf(this, key);
  if (const detail::DispatchEntry* getter = detail::findGetter(this, known)) [[likely]]
    return detail::boxWord(getter->imp(this, known->getter, 0, 0, 0, nullptr),
                           detail::shapeAnswer(getter->shape));
  return valueForUndefinedKey(key);
}

namespace {
void setByKey(NSObject* object, NSObject* value, NSString* key) {
  const detail::Key* known = findKeyOf(object, key);
  if (known != nullptr) {
    const detail::DispatchEntry& setter = detail::lookUp(object, known->setter);
    if (setter.method != nullptr && detail::shapeArguments(setter.shape) == 1) [[likely]] {
      const detail::Kind kind = setter.method->arguments[0]->kind;
      const bool isScalar = detail::isScalar(kind);
      if (isScalar && value == nullptr) return object->setNilValueForKey(key);
      if (isScalar || kind == detail::Kind::Object) {
        const auto word = isScalar ? detail::unboxWord(value, kind) : detail::toWord(value);
        // A setter may answer something, which is let go.
        const Reply answer(setter.imp(object, known->setter, word, 0, 0, nullptr),
                           setter.method->answer);
        return;
      }
    }
  }
  object->setValue_forUndefinedKey(value, key);
}

[[gnu::noinline]] void setObservedByKey(NSObject* object, NSObject* value, NSString* key) {
  if (!send<bool>(object->classObject(), "automaticallyNotifiesObserversForKey:"_sel, key))
    return setByKey(object, value, key);
  const KeyValueChange changing(object, key);
  setByKey(object, value, key);
}
}  // namespace

void NSObject::setValue_forKey(NSObject* value, NSString* key) {
  detail::requireKey(key);
  if (detail::isObserved(this)) [[unlikely]]
    return setObservedByKey(this, value, key);
  setByKey(this, value, key);
}

Ref<NSObject> NSObject::valueForKeyPath(NSString* keyPath) {
  detail::requireKey(keyPath);
  if (keyPath->view().find(u'.') == std::u16string_view::npos) return valueForKey(keyPath);
  const detail::PathWalk walk(keyPath);
  const auto& keys = walk.keys();
  Ref<NSObject> value = valueForKey(keys[0]);
  for (std::size_t i = 1; i < keys.size() && value; ++i) value = value->valueForKey(keys[i]);
  // A collection makes of an operator and the path behind it what no single key could.
  return value && walk.rest() != nullptr ? value->valueForKeyPath(walk.rest()) : value;
}

void NSObject::setValue_forKeyPath(NSObject* value, NSString* keyPath) {
  detail::requireKey(keyPath);
  const std::size_t dot = keyPath->view().rfind(u'.');
  if (dot == std::u16string_view::npos) return setValue_forKey(value, keyPath);
  auto before = NSString::stringWithCharacters(keyPath->view().substr(0, dot));
  auto last = NSString::stringWithCharacters(keyPath->view().substr(dot + 1));
  if (Ref<NSObject> target = valueForKeyPath(before)) target->setValue_forKey(value, last);
}

void NSObject::setValuesForKeysWithDictionary(NSDictionary* values) {
  if (values == nullptr) return;
  Ref<NSEnumerator> keys = values->keyEnumerator();
  while (Ref<NSObject> key = keys->nextObject()) {
    auto* name = as<NSString>(key.get());
    if (name == nullptr)
      detail::raise(NSInvalidArgumentException,
                    "setValuesForKeysWithDictionary: a key is of class " +
                        std::string(key->classObject()->name()) + ", not NSString");
    Ref<NSObject> value = values->objectForKey(key);
    setValue_forKey(value == NSNull::null() ? nullptr : value.get(), name);
  }
}

Ref<NSDictionary> NSObject::dictionaryWithValuesForKeys(NSArray* keys) {
  auto values = make<NSMutableDictionary>();
  for (NSString* key : elements<NSString>(keys)) {
    Ref<NSObject> value = valueForKey(key);
    values->setObject_forKey(value ? value : NSNull::null(), key);
  }
  return values;
}

namespace {
[[noreturn]] void raiseUndefinedKey(NSObject* object, NSString* key, bool toSet) {
  const Class* const aClass = object->classObject();
  const std::string name = key->UTF8String();
  detail::raise(NSUndefinedKeyException, "[" + to_string(object) + "]: class " +
                                             std::string(aClass->name()) +
                                             " is not key value coding-compliant for the key " +
                                             name + detail::suggestionForKey(aClass, name, toSet));
}
}  // namespace

Ref<NSObject> NSObject::valueForUndefinedKey(NSString* key) { raiseUndefinedKey(this, key, false); }

void NSObject::setValue_forUndefinedKey(NSObject*, NSString* key) {
  raiseUndefinedKey(this, key, true);
}

void NSObject::setNilValueForKey(NSString* key) {
  detail::raise(NSInvalidArgumentException, "class " + std::string(classObject()->name()) +
                                                " cannot set nil for the scalar key " +
                                                key->UTF8String());
}

}  // namespace qz
