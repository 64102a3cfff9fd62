/// @file
/// The root of every Object.

/// @namespace qz
/// All of both libraries. What is in `qz::detail` may change without notice.
#pragma once

#include <atomic>
#include <cstdint>
#include <iosfwd>
#include <new>
#include <string>

#include "Platform/Runtime/Ref.h"
#include "Platform/Runtime/Selector.h"
#include "Platform/Runtime/detail/Library.h"
#include "Platform/Runtime/detail/ObjectPool.h"

#pragma GCC visibility push(default)

namespace qz {

class Class;
class Implementation;
class NSArray;
class NSDictionary;
class NSIndexSet;
class NSInvocation;
class NSMethodSignature;
class NSMutableArray;
class NSSet;
class NSString;
class NSThread;
class Reply;
template <class T>
class ClassDescription;
namespace detail {
struct ObjectAccess;
}

/// A comparison's answer: the receiver orders before (-1), with (0) or after (+1) the argument.
enum NSComparisonResult : std::int32_t {
  NSOrderedAscending = -1,
  NSOrderedSame = 0,
  NSOrderedDescending = 1,
};

/// Where a failed search of an index or a Range says "not found".
inline constexpr std::uint32_t NSNotFound = 0x7FFFFFFF;

/// What an observer wants to be told, and what happened to a property: NSKeyValueObserving.h.
using NSKeyValueObservingOptions = std::uint32_t;
enum NSKeyValueChange : std::uint32_t;

/// The root class: identity, ownership, equality, dispatch by Selector and key-value access.
///
/// Derive with `class Person : public Derives<Person, NSObject>` and describe the class once (see
/// Derives.h and Describe.h). Objects live on the heap: make them with `make<Person>(…)`. The count
/// of owners is atomic; whether two threads may call into one Object at a time is for its class to
/// say, and immutable classes allow it.
///
/// The header takes 13 bytes (virtual table, count, flags); a derived class's first members fill
/// the remaining 3 of the second word.
class NSObject {
 public:
  NSObject() noexcept = default;
  NSObject(const NSObject&) = delete;
  NSObject& operator=(const NSObject&) = delete;
  virtual constexpr ~NSObject() = default;

  static void describe(ClassDescription<NSObject>& is);

  /// The class of this Object (the operation named `class`, a word C++ keeps for itself).
  virtual Class* classObject() const;

  /// The class above this Object's; nil for the root.
  Class* superclass() const;

  /// True when this Object's class is `aClass` or descends from it; false for nil. Constant time.
  virtual bool isKindOfClass(Class* aClass) const;

  /// True when this Object's class is exactly `aClass`.
  bool isMemberOfClass(Class* aClass) const;

  /// Value equality; identity unless a class says otherwise. False for nil.
  virtual bool isEqual(NSObject* other) const;

  /// Equal Objects have equal hashes. Not stable from one run to the next.
  virtual std::size_t hash() const;

  /// A text for people: `<Class: 0xaddress>` unless a class says more.
  virtual Ref<NSString> description() const;

  /// An immutable copy. A class that has none raises NSInvalidArgumentException.
  virtual Ref<NSObject> copy() const;

  /// A mutable copy. A class that has none raises NSInvalidArgumentException.
  virtual Ref<NSObject> mutableCopy() const;

  /// Whether this Object implements the operation. Constant time, no lock after the first time.
  virtual bool respondsToSelector(Selector selector) const;

  /// Sends `selector`; the reply holds the raw one-word answer and owns it when it is an Object.
  /// Arguments beyond those the operation takes are ignored; too few, or an Object where the
  /// operation takes a scalar, raise NSInvalidArgumentException. An unknown Selector is forwarded
  /// or raises.
  Reply performSelector(Selector selector);
  Reply performSelector_withObject(Selector selector, NSObject* object);
  Reply performSelector_withObject_withObject(Selector selector, NSObject* first, NSObject* second);

  /// The operation's entry point, for loops that send one Selector many times.
  Implementation methodForSelector(Selector selector) const;

