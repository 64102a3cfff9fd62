#include "QZFoundation/QZKeyValueSyncer.h"

#include <utility>
#include <vector>

#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSAssertionHandler.h"
#include "Platform/Runtime/NSKeyValueObserving.h"

namespace qz {
namespace {

constexpr NSKeyValueObservingOptions oldAndNew =
    NSKeyValueObservingOptionNew | NSKeyValueObservingOptionOld;

// The place that a failed assertion names is part of the contract, wherever the code stands.
void requireKey(NSString* key, std::int32_t line, NSString* description) {
  if (key == nullptr)
    NSAssertionHandler::currentHandler()->handleFailureInMethod_object_file_lineNumber_description(
        "initWithPrimaryKey:secondaryKey:"_sel, nullptr, "QZKeyValueSyncer"_ns, line, description);
}

/// The Objects as they are now: a change that is followed may watch or forget others.
std::vector<Ref<NSObject>> snapshot(const std::list<Ref<NSObject>>& objects) {
  return {objects.begin(), objects.end()};
}

Ref<NSString> copyOf(NSString* key) { return key == nullptr ? nullptr : as<NSString>(key->copy()); }

}  // namespace

Ref<QZKeyValueSyncer> QZKeyValueSyncer::initWithPrimaryKey_secondaryKey(NSString* primaryKey,
                                                                        NSString* secondaryKey) {
  return make<QZKeyValueSyncer>(primaryKey, secondaryKey);
}

QZKeyValueSyncer::QZKeyValueSyncer(NSString* primaryKey, NSString* secondaryKey)
    : primaryKey_(copyOf(primaryKey)),
      secondaryKey_(copyOf(secondaryKey)),
      valueMap_(NSMutableDictionary::dictionary()),
      inverseValueMap_(NSMutableDictionary::dictionary()) {
  requireKey(primaryKey, 18, "Primary key is nil"_ns);
  requireKey(secondaryKey, 19, "Secondary key is nil"_ns);
}

QZKeyValueSyncer::~QZKeyValueSyncer() {
  for (NSObject* object : snapshot(objects_)) unobserveObject(object);
}

void QZKeyValueSyncer::setPrimaryValue_forSecondaryValue(NSObject* primaryValue,
                                                         NSObject* secondaryValue) {
  valueMap_->setObject_forKey(secondaryValue, primaryValue);
  inverseValueMap_->setObject_forKey(primaryValue, secondaryValue);
}

Ref<NSObject> QZKeyValueSyncer::secondaryValueForPrimaryValue(NSObject* primaryValue) const {
  return valueMap_->objectForKey(primaryValue);
}

Ref<NSObject> QZKeyValueSyncer::primaryValueForSecondaryValue(NSObject* secondaryValue) const {
  return inverseValueMap_->objectForKey(secondaryValue);
}

void QZKeyValueSyncer::observeObject(NSObject* object) {
  if (object == nullptr || places_.contains(object)) return;
  object->addObserver_forKeyPath_options_context(this, primaryKey_, oldAndNew, nullptr);
  try {
    object->addObserver_forKeyPath_options_context(this, secondaryKey_, oldAndNew, nullptr);
  } catch (...) {
    object->removeObserver_forKeyPath(this, primaryKey_);
    throw;
  }
  places_.emplace(object, objects_.insert(objects_.end(), Ref<NSObject>(object)));
}

void QZKeyValueSyncer::unobserveObject(NSObject* object) {
  const auto found = places_.find(object);
  if (found == places_.end()) return;
  const Ref<NSObject> watched = std::move(*found->second);
  objects_.erase(found->second);
  places_.erase(found);
  watched->removeObserver_forKeyPath(this, primaryKey_);
  watched->removeObserver_forKeyPath(this, secondaryKey_);
}

void QZKeyValueSyncer::updateSecondaryValueForObject(NSObject* object) {
  if (object == nullptr) return;
  const Ref<NSObject> primary = object->valueForKey(primaryKey_);
  object->setValue_forKey(secondaryValueForPrimaryValue(primary), secondaryKey_);
}

void QZKeyValueSyncer::updatePrimaryValueForObject(NSObject* object) {
  if (object == nullptr) return;
  const Ref<NSObject> secondary = object->valueForKey(secondaryKey_);
  object->setValue_forKey(primaryValueForSecondaryValue(secondary), primaryKey_);
}

void QZKeyValueSyncer::updateSecondaryValues() {
  for (NSObject* object : snapshot(objects_)) updateSecondaryValueForObject(object);
}

void QZKeyValueSyncer::updatePrimaryValues() {
  for (NSObject* object : snapshot(objects_)) updatePrimaryValueForObject(object);
}

void QZKeyValueSyncer::observeValueForKeyPath_ofObject_change_context(NSString* keyPath,
                                                                      NSObject* object,
                                                                      NSDictionary* change, void*) {
  // What stays equal is passed over: that ends the exchange, since each side sets the other. From
  // nil to nil is no change either.
  const Ref<NSObject> now = change->objectForKey(NSKeyValueChangeNewKey);
  const Ref<NSObject> before = change->objectForKey(NSKeyValueChangeOldKey);
  if (equal(now, before)) return;
  if (equal(keyPath, primaryKey_))
    updateSecondaryValueForObject(object);
  else if (equal(keyPath, secondaryKey_))
    updatePrimaryValueForObject(object);
}

void QZKeyValueSyncer::describe(ClassDescription<QZKeyValueSyncer>& is) {
  using Syncer = QZKeyValueSyncer;
  is.named("QZKeyValueSyncer")
      .initializer<&Syncer::initWithPrimaryKey_secondaryKey>("initWithPrimaryKey:secondaryKey:")
      .method<&Syncer::setPrimaryValue_forSecondaryValue>("setPrimaryValue:forSecondaryValue:")
      .method<&Syncer::secondaryValueForPrimaryValue>("secondaryValueForPrimaryValue:")
      .method<&Syncer::primaryValueForSecondaryValue>("primaryValueForSecondaryValue:")
      .method<&Syncer::observeObject>("observeObject:")
      .method<&Syncer::unobserveObject>("unobserveObject:")
      .method<&Syncer::updateSecondaryValueForObject>("updateSecondaryValueForObject:")
      .method<&Syncer::updatePrimaryValueForObject>("updatePrimaryValueForObject:")
      .method<&Syncer::updateSecondaryValues>("updateSecondaryValues")
      .method<&Syncer::updatePrimaryValues>("updatePrimaryValues");
}

}  // namespace qz
