/// @file
/// Private: one request to be told of changes.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

#include "Platform/Runtime/NSKeyValueObserving.h"
#include "Platform/Runtime/WeakRef.h"
#include "Platform/Runtime/detail/ObservedObject.h"

namespace qz::detail {

/// What `addObserver…` and `observe` make: the observer, and a level for each key of the path,
/// which listens to that key of the Object that the keys before it lead to.
///
/// Never seen by applications; an Object for the sake of its count.
class Observation final : public NSObject {
 public:
  struct Level {
    Ref<NSString> key;
    WeakRef<NSObject> object;  // of all but the first: guarded by the Observation's mutex
    std::shared_ptr<const Dependencies> dependencies;  // with `object`
    std::vector<Ref<Observation>> affecting;           // with `object`: paths the key depends on
    std::atomic<const void*> changingIn{nullptr};  ///< The thread in which a change is under way.
  };

  /// Cuts the path; raises NSInvalidArgumentException for an empty key.
  Observation(NSObject* root, NSString* keyPath, NSKeyValueObservingOptions wanted);
  ~Observation() override;

  // Who is told: an Object, a function, or those who observe a key that depends on this path.
  void tellObserver(NSObject* observer, void* context);
  void tellFunction(KeyValueObserver function) { function_ = std::move(function); }
  void tellDependents(NSString* key) { dependentKey_ = key; }

  /// Listens at all levels. What reading the path raises passes through, and nothing is left.
  void start();

  /// Stops for good; any thread, any number of times.
  void end() noexcept;

  /// Has the levels from `first` on listen to the Objects that the path leads to now.
  void follow(std::uint32_t first);

  bool isActive() const noexcept { return active_.load(std::memory_order_acquire); }
  bool isFor(const NSObject* observer, const NSString* keyPath) const;

  std::uint32_t levels() const noexcept { return levelCount_; }
  Level& level(std::uint32_t index) noexcept { return index == 0 ? first_ : deeper_[index - 1]; }
  /// The thread in which a change is under way that the observer will be told of.
  std::atomic<const void*>& changingIn() noexcept { return changingIn_; }
  /// The path goes on with an operator such as "@count" behind the last level.
  bool hasOperator() const noexcept { return hasOperator_; }
  bool isLast(std::uint32_t index) const noexcept { return index + 1 == levelCount_; }

  Ref<NSObject> root() const { return root_.load(); }
  NSString* keyPath() const noexcept { return keyPath_; }
  NSString* dependentKey() const noexcept { return dependentKey_; }
  const KeyValueObserver& function() const noexcept { return function_; }
  Ref<NSObject> observer() const { return observer_.load(); }
  void* context() const noexcept { return context_; }

  const NSKeyValueObservingOptions options;

 private:
  /// What a level needs to listen to an Object, put together without a lock.
  struct Place;
  Place placeFor(std::uint32_t level, Ref<NSObject> object);

  /// Enters a level in the record of an Object, and takes it out; the first returns what it had.
  void listen(std::uint32_t level, NSObject* object);
  void stopListening(std::uint32_t level, NSObject* object, std::vector<Subscriber>& released);

  WeakRef<NSObject> root_;
  WeakRef<NSObject> observer_;
  const NSObject* observerAddress_ = nullptr;
  void* context_ = nullptr;
  std::atomic<bool> active_{true};
  std::atomic<const void*> changingIn_{nullptr};
  std::uint32_t levelCount_ = 1;
  bool hasOperator_ = false;
  Ref<NSString> keyPath_;
  Ref<NSString> dependentKey_;
  KeyValueObserver function_;
  Level first_;
  std::unique_ptr<Level[]> deeper_;
  std::mutex mutex_;  // guards what the deeper levels listen to; records' mutexes come after it
  std::atomic<std::uint64_t> generation_{0};  // of the walks along the path; the newest one wins
};

}  // namespace qz::detail
