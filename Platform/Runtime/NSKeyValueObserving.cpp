#include "Platform/Runtime/NSKeyValueObserving.h"

#include <exception>
#include <string>

#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/detail/ChangeFrame.h"
#include "Platform/Runtime/detail/Observation.h"

namespace qz {
namespace {

using detail::Observation;
using detail::requireArgument;

void start(Observation& observation, NSObject* object) {
  observation.start();
  if ((observation.options & NSKeyValueObservingOptionInitial) == 0) return;
  try {
    detail::tellInitialValue(observation, object);
  } catch (...) {
    observation.end();  // the caller has nothing that it could undo
    throw;
  }
}

std::u16string_view firstKey(std::u16string_view path) { return path.substr(0, path.find(u'.')); }

/// The latest registration of `observer` that is in force, and with `context` when that counts.
Ref<Observation> findRegistration(NSObject* object, NSObject* observer, NSString* keyPath,
                                  void* const* context) {
  detail::ObservedObject* record = detail::findObserved(object);
  if (record == nullptr) return nullptr;
  Ref<NSString> key(keyPath);
  if (firstKey(keyPath->view()).size() != keyPath->view().size())
    key = NSString::stringWithCharacters(firstKey(keyPath->view()));
  std::lock_guard lock(record->mutex);
  const detail::ObservedKey* known = record->find(key);
  if (known == nullptr) return nullptr;
  const auto& all = known->subscribers;
  for (auto each = all.rbegin(); each != all.rend(); ++each)
    if (each->level == 0 && each->observation->isFor(observer, keyPath) &&
        (context == nullptr || each->observation->context() == *context))
      return each->observation;
  return nullptr;
}

void unregister(NSObject* object, NSObject* observer, NSString* keyPath, void* const* context) {
  constexpr auto operation = "removeObserver:forKeyPath:";
  requireArgument(operation, "the observer", observer);
  requireArgument(operation, "the key path", keyPath);
  if (const Ref<Observation> found = findRegistration(object, observer, keyPath, context))
    return found->end();
  // What an observer leaves behind goes with it, maybe before its end gets as far as this.
  if (detail::ObjectAccess::isDestroying(observer)) return;
  detail::raise(NSInvalidArgumentException, std::string(operation) + " an Object of class " +
                                                std::string(observer->classObject()->name()) +
                                                " does not observe \"" + keyPath->UTF8String() +
                                                "\" of an Object of class " +
                                                std::string(object->classObject()->name()));
}

}  // namespace

void NSObject::addObserver_forKeyPath_options_context(NSObject* observer, NSString* keyPath,
                                                      NSKeyValueObservingOptions options,
                                                      void* context) {
  constexpr auto operation = "addObserver:forKeyPath:options:context:";
  requireArgument(operation, "the observer", observer);
  requireArgument(operation, "the key path", keyPath);
  auto observation = make<Observation>(this, keyPath, options);
  observation->tellObserver(observer, context);
  start(*observation, this);
}

void NSObject::removeObserver_forKeyPath(NSObject* observer, NSString* keyPath) {
  unregister(this, observer, keyPath, nullptr);
}

void NSObject::removeObserver_forKeyPath_context(NSObject* observer, NSString* keyPath,
                                                 void* context) {
  unregister(this, observer, keyPath, &context);
}

void NSObject::observeValueForKeyPath_ofObject_change_context(NSString* keyPath, NSObject* object,
                                                              NSDictionary*, void*) {
  detail::raise(NSInternalInconsistencyException,
                "an Object of class " + std::string(classObject()->name()) +
                    " was told of a change that it does not handle: key path \"" +
                    to_string(keyPath) + "\" of an Object of class " +
                    (object == nullptr ? "nil" : std::string(object->classObject()->name())));
}

void NSObject::willChangeValueForKey(NSString* key) {
  willChange_valuesAtIndexes_forKey(NSKeyValueChangeSetting, nullptr, key);
}

void NSObject::didChangeValueForKey(NSString* key) {
  didChange_valuesAtIndexes_forKey(NSKeyValueChangeSetting, nullptr, key);
}

void NSObject::willChange_valuesAtIndexes_forKey(NSKeyValueChange kind, NSIndexSet* indexes,
                                                 NSString* key) {
  if (detail::isObserved(this) && key != nullptr)
    detail::beginChange(this, key, kind, indexes, true);
}

void NSObject::didChange_valuesAtIndexes_forKey(NSKeyValueChange, NSIndexSet*, NSString* key) {
  if (detail::isObserved(this) && key != nullptr) detail::endChangeByHand(this, key);
}

detail::ChangeFrame* KeyValueChange::begin(NSObject* object, NSString* key, NSKeyValueChange kind,
                                           NSIndexSet* indexes) {
  if (key == nullptr) return nullptr;
  detail::ChangeFrame* frame = detail::beginChange(object, key, kind, indexes, false);
  frame->exceptions = std::uncaught_exceptions();
  return frame;
}

void KeyValueChange::end(detail::ChangeFrame* frame) {
  // The change may have been made before the exception that is under way, so observers are told
  // all the same.
  if (std::uncaught_exceptions() == frame->exceptions) return detail::endChange(frame);
  try {
    detail::endChange(frame);
  } catch (...) {  // two exceptions at a time would end the program
  }
}

void KeyValueObservation::invalidate() noexcept {
  if (const Ref<NSObject> ended = std::move(observation_))
    static_cast<Observation*>(ended.get())->end();
}

bool KeyValueObservation::isActive() const noexcept {
  return observation_ && static_cast<Observation*>(observation_.get())->isActive();
}

KeyValueObservation observe(NSObject* object, NSString* keyPath, NSKeyValueObservingOptions options,
                            KeyValueObserver observer) {
  requireArgument("observe", "the Object", object);
  requireArgument("observe", "the key path", keyPath);
  requireArgument("observe", "the function", observer ? object : nullptr);
  auto observation = make<Observation>(object, keyPath, options);
  observation->tellFunction(std::move(observer));
  KeyValueObservation token{Ref<NSObject>(observation)};
  start(*observation, object);
  return token;
}

}  // namespace qz
