/// @file
/// Notifications: what is told to whoever wants to know.
#pragma once

#include "Platform/Runtime/Derives.h"

#pragma GCC visibility push(default)

namespace qz {

class NSDictionary;
class NSString;

/// A name, the Object that sends it, and a Dictionary of user information.
///
/// Immutable; keeps its parts alive. May be read from any number of threads.
class NSNotification : public Derives<NSNotification, NSObject> {
 public:
  static void describe(ClassDescription<NSNotification>& is);

  /// `object` and `userInfo` may be nil, of which the second is copied. Raises
  /// NSInvalidArgumentException for a nil name.
  NSNotification(NSString* name, NSObject* object, NSDictionary* userInfo = nullptr);
  ~NSNotification() override;
  static Ref<NSNotification> notificationWithName_object(NSString* name, NSObject* object);
  static Ref<NSNotification> notificationWithName_object_userInfo(NSString* name, NSObject* object,
                                                                  NSDictionary* userInfo);
  static Ref<NSNotification> initWithName_object_userInfo(NSString* name, NSObject* object,
                                                          NSDictionary* userInfo);

  /// Never nil.
  Ref<NSString> name() const;
  /// The sender; nil when there is none.
  Ref<NSObject> object() const { return object_; }
  /// Nil when it was made without.
  Ref<NSDictionary> userInfo() const;

  /// The same name and sender, and equal user information.
  bool isEqual(NSObject* other) const override;
  std::size_t hash() const override;

  /// "NAME {object = …; userInfo = …}", parts that are nil left out.
  Ref<NSString> description() const override;

  /// This very Notification.
  Ref<NSObject> copy() const override;

 private:
  friend class NSNotificationCenter;

  Ref<NSString> name_;
  Ref<NSObject> object_;
  Ref<NSDictionary> userInfo_;
};

}  // namespace qz

#pragma GCC visibility pop