  /// The types of an operation's arguments and answer; nil when this Object has no such operation.
  /// Override together with `forwardInvocation` to answer for operations the class does not have.
  virtual Ref<NSMethodSignature> methodSignatureForSelector(Selector selector) const;

  /// Called with a message that this Object does not implement but has a signature for. Raises as
  /// `doesNotRecognizeSelector` does unless overridden.
  virtual void forwardInvocation(NSInvocation* invocation);

  /// Raises NSInvalidArgumentException with the class and the Selector in the reason.
  [[noreturn]] virtual void doesNotRecognizeSelector(Selector selector) const;

  // On other threads, and later; see NSRunLoop.h. Receiver and argument are kept meanwhile.

  /// Sends `selector` on the main thread, in the common modes of its loop or in those given, and
  /// waits until that is done if asked to. On the main thread a call that waits is sent at once,
  /// one that does not in the loop's next turn. What the operation answers is dropped; what it
  /// throws reaches a caller that waits, and else whoever runs the loop. A loop that ends first
  /// raises NSRunLoopEndedException in callers that wait.
  void performSelectorOnMainThread_withObject_waitUntilDone(Selector selector, NSObject* object,
                                                            bool wait);
  void performSelectorOnMainThread_withObject_waitUntilDone_modes(Selector selector,
                                                                  NSObject* object, bool wait,
                                                                  NSArray* modes);

  /// The same on another thread, when it runs its loop.
  void performSelector_onThread_withObject_waitUntilDone(Selector selector, NSThread* thread,
                                                         NSObject* object, bool wait);

  /// Sends `selector` on a new thread.
  void performSelectorInBackground_withObject(Selector selector, NSObject* object);

  /// Sends `selector` on this thread when its loop has run for so long, in the default mode or in
  /// those given.
  void performSelector_withObject_afterDelay(Selector selector, NSObject* object, double seconds);
  void performSelector_withObject_afterDelay_inModes(Selector selector, NSObject* object,
                                                     double seconds, NSArray* modes);

  /// Forgets what this thread was to send to `target` after a delay: everything, or what has this
  /// Selector and an equal argument.
  static void cancelPreviousPerformRequestsWithTarget(NSObject* target);
  static void cancelPreviousPerformRequestsWithTarget_selector_object(NSObject* target,
                                                                      Selector selector,
                                                                      NSObject* object);

  // Key-value access. A key names the operation without arguments that reads it, and "set" and the
  // key the one that writes it; properties and fields are entered as such operations. A key that is
  // nil raises NSInvalidArgumentException.

  /// The value under `key`: scalars boxed as the Number kind they have. Raises
  /// NSUndefinedKeyException for a key this Object does not have.
  virtual Ref<NSObject> valueForKey(NSString* key);

  /// The value at the end of a chain of keys joined by "."; nil as soon as a step answers nil.
  virtual Ref<NSObject> valueForKeyPath(NSString* keyPath);

  /// Sets the value under `key`: scalars are unboxed by sending `intValue`, `doubleValue`, …
  virtual void setValue_forKey(NSObject* value, NSString* key);

  /// Sets the last key of the path on what the keys before it lead to; nothing when that is nil.
  virtual void setValue_forKeyPath(NSObject* value, NSString* keyPath);

  /// Sets each entry's value under its key; Null stands for nil.
  virtual void setValuesForKeysWithDictionary(NSDictionary* values);

  /// A Dictionary of the values under each of `keys`; nil values stand as Null.
  virtual Ref<NSDictionary> dictionaryWithValuesForKeys(NSArray* keys);

  /// Answers for keys this Object does not have: raise NSUndefinedKeyException unless overridden.
  virtual Ref<NSObject> valueForUndefinedKey(NSString* key);
  virtual void setValue_forUndefinedKey(NSObject* value, NSString* key);

  /// Called when nil is set for a scalar: raises NSInvalidArgumentException unless overridden.
  virtual void setNilValueForKey(NSString* key);

