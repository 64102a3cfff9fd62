#include "Platform/Runtime/NSObject.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <ostream>
#include <string>
#include <string_view>

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/NSDictionary.h"
#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Collections/NSSet.h"
#include "Platform/Runtime/DebugText.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/NSInvocation.h"
#include "Platform/Runtime/NSKeyValueObserving.h"
#include "Platform/Runtime/NSMethodSignature.h"
#include "Platform/Runtime/Send.h"
#include "Platform/Runtime/detail/Suggestion.h"
#include "Platform/Values/NSIndexSet.h"
#include "Platform/Values/NSString.h"

namespace qz {

void NSObject::destroyLast(std::int32_t before) const noexcept {
  if ((before & weakBit) != 0) {
    detail::ObjectAccess::emptyWeakBox(this);
    if ((flags_.load(std::memory_order_relaxed) & detail::flagObservationRecord) != 0)
      detail::ObjectAccess::dropObservations(this);
  }
  count_.store(destroying, std::memory_order_relaxed);
  delete this;
}

bool detail::ObjectAccess::tryRetain(const NSObject* object) noexcept {
  std::int32_t count = object->count_.load(std::memory_order_relaxed);
  do {
    if (count < NSObject::one) return false;
  } while (!object->count_.compare_exchange_weak(
      count, count + NSObject::one, std::memory_order_acquire, std::memory_order_relaxed));
  return true;
}

std::uint32_t NSObject::retainCount() const noexcept {
  const std::int32_t count = count_.load(std::memory_order_relaxed);
  return count < 0 ? NSNotFound : static_cast<std::uint32_t>(count) / one;
}

Class* NSObject::classObject() const { return classOf<NSObject>(); }
Class* NSObject::superclass() const { return classObject()->superclassObject(); }

bool NSObject::isKindOfClass(Class* aClass) const {
  return classObject()->isSubclassOfClass(aClass);
}
bool NSObject::isMemberOfClass(Class* aClass) const { return classObject() == aClass; }

bool NSObject::isEqual(NSObject* other) const { return this == other; }

std::size_t NSObject::hash() const { return reinterpret_cast<std::uintptr_t>(this) >> 3; }

Ref<NSString> NSObject::description() const {
  char address[2 + 16 + 1];
  std::snprintf(address, sizeof address, "%p", static_cast<const void*>(this));
  return NSString::stringWithUTF8String("<" + std::string(classObject()->name()) + ": " + address +
                                        ">");
}

// An override of doesNotRecognizeSelector raises too, which a virtual call does not promise.
Ref<NSObject> NSObject::copy() const {
  doesNotRecognizeSelector("copy"_sel);
  return nullptr;
}
Ref<NSObject> NSObject::mutableCopy() const {
  doesNotRecognizeSelector("mutableCopy"_sel);
  return nullptr;
}

bool NSObject::respondsToSelector(Selector selector) const {
  return detail::lookUp(this, selector).method != nullptr;
}

Implementation NSObject::methodForSelector(Selector selector) const {
  return Implementation(detail::lookUp(this, selector), selector);
}

namespace {
Ref<NSMethodSignature> signatureOf(const detail::Method* method) {
  if (method == nullptr) return nullptr;
  return make<NSMethodSignature>(method->answer,
                                 std::vector(method->arguments.begin(), method->arguments.end()));
}
}  // namespace

Ref<NSMethodSignature> NSObject::methodSignatureForSelector(Selector selector) const {
  return signatureOf(detail::lookUp(this, selector).method);
}

void NSObject::forwardInvocation(NSInvocation* invocation) {
  doesNotRecognizeSelector(invocation->selector());
}

void NSObject::doesNotRecognizeSelector(Selector selector) const {
  detail::raise(NSInvalidArgumentException,
                "-[" + std::string(classObject()->name()) + " " + std::string(selector.name()) +
                    "]: unrecognized selector sent to instance" +
                    detail::suggestionForOperation(classObject(), selector, false));
}

bool equal(NSObject* a, NSObject* b) {
  return a == b || (a != nullptr && b != nullptr && a->isEqual(b));
}

std::string to_string(const NSObject* object) {
  return object == nullptr ? "(null)" : object->description()->UTF8String();
}

std::ostream& operator<<(std::ostream& out, const NSObject& object) {
  return out << to_string(&object);
}

std::ostream& operator<<(std::ostream& out, const NSObject* object) {
  return out << to_string(object);
}

// Ownership by Selector, for code that keeps counts by hand. A Ref does all of this by itself.
namespace {

Ref<NSObject> self(NSObject* object) { return Ref<NSObject>(object); }

Ref<NSObject> retainByName(NSObject* object) {
  retain(object);
  return Ref<NSObject>(object);
}

// There is no pool: the count that the caller gives up becomes the answer's.
Ref<NSObject> autoreleaseByName(NSObject* object) { return Ref<NSObject>(object, adopt); }
void releaseByName(NSObject* object) { release(object); }

// There are no zones; the operation answers zero as an Object in the default one does.
void* zone(NSObject*) { return nullptr; }

Ref<NSObject> perform(NSObject* object, Selector selector) {
  return object->performSelector(selector);
}
Ref<NSObject> performWith(NSObject* object, Selector selector, NSObject* first) {
  return object->performSelector_withObject(selector, first);
}
Ref<NSObject> performWithTwo(NSObject* object, Selector selector, NSObject* first,
                             NSObject* second) {
  return object->performSelector_withObject_withObject(selector, first, second);
}

Ref<NSObject> newOf(Class* aClass) { return aClass->newObject(); }
Ref<NSObject> newInZone(Class* aClass, void*) { return aClass->newObject(); }
Class* itself(Class* aClass) { return aClass; }
Class* above(Class* aClass) { return aClass->superclassObject(); }
bool instancesRespond(Class* aClass, Selector selector) {
  return aClass->instancesRespondToSelector(selector);
}
bool descends(Class* aClass, Class* other) { return aClass->isSubclassOfClass(other); }

// Asks for the class's one-time function to have run.
void initializeByName(Class* aClass) { aClass->ensureInitialized(); }

}  // namespace

void NSObject::describe(ClassDescription<NSObject>& is) {
  is.named("NSObject")
      .classMethod<&newOf>("alloc")
      .classMethod<&newInZone>("allocWithZone:")
      .classMethod<&newOf>("new")
      .classMethod<&itself>("class")
      .classMethod<&above>("superclass")
      .classMethod<&instancesRespond>("instancesRespondToSelector:")
      .classMethod<&descends>("isSubclassOfClass:")
      .classMethod<&initializeByName>("initialize")
      .method<&self>("init")
      .method<&self>("self")
      .method<&retainByName>("retain")
      .method<&releaseByName>("release")
      .method<&autoreleaseByName>("autorelease")
      .method<&NSObject::retainCount>("retainCount")
      .method<&zone>("zone")
      .method<&NSObject::classObject>("class")
      .method<&NSObject::superclass>("superclass")
      .method<&NSObject::isKindOfClass>("isKindOfClass:")
      .method<&NSObject::isMemberOfClass>("isMemberOfClass:")
      .method<&NSObject::isEqual>("isEqual:")
      .method<&NSObject::hash>("hash")
      .method<&NSObject::description>("description")
      .method<&NSObject::copy>("copy")
      .method<&NSObject::mutableCopy>("mutableCopy")
      .method<&NSObject::respondsToSelector>("respondsToSelector:")
      .method<&perform>("performSelector:")
      .method<&performWith>("performSelector:withObject:")
      .method<&performWithTwo>("performSelector:withObject:withObject:")
      .method<&NSObject::methodForSelector>("methodForSelector:")
      .method<&NSObject::methodSignatureForSelector>("methodSignatureForSelector:")
      .method<&NSObject::forwardInvocation>("forwardInvocation:")
      .method<&NSObject::doesNotRecognizeSelector>("doesNotRecognizeSelector:")
      .method<&NSObject::valueForKey>("valueForKey:")
      .method<&NSObject::valueForKeyPath>("valueForKeyPath:")
      .method<&NSObject::setValue_forKey>("setValue:forKey:")
      .method<&NSObject::setValue_forKeyPath>("setValue:forKeyPath:")
      .method<&NSObject::setValuesForKeysWithDictionary>("setValuesForKeysWithDictionary:")
      .method<&NSObject::dictionaryWithValuesForKeys>("dictionaryWithValuesForKeys:")
      .method<&NSObject::valueForUndefinedKey>("valueForUndefinedKey:")
      .method<&NSObject::setValue_forUndefinedKey>("setValue:forUndefinedKey:")
      .method<&NSObject::setNilValueForKey>("setNilValueForKey:")
      .method<&NSObject::mutableArrayValueForKey>("mutableArrayValueForKey:")
      .method<&NSObject::mutableArrayValueForKeyPath>("mutableArrayValueForKeyPath:")
      .method<&NSObject::addObserver_forKeyPath_options_context>(
          "addObserver:forKeyPath:options:context:")
      .method<&NSObject::removeObserver_forKeyPath>("removeObserver:forKeyPath:")
      .method<&NSObject::removeObserver_forKeyPath_context>("removeObserver:forKeyPath:context:")
      .method<&NSObject::observeValueForKeyPath_ofObject_change_context>(
          "observeValueForKeyPath:ofObject:change:context:")
      .method<&NSObject::willChangeValueForKey>("willChangeValueForKey:")
      .method<&NSObject::didChangeValueForKey>("didChangeValueForKey:")
      .method<&NSObject::willChange_valuesAtIndexes_forKey>("willChange:valuesAtIndexes:forKey:")
      .method<&NSObject::didChange_valuesAtIndexes_forKey>("didChange:valuesAtIndexes:forKey:")
      .classMethod<&NSObject::keyPathsForValuesAffectingValueForKey>(
          "keyPathsForValuesAffectingValueForKey:")
      .classMethod<&NSObject::automaticallyNotifiesObserversForKey>(
          "automaticallyNotifiesObserversForKey:");
}

// Classes as Objects.

Class* Class::classObject() const { return classOf<Class>(); }

Ref<NSString> Class::description() const { return NSString::stringWithUTF8String(name_); }

bool Class::respondsToSelector(Selector selector) const {
  return detail::lookUp(this, selector).method != nullptr;
}

Ref<NSMethodSignature> Class::methodSignatureForSelector(Selector selector) const {
  return signatureOf(detail::lookUp(this, selector).method);
}

void Class::doesNotRecognizeSelector(Selector selector) const {
  detail::raise(NSInvalidArgumentException,
                "+[" + std::string(name_) + " " + std::string(selector.name()) +
                    "]: unrecognized selector sent to class" +
                    detail::suggestionForOperation(this, selector, true));
}

void Class::describe(ClassDescription<Class>& is) { is.named("Class"); }

namespace {

// What names led to last, for those that come again and again, as in configuration files: without
// the lock and the UTF-8 of the whole look-up. What has a name is never freed.
template <class Named>
class RecentNames {
 public:
  template <class NameOf, class Find>
  Named* find(const NSString& name, NameOf nameOf, Find find) {
    std::atomic<Named*>& slot = slots_[name.hash() % slots_.size()];
    Named* const recent = slot.load(std::memory_order_acquire);
    if (recent != nullptr && std::ranges::equal(name.view(), nameOf(*recent), isSameAscii))
      return recent;
    Named* const found = find(name.UTF8String());
    if (found != nullptr) slot.store(found, std::memory_order_release);
    return found;
  }

