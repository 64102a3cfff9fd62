#include "Platform/Concurrency/NSNotificationCenter.h"

#include "Platform/Collections/NSDictionary.h"
#include "Platform/Concurrency/detail/ObserverTable.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/Send.h"

namespace qz {

namespace {

void tell(const detail::Recipients& recipients, NSNotification* notification, NSObject* sender) {
  if (recipients.only)
    recipients.only->performSelector_withObject(recipients.selector, notification);
  for (const auto& entry : recipients.several) {
    if (!entry->wanted.load(std::memory_order_acquire)) continue;
    Ref<NSObject> observer = entry->observer.load();
    if (observer && entry->isFrom(sender))
      observer->performSelector_withObject(entry->selector, notification);
  }
}

}  // namespace

NSNotificationToken::NSNotificationToken(NSNotificationCenter* center,
                                         std::function<void(NSNotification*)> function)
    : center_(center), function_(std::move(function)) {}

NSNotificationToken::~NSNotificationToken() { center_->removeObserver(this); }

NSNotificationCenter::NSNotificationCenter() : table_(std::make_unique<detail::ObserverTable>()) {}
NSNotificationCenter::~NSNotificationCenter() = default;

Ref<NSNotificationCenter> NSNotificationCenter::defaultCenter() {
  static NSNotificationCenter* const center = make<NSNotificationCenter>().leak();
  return Ref<NSNotificationCenter>(center);
}

void NSNotificationCenter::addObserver_selector_name_object(NSObject* observer, Selector selector,
                                                            NSString* name, NSObject* object) {
  if (observer == nullptr || !selector)
    detail::raise(NSInvalidArgumentException,
                  "addObserver:selector:name:object: needs an observer and a Selector");
  table_->add(observer, selector, name, object);
}

Ref<NSNotificationToken> NSNotificationCenter::observe(
    NSString* name, NSObject* object, std::function<void(NSNotification*)> function) {
  if (!function)
    detail::raise(NSInvalidArgumentException, "a notification centre needs a function to call");
  auto token = make<NSNotificationToken>(this, std::move(function));
  table_->add(token, "receive:"_sel, name, object);
  return token;
}

void NSNotificationCenter::removeObserver(NSObject* observer) {
  table_->remove(observer, nullptr, nullptr);
}

void NSNotificationCenter::removeObserver_name_object(NSObject* observer, NSString* name,
                                                      NSObject* object) {
  table_->remove(observer, name, object);
}

void NSNotificationCenter::postNotification(NSNotification* notification) {
  if (notification == nullptr)
    detail::raise(NSInvalidArgumentException, "nil cannot be posted as a Notification");
  NSObject* sender = notification->object_;
  tell(table_->recipients(notification->name_, sender), notification, sender);
}

void NSNotificationCenter::postNotificationName_object(NSString* name, NSObject* object) {
  postNotificationName_object_userInfo(name, object, nullptr);
}

void NSNotificationCenter::postNotificationName_object_userInfo(NSString* name, NSObject* object,
                                                                NSDictionary* userInfo) {
  if (name == nullptr)
    detail::raise(NSInvalidArgumentException, "a Notification needs a name, not nil");
  const detail::Recipients recipients = table_->recipients(name, object);
  if (!recipients.isEmpty()) tell(recipients, make<NSNotification>(name, object, userInfo), object);
}

void NSNotificationToken::describe(ClassDescription<NSNotificationToken>& is) {
  is.named("NSNotificationToken").method<&NSNotificationToken::receive>("receive:");
}

void NSNotificationCenter::describe(ClassDescription<NSNotificationCenter>& is) {
  using Self = NSNotificationCenter;
  is.named("NSNotificationCenter")
      .classMethod<&Self::defaultCenter>("defaultCenter")
      .method<&Self::addObserver_selector_name_object>("addObserver:selector:name:object:")
      .method<&Self::removeObserver>("removeObserver:")
      .method<&Self::removeObserver_name_object>("removeObserver:name:object:")
      .method<&Self::postNotification>("postNotification:")
      .method<&Self::postNotificationName_object>("postNotificationName:object:")
      .method<&Self::postNotificationName_object_userInfo>("postNotificationName:object:userInfo:");
}

}  // namespace qz