  /// The Array under `key` as one that can be changed: a live view that reads what is there now,
  /// and that announces each change to those who observe the key. It keeps this Object alive. For
  /// a key "parts" it changes the property by `insertObject:inPartsAtIndex:` and
  /// `removeObjectFromPartsAtIndex:` (and `replaceObjectInPartsAtIndex:withObject:`) if the Object
  /// has them; else in the MutableArray that stands there, unless there is `setParts:`; else by
  /// `setValue:forKey:` with a changed copy.
  Ref<NSMutableArray> mutableArrayValueForKey(NSString* key);
  Ref<NSMutableArray> mutableArrayValueForKeyPath(NSString* keyPath);

  // Key-value observing; see NSKeyValueObserving.h for what observers are told, and when.

  /// Has `observer`, which is not kept alive, told of each change of the value at `keyPath`. One
  /// Object may be registered several times, and is told as often. Raises
  /// NSInvalidArgumentException for nil, for an empty key in the path, and for a path that leads
  /// through an Array or a Set.
  void addObserver_forKeyPath_options_context(NSObject* observer, NSString* keyPath,
                                              NSKeyValueObservingOptions options, void* context);

  /// Undoes the latest registration of `observer` for `keyPath`, of those with that context when
  /// one is given. Raises NSInvalidArgumentException when there is none.
  void removeObserver_forKeyPath(NSObject* observer, NSString* keyPath);
  void removeObserver_forKeyPath_context(NSObject* observer, NSString* keyPath, void* context);

  /// What an observer is told; override it. Raises NSInternalInconsistencyException: a change that
  /// nobody in the chain of overrides knows was not asked for.
  virtual void observeValueForKeyPath_ofObject_change_context(NSString* keyPath, NSObject* object,
                                                              NSDictionary* change, void* context);

  /// Announce a change by hand, in pairs and in one thread; a `KeyValueChange` guard is safer.
  void willChangeValueForKey(NSString* key);
  void didChangeValueForKey(NSString* key);
  void willChange_valuesAtIndexes_forKey(NSKeyValueChange kind, NSIndexSet* indexes, NSString* key);
  void didChange_valuesAtIndexes_forKey(NSKeyValueChange kind, NSIndexSet* indexes, NSString* key);

  /// The key paths whose changes are changes of `key` too. A class answers with an operation of
  /// this name, with one named `keyPathsForValuesAffecting` and the key, or by `dependsOn` in its
  /// description; this one puts the last two together. Asked when a key is first observed.
  static Ref<NSSet> keyPathsForValuesAffectingValueForKey(Class* aClass, NSString* key);

  /// Whether `setValue:forKey:` announces a change of `key`: always, unless a class has an
  /// operation of this name that says otherwise.
  static bool automaticallyNotifiesObserversForKey(Class* aClass, NSString* key);

  /// How many owners there are now; for diagnosis only. Immortal Objects answer 0x7FFFFFFF.
  std::uint32_t retainCount() const noexcept;

  /// Objects come from a pool with lists for each thread, those with a greater alignment from the
  /// global heap.
  static void* operator new(std::size_t size) { return detail::poolAllocate(size); }
  static void* operator new(std::size_t, void* place) noexcept { return place; }
  static void* operator new(std::size_t size, std::align_val_t alignment) {
    return ::operator new(size, alignment);
  }
  static void operator delete(void* block, std::size_t size) noexcept {
    detail::poolFree(block, size);
  }
  static void operator delete(void* block, std::size_t, std::align_val_t alignment) noexcept {
    ::operator delete(block, alignment);
  }

 protected:
  /// Chooses the constructor below.
  struct ImmortalTag {};

  /// An Object that is never destroyed and never counted, such as a literal.
  constexpr explicit NSObject(ImmortalTag) noexcept : count_(immortal) {}

 private:
  friend void retain(const NSObject* object) noexcept;
  friend void release(const NSObject* object) noexcept;
  friend struct detail::ObjectAccess;

  // The count is kept in steps of 2; bit 0 says that weak references exist, so one comparison
  // tells "last owner, nothing else to do". Negative counts are never changed: immortal Objects,
  // and those being destroyed. An Object retained 2^30 times turns immortal rather than wrong.
  static constexpr std::int32_t one = 2;
  static constexpr std::int32_t weakBit = 1;
  static constexpr std::int32_t immortal = INT32_MIN;
  static constexpr std::int32_t destroying = INT32_MIN / 2;

