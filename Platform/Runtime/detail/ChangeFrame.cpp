// The life of a change: who is concerned is noted before it is made, and told after it.
#include "Platform/Runtime/detail/ChangeFrame.h"

#include <exception>
#include <memory>
#include <utility>

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/detail/ArrayBuilder.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/detail/ChangeDictionary.h"
#include "Platform/Values/NSNull.h"

namespace qz::detail {

/// The changes that a thread has under way, and the frames it keeps for the next ones. It needs no
/// destructor, so that changes may be announced to the very end of the thread.
struct ChangeStack {
  ChangeFrame* top = nullptr;
  ChangeFrame* spare = nullptr;
  bool isEnding = false;  ///< Nobody will free what is kept.

  void push(ChangeFrame* frame) { frame->below = std::exchange(top, frame); }

  void unlink(ChangeFrame* frame) {
    ChangeFrame** at = &top;
    while (*at != frame) at = &(*at)->below;
    *at = frame->below;
  }

  void giveBack(ChangeFrame* frame) noexcept {
    frame->pending.clear();
    frame->object = nullptr;
    frame->key = nullptr;
    frame->indexes = nullptr;
    if (isEnding)
      delete frame;
    else
      frame->below = std::exchange(spare, frame);
  }
};

namespace {

constinit thread_local ChangeStack changes;

/// Notes that a change is under way in this thread; false when one is already.
bool mark(std::atomic<const void*>& place, const ChangeStack* stack) noexcept {
  if (place.load(std::memory_order_relaxed) == stack) return false;
  place.store(stack, std::memory_order_relaxed);
  return true;
}

void unmark(ChangeFrame& frame) noexcept {
  for (Pending& each : frame.pending) {
    each.observation->level(each.level).changingIn.store(nullptr, std::memory_order_relaxed);
    if (each.isTold) each.observation->changingIn().store(nullptr, std::memory_order_relaxed);
  }
}

/// Frees the frames of a thread when it ends.
struct ChangeSweeper {
  ~ChangeSweeper() {
    changes.isEnding = true;
    for (ChangeFrame** list : {&changes.top, &changes.spare})
      while (ChangeFrame* frame = *list) {
        *list = frame->below;
        unmark(*frame);  // another thread may come to have its stack of changes here
        delete frame;
      }
  }
};

ChangeFrame* takeFrame(ChangeStack& stack) {
  if (ChangeFrame* frame = stack.spare) {
    stack.spare = std::exchange(frame->below, nullptr);
    return frame;
  }
  if (!stack.isEnding) {
    thread_local ChangeSweeper sweeper;
    static_cast<void>(sweeper);
  }
  return new ChangeFrame{.stack = &stack};
}

/// Notes those who listen to `key` of `object`, unless a change around this one has them already.
void collect(ChangeFrame& frame, NSObject* object, NSString* key, bool isFrameKey) {
  ObservedObject* record = findObserved(object);
  if (record == nullptr) return;
  const std::size_t first = frame.pending.size();
  {
    std::lock_guard lock(record->mutex);
    if (isFrameKey && frame.isByHand) ++record->openChanges;
    const ObservedKey* known = record->find(key);
    if (known == nullptr) return;
    for (const Subscriber& each : known->subscribers) {
      Observation::Level& level = each.observation->level(each.level);
      if (!mark(level.changingIn, frame.stack)) continue;
      // An Object may stand on a path more than once.
      const bool isTold = mark(each.observation->changingIn(), frame.stack);
      const bool isDirect =
          isFrameKey && (level.key == known->key || level.key->isEqualToString(known->key));
      frame.pending.push_back({each.observation, each.level, isTold, isDirect,
                               isFrameKey ? nullptr : Ref<NSObject>(object), nullptr});
    }
  }
  for (std::size_t i = first; i < frame.pending.size(); ++i) {
    if (frame.pending[i].observation->dependentKey() == nullptr) continue;
    const Ref<Observation> observation = frame.pending[i].observation;
    NSString* dependent = observation->dependentKey();
    if (const Ref<NSObject> root = observation->root()) collect(frame, root, dependent, false);
  }
}

Ref<NSObject> elementsAt(NSObject* value, NSIndexSet* indexes) {
  auto* array = as<NSArray>(value);
  ArrayBuilder found;
  if (array != nullptr && indexes != nullptr)
    for (const NSRange range : indexes->ranges())
      for (std::uint32_t i = 0; i < range.length; ++i)
        found.take(array->objectAtIndex(range.location + i));
  return found.finish();
}

/// The Object that `pending` observes: the begin of its path, which may not lead over the changing
/// Object any more. `kept` owns it when nothing else does.
NSObject* observedIn(const ChangeFrame& frame, const Pending& pending, Ref<NSObject>& kept) {
  if (pending.level > 0) return kept = pending.observation->root();
  return pending.object ? pending.object : frame.object;
}

/// Reads what the observers of a change want to know, once for all that want the same.
class Values {
 public:
  Values(const ChangeFrame& frame, NSKeyValueChange without) : frame_(frame), without_(without) {}

