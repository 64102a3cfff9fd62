#include "Platform/System/NSUserDefaults.h"

#include <mutex>
#include <string>
#include <utility>

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/Concurrency/NSNotificationCenter.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/System/NSBundle.h"
#include "Platform/System/NSProcessInfo.h"
#include "Platform/System/NSPropertyListSerialization.h"
#include "Platform/System/detail/ArgumentDefaults.h"
#include "Platform/System/detail/BaseDirectory.h"
#include "Platform/System/detail/DefaultsStore.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/NSError.h"
#include "Platform/Values/NSNumber.h"

namespace qz {
namespace {

std::string fileOf(const std::string& name) {
  return detail::baseDirectory("XDG_CONFIG_HOME", "/.config") + "/" + name + "/defaults.plist";
}

std::string nameOfProgram() {
  const Ref<NSString> identifier = NSBundle::mainBundle()->bundleIdentifier();
  if (identifier && identifier->length() != 0) return identifier->UTF8String();
  return NSProcessInfo::processInfo()->processName()->UTF8String();
}

bool canNameDirectory(NSString* name) {
  if (name == nullptr || name->length() == 0) return false;
  const std::u16string_view text = name->view();
  return text.find_first_of(std::u16string_view(u"/\0", 2)) == text.npos && text != u"." &&
         text != u"..";
}

void requireKey(NSString* key, const char* operation) {
  if (key == nullptr)
    detail::raise(NSInvalidArgumentException, std::string(operation) + ": nil key");
}

/// An immutable copy of a property list, which shares nothing with it.
Ref<NSObject> detached(NSObject* value) {
  Ref<NSString> problem;
  const Ref<NSData> data =
      NSPropertyListSerialization::dataFromPropertyList_format_errorDescription(
          value, NSPropertyListBinaryFormat, &problem);
  if (!data)
    detail::raise(NSInvalidArgumentException,
                  "setObject:forKey: no property list: " + problem->UTF8String());
  return NSPropertyListSerialization::propertyListFromData_mutabilityOption_format_errorDescription(
      data, NSPropertyListImmutable, nullptr, nullptr);
}

}  // namespace

class NSUserDefaults::Contents {
 public:
  explicit Contents(const std::string& file)
      : store(detail::DefaultsStore::at(file)), registered_(NSDictionary::dictionary()) {}

  detail::DefaultsStore& store;

  // Read once: a command line does not change.
  static NSDictionary* arguments() {
    static NSDictionary* const values =
        detail::defaultsOfArguments(NSProcessInfo::processInfo()->arguments()).leak();
    return values;
  }

  Ref<NSDictionary> registered() const {
    const std::lock_guard lock(mutex_);
    return registered_;
  }

  void addRegistered(NSDictionary* values) {
    const std::lock_guard lock(mutex_);
    auto all = as<NSMutableDictionary>(registered_->mutableCopy());
    all->addEntriesFromDictionary(values);
    registered_ = as<NSDictionary>(all->copy());
  }

