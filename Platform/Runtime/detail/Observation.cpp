#include "Platform/Runtime/detail/Observation.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/NSSet.h"
#include "Platform/Runtime/Class.h"
#include "Platform/Runtime/NSException.h"

namespace qz::detail {
namespace {

Ref<NSString> textOf(std::u16string_view units) { return NSString::stringWithCharacters(units); }

[[noreturn]] void refusePath(NSString* keyPath, const std::string& why) {
  raise(NSInvalidArgumentException, "\"" + keyPath->UTF8String() + "\" cannot be observed: " + why);
}

// Elements come and go unannounced, and one key stands for all of them.
void requireNoCollection(NSObject* object, NSString* keyPath) {
  if (isKind<NSArray>(object) || isKind<NSSet>(object))
    refusePath(keyPath, "it leads through an Object of class " +
                            std::string(object->classObject()->name()) +
                            ", whose elements are to be observed one by one");
}

}  // namespace

Observation::Observation(NSObject* root, NSString* keyPath, NSKeyValueObservingOptions wanted)
    : options(wanted), root_(root), keyPath_(as<NSString>(keyPath->copy())) {
  const std::u16string_view path = keyPath_->view();
  if (path.empty()) refusePath(keyPath_, "it is empty");
  // What an operator computes changes with what stands before it.
  const std::size_t operation = path.find(u"@");
  hasOperator_ =
      operation != std::u16string_view::npos && (operation == 0 || path[operation - 1] == u'.');
  const std::u16string_view followed = hasOperator_ ? path.substr(0, operation) : path;
  levelCount_ = static_cast<std::uint32_t>(std::ranges::count(followed, u'.')) + !hasOperator_;
  if (levelCount_ == 0) refusePath(keyPath_, "it begins with an operator");
  if (path.find(u'.') == std::u16string_view::npos) {
    first_.key = keyPath_;
    return;
  }
  if (levelCount_ > 1) deeper_ = std::make_unique<Level[]>(levelCount_ - 1);
  std::u16string_view rest = path;
  for (std::uint32_t i = 0; i < levelCount_; ++i) {
    const std::size_t dot = std::min(rest.find(u'.'), rest.size());
    if (dot == 0) refusePath(keyPath_, "a key in it is empty");
    level(i).key = textOf(rest.substr(0, dot));
    rest.remove_prefix(std::min(dot + 1, rest.size()));
  }
}

Observation::~Observation() = default;

void Observation::tellObserver(NSObject* observer, void* context) {
  observer_ = WeakRef<NSObject>(observer);
  observerAddress_ = observer;
  context_ = context;
}

bool Observation::isFor(const NSObject* observer, const NSString* keyPath) const {
  return observerAddress_ == observer && isActive() &&
         (keyPath_ == keyPath || keyPath_->isEqualToString(const_cast<NSString*>(keyPath))) &&
         // Another Object may have come to the address of one that is gone.
         (ObjectAccess::isDestroying(observer) || observer_.load() == observer);
}

struct Observation::Place {
  Ref<NSObject> object;
  std::shared_ptr<const Dependencies> dependencies{};
  std::vector<Ref<Observation>> affecting{};

  void end() const noexcept {
    for (Observation* each : affecting) each->end();
  }
};

namespace {

/// The keys for which this thread is looking up dependencies, one inside the other: where these
/// come round to the beginning, as in a ring of Objects, all is listened to already.
struct Gathering {
  Gathering(const NSObject* forObject, const NSString* forKey)
      : object(forObject), key(forKey), outer(std::exchange(innermost, this)) {}
  ~Gathering() { innermost = outer; }
  Gathering(const Gathering&) = delete;
  Gathering& operator=(const Gathering&) = delete;

  bool isRound() const {
    for (const Gathering* each = outer; each != nullptr; each = each->outer)
      if (each->object == object && each->key->isEqualToString(const_cast<NSString*>(key)))
        return true;
    return false;
  }