  /// The value that `pending` observes, with Null for nil; nil when a change of this kind has none.
  Ref<NSObject> of(const Pending& pending) {
    const bool isIndexed = isIndexedFor(frame_, pending);
    if (isIndexed && frame_.kind == without_) return nullptr;
    Observation& observation = *pending.observation;
    Ref<NSObject> kept;
    NSObject* object = observedIn(frame_, pending, kept);
    if (object == nullptr) return NSNull::null();
    NSString* path = observation.keyPath();
    if (value_ && object == object_ && isIndexed == isIndexed_ &&
        (path == path_ || path->isEqualToString(path_)))
      return value_;
    Ref<NSObject> value = observation.levels() == 1 && !observation.hasOperator()
                              ? object->valueForKey(path)
                              : object->valueForKeyPath(path);
    if (isIndexed) value = elementsAt(value, frame_.indexes);
    if (!value) value = NSNull::null();
    if (frame_.pending.size() == 1) return value;  // nobody else will want it
    object_ = Ref<NSObject>(object);
    path_ = path;
    isIndexed_ = isIndexed;
    return value_ = std::move(value);
  }

  /// Only those who observe the changed key itself are told of elements.
  static bool isIndexedFor(const ChangeFrame& frame, const Pending& pending) {
    return frame.kind != NSKeyValueChangeSetting && pending.isDirect &&
           pending.observation->isLast(pending.level) && !pending.observation->hasOperator();
  }

 private:
  const ChangeFrame& frame_;
  const NSKeyValueChange without_;  // the kind of indexed change that has no such value
  Ref<NSObject> object_;
  NSString* path_ = nullptr;
  bool isIndexed_ = false;
  Ref<NSObject> value_;
};

NSObject* withoutNull(NSObject* value) { return value == NSNull::null() ? nullptr : value; }

/// Hands a change to observers. Those that want the same share one Dictionary.
class Teller {
 public:
  void tell(Observation& observation, NSObject* root, ChangeDictionary::Entries entries) {
    if (const KeyValueObserver& function = observation.function()) {
      function({root, observation.keyPath(), entries.kind, withoutNull(entries.oldValue),
                withoutNull(entries.newValue), entries.indexes, entries.isPrior});
      return;
    }
    const Ref<NSObject> observer = observation.observer();
    if (!observer) return observation.end();  // it is gone
    if (!dictionary_ || !isSame(entries)) {
      last_ = {entries.kind, entries.newValue, entries.oldValue, entries.indexes, entries.isPrior};
      dictionary_ = make<ChangeDictionary>(std::move(entries));
    }
    observer->observeValueForKeyPath_ofObject_change_context(observation.keyPath(), root,
                                                             dictionary_, observation.context());
  }

 private:
  struct Last {
    NSKeyValueChange kind = NSKeyValueChangeSetting;
    const NSObject* newValue = nullptr;
    const NSObject* oldValue = nullptr;
    const NSObject* indexes = nullptr;
    bool isPrior = false;
  };

  bool isSame(const ChangeDictionary::Entries& entries) const {
    return last_.kind == entries.kind && last_.newValue == entries.newValue.get() &&
           last_.oldValue == entries.oldValue.get() && last_.indexes == entries.indexes.get() &&
           last_.isPrior == entries.isPrior;
  }

