/// @file
/// Private: the entries of a notification centre.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Platform/Runtime/WeakRef.h"
#include "Platform/Values/NSString.h"

namespace qz::detail {

/// One observer's wish. Kept by the table, and by whoever is telling it.
struct ObserverEntry {
  ObserverEntry(NSObject* itsObserver, Selector itsSelector, Ref<NSString> itsName,
                NSObject* itsSender)
      : observer(itsObserver),
        observerAddress(itsObserver),
        selector(itsSelector),
        name(std::move(itsName)),
        sender(itsSender),
        senderAddress(itsSender) {}

  std::uint64_t order = 0;
  WeakRef<NSObject> observer;
  const NSObject* observerAddress;  // to find it by; never followed
  Selector selector;
  Ref<NSString> name;  // null: any
  WeakRef<NSObject> sender;
  const NSObject* senderAddress;  // null: any; never followed
  std::atomic<bool> wanted{true};

  /// Whether the sender that was asked for still is the one at that address.
  bool isFrom(NSObject* object) const {
    return senderAddress == nullptr || sender.load().get() == object;
  }
};

using ObserverEntryRef = std::shared_ptr<ObserverEntry>;

/// Those to be told.
struct Recipients {
  bool isEmpty() const noexcept { return !only && several.empty(); }

  Ref<NSObject> only;  // the usual case: a single one, which needs no entry once it is alive
  Selector selector;   // of `only`
  std::vector<ObserverEntryRef> several;  // in order
};

/// Entries by name and sender, and by observer. Any thread.
///
/// No Object is released and no foreign code runs while the lock is held.
class ObserverTable {
 public:
  void add(NSObject* observer, Selector selector, NSString* name, NSObject* sender);

  /// Null stands for "whatever it is".
  void remove(const NSObject* observer, NSString* name, const NSObject* sender);

  Recipients recipients(NSString* name, NSObject* sender);

 private:
  /// What an entry filters by; null for any.
  struct Filter {
    NSString* name;  // kept by the entries under it
    const NSObject* sender;
    bool operator==(const Filter& other) const {
      return sender == other.sender &&
             (name == other.name ||
              (name != nullptr && other.name != nullptr && name->isEqualToString(other.name)));
    }
  };
  struct FilterHash {
    std::size_t operator()(const Filter& filter) const {
      const auto sender = reinterpret_cast<std::uintptr_t>(filter.sender) >> 4;
      return (filter.name == nullptr ? 0 : filter.name->hash()) ^ (sender * 0x9E3779B97F4A7C15u);
    }
  };
  using Entries = std::vector<ObserverEntryRef>;
  using ByObserver = std::unordered_multimap<const NSObject*, ObserverEntryRef>;

  void takeOut(const ObserverEntryRef& entry, Entries& removed);
  std::vector<Ref<NSObject>> sweep(Entries& removed);

  std::mutex mutex_;
  std::unordered_map<Filter, Entries, FilterHash> byFilter_;
  ByObserver byObserver_;
  std::uint64_t nextOrder_ = 0;
  std::size_t withoutName_ = 0;  // how many entries take any name
  std::size_t withSender_ = 0;   // how many filter by sender
  std::size_t sweepAt_ = 64;     // entries at which to look for dead ones
};

}  // namespace qz::detail
