#include "Platform/Concurrency/NSNotification.h"

#include "Platform/Collections/NSDictionary.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSString.h"

namespace qz {

NSNotification::NSNotification(NSString* name, NSObject* object, NSDictionary* userInfo)
    : object_(object) {
  if (name == nullptr)
    detail::raise(NSInvalidArgumentException, "a Notification needs a name, not nil");
  name_ = NSString::stringWithString(name);
  if (userInfo != nullptr) userInfo_ = as<NSDictionary>(userInfo->copy());
}

NSNotification::~NSNotification() = default;

Ref<NSNotification> NSNotification::notificationWithName_object(NSString* name, NSObject* object) {
  return make<NSNotification>(name, object);
}

Ref<NSNotification> NSNotification::notificationWithName_object_userInfo(NSString* name,
                                                                         NSObject* object,
                                                                         NSDictionary* userInfo) {
  return make<NSNotification>(name, object, userInfo);
}

Ref<NSNotification> NSNotification::initWithName_object_userInfo(NSString* name, NSObject* object,
                                                                 NSDictionary* userInfo) {
  return make<NSNotification>(name, object, userInfo);
}

Ref<NSString> NSNotification::name() const { return name_; }
Ref<NSDictionary> NSNotification::userInfo() const { return userInfo_; }

bool NSNotification::isEqual(NSObject* other) const {
  if (this == other) return true;
  const auto* notification = as<NSNotification>(other);
  return notification != nullptr && name_->isEqualToString(notification->name_) &&
         object_ == notification->object_ && equal(userInfo_, notification->userInfo_);
}

std::size_t NSNotification::hash() const { return name_->hash(); }

Ref<NSString> NSNotification::description() const {
  std::string text = name_->UTF8String() + " {";
  if (object_) text += "object = " + to_string(object_);
  if (object_ && userInfo_) text += "; ";
  if (userInfo_) text += "userInfo = " + to_string(userInfo_);
  return NSString::stringWithUTF8String(text + "}");
}

Ref<NSObject> NSNotification::copy() const {
  return Ref<NSObject>(const_cast<NSNotification*>(this));
}

void NSNotification::describe(ClassDescription<NSNotification>& is) {
  using Self = NSNotification;
  is.named("NSNotification")
      .classMethod<&Self::notificationWithName_object>("notificationWithName:object:")
      .classMethod<&Self::notificationWithName_object_userInfo>(
          "notificationWithName:object:userInfo:")
      .initializer<&Self::initWithName_object_userInfo>("initWithName:object:userInfo:")
      .property<&Self::name>("name")
      .property<&Self::object>("object")
      .property<&Self::userInfo>("userInfo");
}

}  // namespace qz
