#include "Platform/Concurrency/detail/ObserverTable.h"

#include <algorithm>
#include <array>

namespace qz::detail {

namespace {
bool earlier(const ObserverEntryRef& a, const ObserverEntryRef& b) { return a->order < b->order; }
}  // namespace

void ObserverTable::add(NSObject* observer, Selector selector, NSString* name, NSObject* sender) {
  Ref<NSString> kept = name == nullptr ? nullptr : NSString::stringWithString(name);
  auto entry = std::make_shared<ObserverEntry>(observer, selector, std::move(kept), sender);
  Entries removed;
  std::vector<Ref<NSObject>> alive;
  std::lock_guard lock(mutex_);
  if (byObserver_.size() >= sweepAt_) alive = sweep(removed);
  entry->order = nextOrder_++;
  // The first entry under a filter lends the key its name, and the key is renewed with it.
  byFilter_[{entry->name, sender}].push_back(entry);
  byObserver_.emplace(observer, entry);
  withoutName_ += entry->name ? 0 : 1;
  withSender_ += sender == nullptr ? 0 : 1;
}

void ObserverTable::remove(const NSObject* observer, NSString* name, const NSObject* sender) {
  Entries removed;
  std::lock_guard lock(mutex_);
  auto [it, end] = byObserver_.equal_range(observer);
  while (it != end) {
    const ObserverEntryRef& entry = it->second;
    const bool named = name == nullptr || (entry->name && entry->name->isEqualToString(name));
    const bool from = sender == nullptr || entry->senderAddress == sender;
    if (named && from) {
      takeOut(entry, removed);
      it = byObserver_.erase(it);
    } else {
      ++it;
    }
  }
}

// Out of the filter's list, not of the observer's. What it drops goes to `removed`.
void ObserverTable::takeOut(const ObserverEntryRef& entry, Entries& removed) {
  entry->wanted.store(false, std::memory_order_release);
  withoutName_ -= entry->name ? 0 : 1;
  withSender_ -= entry->senderAddress == nullptr ? 0 : 1;
  auto found = byFilter_.find({entry->name, entry->senderAddress});
  Entries& entries = found->second;
  auto place = std::lower_bound(entries.begin(), entries.end(), entry, &earlier);
  removed.push_back(std::move(*place));
  entries.erase(place);
  if (entries.empty()) {
    byFilter_.erase(found);
  } else if (found->first.name == entry->name.get() && entries.front()->name != entry->name) {
    auto node = byFilter_.extract(found);
    node.key().name = entries.front()->name;
    byFilter_.insert(std::move(node));
  }
}

// Drops the entries whose observer or sender is gone. Answers those that it had to keep alive to
// see: they are let go when the lock is no longer held, because that may end them.
std::vector<Ref<NSObject>> ObserverTable::sweep(Entries& removed) {
  std::vector<Ref<NSObject>> alive;
  for (auto it = byObserver_.begin(); it != byObserver_.end();) {
    const ObserverEntry& entry = *it->second;
    alive.push_back(entry.observer.load());
    bool gone = !alive.back();
    if (!gone && entry.senderAddress != nullptr) {
      alive.push_back(entry.sender.load());
      gone = !alive.back();
    }
    if (gone) {
      takeOut(it->second, removed);
      it = byObserver_.erase(it);
    } else {
      ++it;
    }
  }
  sweepAt_ = 2 * byObserver_.size() + 64;
  return alive;
}

Recipients ObserverTable::recipients(NSString* name, NSObject* sender) {
  Recipients found;
  std::array<const Entries*, 4> lists;
  std::size_t count = 0;
  const auto look = [&](NSString* itsName, const NSObject* itsSender) {
    const auto place = byFilter_.find({itsName, itsSender});
    if (place != byFilter_.end()) lists[count++] = &place->second;
  };
  std::lock_guard lock(mutex_);
  look(name, nullptr);
  if (withoutName_ != 0) look(nullptr, nullptr);
  if (withSender_ != 0 && sender != nullptr) {
    look(name, sender);
    if (withoutName_ != 0) look(nullptr, sender);
  }
  if (count == 1 && lists[0]->size() == 1) {
    const ObserverEntry& entry = *lists[0]->front();
    if (!entry.isFrom(sender)) return found;  // which the caller keeps, so this releases nothing
    found.only = entry.observer.load();
    found.selector = entry.selector;
    return found;
  }
  for (std::size_t i = 0; i < count; ++i)
    found.several.insert(found.several.end(), lists[i]->begin(), lists[i]->end());
  if (count > 1) std::sort(found.several.begin(), found.several.end(), &earlier);
  return found;
}

}  // namespace qz::detail