 private:
  mutable std::mutex mutex_;
  Ref<NSDictionary> registered_;  // never changes: another one takes its place
};

NSUserDefaults::NSUserDefaults(std::unique_ptr<Contents> contents)
    : contents_(std::move(contents)) {}
NSUserDefaults::~NSUserDefaults() = default;

void NSUserDefaults::describe(ClassDescription<NSUserDefaults>& is) {
  using Self = NSUserDefaults;
  is.named("NSUserDefaults")
      .classMethod<&Self::standardUserDefaults>("standardUserDefaults")
      .initializer<&Self::initWithSuiteName>("initWithSuiteName:")
      .method<&Self::objectForKey>("objectForKey:")
      .method<&Self::stringForKey>("stringForKey:")
      .method<&Self::arrayForKey>("arrayForKey:")
      .method<&Self::dictionaryForKey>("dictionaryForKey:")
      .method<&Self::dataForKey>("dataForKey:")
      .method<&Self::stringArrayForKey>("stringArrayForKey:")
      .method<&Self::integerForKey>("integerForKey:")
      .method<&Self::floatForKey>("floatForKey:")
      .method<&Self::doubleForKey>("doubleForKey:")
      .method<&Self::boolForKey>("boolForKey:")
      .method<&Self::dictionaryRepresentation>("dictionaryRepresentation")
      .method<&Self::setObject_forKey>("setObject:forKey:")
      .method<&Self::setInteger_forKey>("setInteger:forKey:")
      .method<&Self::setFloat_forKey>("setFloat:forKey:")
      .method<&Self::setDouble_forKey>("setDouble:forKey:")
      .method<&Self::setBool_forKey>("setBool:forKey:")
      .method<&Self::removeObjectForKey>("removeObjectForKey:")
      .method<&Self::synchronize>("synchronize")
      .method<&Self::path>("path")
      .method<&Self::registerDefaults>("registerDefaults:")
      .method<&Self::argumentDomain>("argumentDomain")
      .method<&Self::registrationDomain>("registrationDomain");
}

Ref<NSUserDefaults> NSUserDefaults::standardUserDefaults() {
  static NSUserDefaults* const standard =
      make<NSUserDefaults>(std::make_unique<Contents>(fileOf(nameOfProgram()))).leak();
  return standard;
}

Ref<NSUserDefaults> NSUserDefaults::initWithSuiteName(NSString* name) {
  if (!canNameDirectory(name)) return nullptr;
  return make<NSUserDefaults>(std::make_unique<Contents>(fileOf(name->UTF8String())));
}

// Reading -----------------------------------------------------------------------------------------

Ref<NSObject> NSUserDefaults::objectForKey(NSString* key) const {
  requireKey(key, "objectForKey:");
  if (Ref<NSObject> value = Contents::arguments()->objectForKey(key)) return value;
  if (Ref<NSObject> value = contents_->store.value(key)) return value;
  return contents_->registered()->objectForKey(key);
}

Ref<NSString> NSUserDefaults::stringForKey(NSString* key) const {
  const Ref<NSObject> value = objectForKey(key);
  if (auto number = as<NSNumber>(value)) return number->stringValue();
  return as<NSString>(value);
}

Ref<NSArray> NSUserDefaults::arrayForKey(NSString* key) const {
  return as<NSArray>(objectForKey(key));
}

Ref<NSDictionary> NSUserDefaults::dictionaryForKey(NSString* key) const {
  return as<NSDictionary>(objectForKey(key));
}

Ref<NSData> NSUserDefaults::dataForKey(NSString* key) const {
  return as<NSData>(objectForKey(key));
}

Ref<NSArray> NSUserDefaults::stringArrayForKey(NSString* key) const {
  Ref<NSArray> array = arrayForKey(key);
  for (NSObject* each : array)
    if (!isKind<NSString>(each)) return nullptr;
  return array;
}

std::int64_t NSUserDefaults::integerForKey(NSString* key) const {
  const Ref<NSObject> value = objectForKey(key);
  if (auto number = as<NSNumber>(value)) return number->longLongValue();
  const auto text = as<NSString>(value);
  return text ? text->longLongValue() : 0;
}

float NSUserDefaults::floatForKey(NSString* key) const {
  return static_cast<float>(doubleForKey(key));
}

double NSUserDefaults::doubleForKey(NSString* key) const {
  const Ref<NSObject> value = objectForKey(key);
  if (auto number = as<NSNumber>(value)) return number->doubleValue();
  const auto text = as<NSString>(value);
  return text ? text->doubleValue() : 0;
}

bool NSUserDefaults::boolForKey(NSString* key) const {
  const Ref<NSObject> value = objectForKey(key);
  if (auto number = as<NSNumber>(value)) return number->boolValue();
  const auto text = as<NSString>(value);
  // Not `boolValue`, which libraries change.
  constexpr std::u16string_view yes = u"YyTt123456789";
  return text && text->length() != 0 && yes.find(text->view()[0]) != yes.npos;
}

Ref<NSDictionary> NSUserDefaults::dictionaryRepresentation() const {
  auto all = as<NSMutableDictionary>(contents_->registered()->mutableCopy());
  all->addEntriesFromDictionary(contents_->store.values());
  all->addEntriesFromDictionary(Contents::arguments());
  return as<NSDictionary>(all->copy());
}

// Changing ----------------------------------------------------------------------------------------

void NSUserDefaults::setObject_forKey(NSObject* value, NSString* key) {
  requireKey(key, "setObject:forKey:");
  const Ref<NSObject> kept = value != nullptr ? detached(value) : nullptr;
  contents_->store.set(kept, as<NSString>(key->copy()));
  announceChange();
}

void NSUserDefaults::setInteger_forKey(std::int64_t value, NSString* key) {
  setObject_forKey(NSNumber::of(value), key);
}

void NSUserDefaults::setFloat_forKey(float value, NSString* key) {
  setObject_forKey(NSNumber::of(value), key);
}

void NSUserDefaults::setDouble_forKey(double value, NSString* key) {
  setObject_forKey(NSNumber::of(value), key);
}

void NSUserDefaults::setBool_forKey(bool value, NSString* key) {
  setObject_forKey(NSNumber::of(value), key);
}

void NSUserDefaults::removeObjectForKey(NSString* key) { setObject_forKey(nullptr, key); }

bool NSUserDefaults::synchronize() { return synchronizeReturningError(nullptr); }

bool NSUserDefaults::synchronizeReturningError(Ref<NSError>* error) {
  bool changed = false;
  const Ref<NSError> failure = contents_->store.synchronize(&changed);
  if (changed) announceChange();
  if (failure && error != nullptr) *error = failure;
  return failure == nullptr;
}

void NSUserDefaults::announceChange() {
  NSNotificationCenter::defaultCenter()->postNotificationName_object(
      NSUserDefaultsDidChangeNotification, this);
}

Ref<NSString> NSUserDefaults::path() const {
  return NSString::stringWithFileSystemRepresentation(contents_->store.path());
}

// The other domains -------------------------------------------------------------------------------

void NSUserDefaults::registerDefaults(NSDictionary* values) {
  if (values == nullptr || values->count() == 0) return;
  contents_->addRegistered(as<NSDictionary>(detached(values)));
  announceChange();
}

Ref<NSDictionary> NSUserDefaults::argumentDomain() const { return Contents::arguments(); }

Ref<NSDictionary> NSUserDefaults::registrationDomain() const { return contents_->registered(); }

Ref<NSObject> NSUserDefaults::valueForKey(NSString* key) { return objectForKey(key); }

void NSUserDefaults::setValue_forKey(NSObject* value, NSString* key) {
  setObject_forKey(value, key);
}

}  // namespace qz