  /// The last owner has gone; `before` is the count it found.
  void destroyLast(std::int32_t before) const noexcept;

  mutable std::atomic<std::int32_t> count_{one};
  mutable std::atomic<std::uint8_t> flags_{0};
};

inline void retain(const NSObject* object) noexcept {
  if (object != nullptr && object->count_.load(std::memory_order_relaxed) >= 0)
    object->count_.fetch_add(NSObject::one, std::memory_order_relaxed);
}

inline void release(const NSObject* object) noexcept {
  if (object == nullptr) return;
  const std::int32_t count = object->count_.load(std::memory_order_acquire);
  if (count == NSObject::one) {
    // The caller's is the only reference there is, strong or weak: nobody can race with it.
    object->count_.store(NSObject::destroying, std::memory_order_relaxed);
    delete object;
  } else if (count >= 0) {
    const std::int32_t before = object->count_.fetch_sub(NSObject::one, std::memory_order_acq_rel);
    if ((before & ~NSObject::weakBit) == NSObject::one) [[unlikely]]
      object->destroyLast(before);
  }
}

namespace detail {

/// Bits of an Object's flags: it is observed; it has a record of what is observed, or had one.
inline constexpr std::uint8_t flagObserved = 1;
inline constexpr std::uint8_t flagObservationRecord = 2;

/// The run-time's own way to an Object's header.
struct ObjectAccess {
  static std::atomic<std::uint8_t>& flags(const NSObject* object) noexcept {
    return object->flags_;
  }
  static bool isImmortal(const NSObject* object) noexcept {
    const auto count = object->count_.load(std::memory_order_relaxed);
    return count < 0 && count != NSObject::destroying;
  }
  static bool isDestroying(const NSObject* object) noexcept {
    return object->count_.load(std::memory_order_relaxed) == NSObject::destroying;
  }
  static void markWeak(const NSObject* object) noexcept {
    object->count_.fetch_or(NSObject::weakBit, std::memory_order_relaxed);
  }

  /// One more owner, unless the last one has gone. The caller keeps the memory from being freed.
  static bool tryRetain(const NSObject* object) noexcept;

  /// Makes all weak references to `object` read nil.
  static void emptyWeakBox(const NSObject* object) noexcept;

  /// Ends all observing of `object`.
  static void dropObservations(const NSObject* object) noexcept;
};

/// Whether anybody observes `object`: the one test that its changes cost when nobody does.
inline bool isObserved(const NSObject* object) noexcept {
  return (ObjectAccess::flags(object).load(std::memory_order_relaxed) & flagObserved) != 0;
}

}  // namespace detail

/// `a` and `b` are the same Object, or equal by `isEqual`; nil equals nil only.
bool equal(NSObject* a, NSObject* b);

/// The description's UTF-8; "(null)" for nil.
std::string to_string(const NSObject* object);
std::ostream& operator<<(std::ostream& out, const NSObject& object);
std::ostream& operator<<(std::ostream& out, const NSObject* object);
template <class T>
std::ostream& operator<<(std::ostream& out, const Ref<T>& object) {
  return out << static_cast<const NSObject*>(object.get());
}

}  // namespace qz

/// As keys of the C++ library's hashed containers, Refs are told apart by value, like the keys of a
/// Dictionary; `==` compares identity.
template <class T>
struct std::hash<qz::Ref<T>> {
  /// 0 for nil.
  std::size_t operator()(const qz::Ref<T>& object) const { return object ? object->hash() : 0; }
};

/// By `isEqual`, in hashed containers; see std::hash.
template <class T>
struct std::equal_to<qz::Ref<T>> {
  /// Nil is equal to nil.
  bool operator()(const qz::Ref<T>& a, const qz::Ref<T>& b) const {
    return qz::equal(a.get(), b.get());
  }
};

#pragma GCC visibility pop
