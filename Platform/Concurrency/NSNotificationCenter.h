/// @file
/// The notification centre: who wants to know what, and telling them.
#pragma once

#include <functional>
#include <memory>

#include "Platform/Concurrency/NSNotification.h"

#pragma GCC visibility push(default)

namespace qz {

class NSNotificationCenter;
namespace detail {
class ObserverTable;
}

/// A function that observes a centre: it is told for as long as this Object lives.
class NSNotificationToken final : public Derives<NSNotificationToken, NSObject> {
 public:
  static void describe(ClassDescription<NSNotificationToken>& is);

  /// Made by the centre, which it keeps alive.
  NSNotificationToken(NSNotificationCenter* center, std::function<void(NSNotification*)> function);
  ~NSNotificationToken() override;

 private:
  void receive(NSNotification* notification) { function_(notification); }

  Ref<NSNotificationCenter> center_;
  std::function<void(NSNotification*)> function_;
};

/// Hands Notifications to the Objects that asked for them by name, by sender, or both.
///
///     auto center = NSNotificationCenter::defaultCenter();
///     center->addObserver_selector_name_object(window, "documentSaved:"_sel, saved, document);
///     token_ = center->observe(saved, document, [](NSNotification* n) { show(n->userInfo()); });
///     center->postNotificationName_object(saved, document);
///
/// Posting tells the observers on the posting thread, one after the other, before it returns.
///
/// - **Order.** All observers that match are told in the order in which they were added, whatever
///   they filter by.
/// - **Changes while telling.** An observer that is added meanwhile is not told of this
///   Notification. One that is removed meanwhile, or whose last owner lets go, is no longer told
///   unless it is being told already (which another thread may be doing when `removeObserver`
///   returns). An observer may post, and is told of what it posts before the rest is told of the
///   first.
/// - **Ownership.** Neither observers nor senders are kept alive: an entry whose observer or
///   sender is gone never fires again. While it is being told, an observer is kept.
/// - **Exceptions** of an observer reach the poster; the observers after it are not told.
///
/// All members may be called from any thread, also from observers being told.
class NSNotificationCenter : public Derives<NSNotificationCenter, NSObject> {
 public:
  static void describe(ClassDescription<NSNotificationCenter>& is);

  /// A centre of its own.
  NSNotificationCenter();
  ~NSNotificationCenter() override;

  /// The centre of the process, always the same.
  static Ref<NSNotificationCenter> defaultCenter();

  /// Has `observer` sent `selector` with each Notification (an operation without arguments does
  /// too) that has this name and this sender; nil stands for any. Adding the same again tells it
  /// once more. Raises NSInvalidArgumentException for a nil observer or Selector. Constant time.
  void addObserver_selector_name_object(NSObject* observer, Selector selector, NSString* name,
                                        NSObject* object);

  /// Calls `function` for as long as somebody owns the token that this answers.
  [[nodiscard]] Ref<NSNotificationToken> observe(NSString* name, NSObject* object,
                                                 std::function<void(NSNotification*)> function);

  /// Removes all of the observer's entries; nothing when it has none, and for nil.
  void removeObserver(NSObject* observer);

  /// Removes the observer's entries with this name and this sender; a nil one stands for every
  /// entry, whatever it filters by.
  void removeObserver_name_object(NSObject* observer, NSString* name, NSObject* object);

  /// Tells the observers. Raises NSInvalidArgumentException for nil.
  void postNotification(NSNotification* notification);

  /// Makes a Notification, unless nobody wants it, and posts it. Raise NSInvalidArgumentException
  /// for a nil name.
  void postNotificationName_object(NSString* name, NSObject* object);
  void postNotificationName_object_userInfo(NSString* name, NSObject* object,
                                            NSDictionary* userInfo);

 private:
  std::unique_ptr<detail::ObserverTable> table_;
};

}  // namespace qz

#pragma GCC visibility pop