  Last last_;
  Ref<NSDictionary> dictionary_;  // keeps what `last_` points to
};

/// Tells one of those who are pending; nothing to somebody who was removed meanwhile.
void tellPending(Teller& teller, const ChangeFrame& frame, Pending& pending, Values* newValues) {
  Observation& observation = *pending.observation;
  if (!pending.isTold || !observation.isActive() || observation.dependentKey() != nullptr) return;
  Ref<NSObject> kept;
  NSObject* const root = observedIn(frame, pending, kept);
  if (root == nullptr) return;
  const bool isIndexed = Values::isIndexedFor(frame, pending);
  const bool isPrior = newValues == nullptr;
  ChangeDictionary::Entries entries{
      .kind = isIndexed ? frame.kind : NSKeyValueChangeSetting,
      .oldValue = isPrior ? pending.oldValue : std::move(pending.oldValue),
      .indexes = isIndexed ? frame.indexes : nullptr,
      .isPrior = isPrior};
  if (!isPrior && (observation.options & NSKeyValueObservingOptionNew) != 0)
    entries.newValue = newValues->of(pending);
  teller.tell(observation, root, std::move(entries));
}

void readOldValues(ChangeFrame& frame) {
  Values values(frame, NSKeyValueChangeInsertion);
  for (Pending& each : frame.pending)
    if (each.isTold && (each.observation->options & NSKeyValueObservingOptionOld) != 0)
      each.oldValue = values.of(each);
}

void tellPrior(ChangeFrame& frame) {
  Teller teller;
  for (std::size_t i = 0; i < frame.pending.size(); ++i)
    if ((frame.pending[i].observation->options & NSKeyValueObservingOptionPrior) != 0)
      tellPending(teller, frame, frame.pending[i], nullptr);
}

/// One change by hand less; an Object that nobody observes any more goes back to paying one test.
void closeByHand(const ChangeFrame& frame) {
  if (!frame.isByHand) return;
  ObservedObject* record = findObserved(frame.object);
  if (record == nullptr) return;
  std::lock_guard lock(record->mutex);
  if (record->openChanges > 0 && --record->openChanges == 0) record->updateFlag();
}

}  // namespace

ChangeFrame* beginChange(NSObject* object, NSString* key, NSKeyValueChange kind,
                         NSIndexSet* indexes, bool isByHand) {
  ChangeStack& stack = changes;
  ChangeFrame* frame = takeFrame(stack);
  frame->object = object;
  frame->key = key;
  frame->kind = kind;
  frame->indexes = indexes;
  frame->isByHand = isByHand;
  stack.push(frame);
  try {
    collect(*frame, object, key, true);
    readOldValues(*frame);
    tellPrior(*frame);
  } catch (...) {
    unmark(*frame);
    stack.unlink(frame);
    closeByHand(*frame);
    stack.giveBack(frame);
    throw;
  }
  return frame;
}

void endChange(ChangeFrame* frame) {
  ChangeStack& stack = *frame->stack;
  stack.unlink(frame);
  unmark(*frame);
  closeByHand(*frame);

  std::exception_ptr raised;
  const auto guarded = [&raised](auto action) {
    try {
      action();
    } catch (...) {
      if (!raised) raised = std::current_exception();
    }
  };
  for (Pending& each : frame->pending)
    if (!each.observation->isLast(each.level) && each.observation->isActive())
      guarded([&] { each.observation->follow(each.level + 1); });
  {
    Values values(*frame, NSKeyValueChangeRemoval);
    Teller teller;
    for (Pending& each : frame->pending)
      guarded([&] { tellPending(teller, *frame, each, &values); });
  }
  stack.giveBack(frame);
  if (raised) std::rethrow_exception(raised);
}

void endChangeByHand(NSObject* object, NSString* key) {
  for (ChangeFrame* frame = changes.top; frame != nullptr; frame = frame->below)
    if (frame->isByHand && frame->object == object && frame->key->isEqualToString(key))
      return endChange(frame);
}

void tellInitialValue(Observation& observation, NSObject* root) {
  ChangeDictionary::Entries entries;
  if ((observation.options & NSKeyValueObservingOptionNew) != 0) {
    entries.newValue = root->valueForKeyPath(observation.keyPath());
    if (!entries.newValue) entries.newValue = NSNull::null();
  }
  Teller().tell(observation, root, std::move(entries));
}

}  // namespace qz::detail