 private:
  static bool isSameAscii(char16_t unit, char letter) {
    return unit < 0x80 && unit == static_cast<unsigned char>(letter);
  }

  std::array<std::atomic<Named*>, 64> slots_{};
};

constinit RecentNames<Class> recentClasses;
constinit RecentNames<const detail::SelectorRecord> recentSelectors;

}  // namespace

Class* NSClassFromString(NSString* name) {
  if (name == nullptr) return nullptr;
  return recentClasses.find(
      *name, [](const auto& each) { return each.name(); },
      [](const std::string& text) { return Class::named(text); });
}

Ref<NSString> NSStringFromClass(Class* aClass) {
  return aClass == nullptr ? nullptr : NSString::stringWithUTF8String(aClass->name());
}

Selector NSSelectorFromString(NSString* name) {
  if (name == nullptr) return Selector();
  return Selector(recentSelectors.find(
      *name, [](const detail::SelectorRecord& each) { return each.name; },
      [](const std::string& text) { return Selector::named(text).record(); }));
}

std::ostream& operator<<(std::ostream& out, Selector selector) {
  return out << (selector ? selector.name() : std::string_view("(null)"));
}

Ref<NSString> NSStringFromSelector(Selector selector) {
  return selector ? NSString::stringWithUTF8String(selector.name()) : nullptr;
}

}  // namespace qz

// Here, in a file that every program with Objects links, since nothing but debuggers calls it.
extern "C" const char* QZDebugText(const qz::NSObject* object) noexcept {
  if (object == nullptr) return "nil";
  thread_local std::string text;
  try {
    text = "(" + std::string(object->classObject()->name()) + ") ";
    const bool isString = qz::isKind<qz::NSString>(object);
    text += isString ? "\"" + qz::to_string(object) + "\"" : qz::to_string(object);
    return text.c_str();
  } catch (...) {
    return "(an Object that cannot be described)";
  }
}