  const NSObject* object;
  const NSString* key;
  Gathering* outer;
  static thread_local Gathering* innermost;
};
thread_local Gathering* Gathering::innermost = nullptr;

}  // namespace

Observation::Place Observation::placeFor(std::uint32_t index, Ref<NSObject> object) {
  Place place{.object = std::move(object)};
  if (!place.object) return place;
  requireNoCollection(place.object, keyPath_);
  NSString* key = level(index).key;
  place.dependencies = dependenciesOf(place.object, key);
  if (place.dependencies->paths.empty()) return place;
  const Gathering gathering(place.object, key);
  if (gathering.isRound()) return place;
  try {
    for (NSString* path : place.dependencies->paths) {
      auto affecting = make<Observation>(place.object, path, 0);
      affecting->tellDependents(key);
      affecting->start();
      place.affecting.push_back(std::move(affecting));
    }
  } catch (...) {
    place.end();
    throw;
  }
  return place;
}

void Observation::start() {
  const Ref<NSObject> root = root_.load();
  if (!root) return;
  Place place = placeFor(0, root);
  first_.dependencies = std::move(place.dependencies);
  first_.affecting = std::move(place.affecting);
  listen(0, root);
  if (levelCount_ == 1) return;
  try {
    follow(1);
  } catch (...) {
    end();
    throw;
  }
}

void Observation::follow(std::uint32_t first) {
  if (first >= levelCount_) return;
  const std::uint64_t generation = ++generation_;
  Ref<NSObject> object;
  if (first == 1) {
    object = root_.load();
  } else {
    std::lock_guard lock(mutex_);
    object = level(first - 1).object.load();
  }

  // Reading runs the application's code, and so does releasing: both without a lock.
  std::vector<Place> places;
  std::vector<Subscriber> released;
  std::vector<Ref<NSObject>> left;
  try {
    for (std::uint32_t i = first; i < levelCount_; ++i) {
      if (object) object = object->valueForKey(level(i - 1).key);
      places.push_back(placeFor(i, object));
    }
  } catch (...) {
    for (const Place& place : places) place.end();
    throw;
  }
  {
    std::lock_guard lock(mutex_);
    // A walk that began later has seen what this one saw, or something newer.
    if (generation == generation_.load() && isActive()) {
      for (std::uint32_t i = first; i < levelCount_; ++i) {
        Level& at = level(i);
        Place& place = places[i - first];
        NSObject* before = left.emplace_back(at.object.load());
        if (place.object == before) continue;  // what it has nested stays, the new ones end
        if (before != nullptr) stopListening(i, before, released);
        at.object = WeakRef<NSObject>(place.object);
        at.dependencies = place.dependencies;
        at.affecting.swap(place.affecting);
        if (place.object) listen(i, place.object);
      }
    }
  }
  for (const Place& place : places) place.end();
}

void Observation::listen(std::uint32_t index, NSObject* object) {
  Level& at = level(index);
  ObservedObject& record = observedObject(object);
  std::lock_guard lock(record.mutex);
  record.findOrAdd(at.key).subscribers.push_back({this, index});
  for (NSString* key : at.dependencies->keys)
    record.findOrAdd(key).subscribers.push_back({this, index});
  record.subscriptions += static_cast<std::uint32_t>(1 + at.dependencies->keys.size());
  record.updateFlag();
}

void Observation::stopListening(std::uint32_t index, NSObject* object,
                                std::vector<Subscriber>& released) {
  Level& at = level(index);
  ObservedObject* record = findObserved(object);
  if (record == nullptr) return;
  std::lock_guard lock(record->mutex);
  const auto forget = [&](NSString* key) {
    ObservedKey* known = record->find(key);
    if (known == nullptr) return;
    // Those who came last go first, more often than not.
    auto& all = known->subscribers;
    for (auto each = all.rbegin(); each != all.rend(); ++each) {
      if (each->observation != this || each->level != index) continue;
      released.push_back(std::move(*each));
      all.erase(std::next(each).base());
      --record->subscriptions;
      return;
    }
  };
  forget(at.key);
  for (NSString* key : at.dependencies->keys) forget(key);
  record->updateFlag();
}

void Observation::end() noexcept {
  if (!active_.exchange(false)) return;
  const Ref<Observation> keep(this);
  std::vector<Subscriber> released;
  std::vector<Ref<Observation>> affecting;
  std::vector<Ref<NSObject>> left;
  if (const Ref<NSObject> root = root_.load()) stopListening(0, root, released);
  affecting.swap(first_.affecting);
  if (levelCount_ > 1) {
    std::lock_guard lock(mutex_);
    for (std::uint32_t i = 1; i < levelCount_; ++i) {
      Level& at = level(i);
      if (NSObject* object = left.emplace_back(at.object.load()))
        stopListening(i, object, released);
      std::ranges::move(at.affecting, std::back_inserter(affecting));
      at.affecting.clear();
    }
  }
  for (Observation* each : affecting) each->end();
}

}  // namespace qz::detail
