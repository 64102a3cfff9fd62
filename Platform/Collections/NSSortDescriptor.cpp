#include "Platform/Collections/NSSortDescriptor.h"

#include <string>

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/Send.h"

namespace qz {

void NSSortDescriptor::describe(ClassDescription<NSSortDescriptor>& is) {
  is.named("NSSortDescriptor")
      .initializer<&NSSortDescriptor::initWithKey_ascending>("initWithKey:ascending:")
      .initializer<&NSSortDescriptor::initWithKey_ascending_selector>(
          "initWithKey:ascending:selector:")
      .property<&NSSortDescriptor::key>("key")
      .property<&NSSortDescriptor::ascending>("ascending")
      .property<&NSSortDescriptor::selector>("selector")
      .method<&NSSortDescriptor::compareObject_toObject>("compareObject:toObject:")
      .method<&NSSortDescriptor::reversedSortDescriptor>("reversedSortDescriptor");
}

NSSortDescriptor::NSSortDescriptor(NSString* key, bool ascending, Selector selector)
    : ascending_(ascending),
      key_(key == nullptr ? nullptr : NSString::stringWithString(key)),
      selector_(selector ? selector : "compare:"_sel) {}

Ref<NSSortDescriptor> NSSortDescriptor::initWithKey_ascending(NSString* key, bool ascending) {
  return make<NSSortDescriptor>(key, ascending);
}

Ref<NSSortDescriptor> NSSortDescriptor::initWithKey_ascending_selector(NSString* key,
                                                                       bool ascending,
                                                                       Selector selector) {
  return make<NSSortDescriptor>(key, ascending, selector);
}

NSComparisonResult NSSortDescriptor::compareObject_toObject(NSObject* first,
                                                            NSObject* second) const {
  const Ref<NSObject> a = valueOf(first);
  const Ref<NSObject> b = valueOf(second);
  return compareValues(a, b);
}

NSComparisonResult NSSortDescriptor::compareValues(NSObject* first, NSObject* second) const {
  int order;
  if (first == nullptr || second == nullptr)
    order = (first != nullptr) - (second != nullptr);
  else
    order = send<NSComparisonResult>(first, selector_, second);
  if (order == 0) return NSOrderedSame;
  return (order < 0) == ascending_ ? NSOrderedAscending : NSOrderedDescending;
}

Ref<NSObject> NSSortDescriptor::valueOf(NSObject* object) const {
  return object == nullptr || !key_ ? Ref<NSObject>(object) : object->valueForKeyPath(key_);
}

Ref<NSSortDescriptor> NSSortDescriptor::reversedSortDescriptor() const {
  return make<NSSortDescriptor>(key_, !ascending_, selector_);
}

bool NSSortDescriptor::isEqual(NSObject* other) const {
  auto* same = as<NSSortDescriptor>(other);
  return same != nullptr && ascending_ == same->ascending_ && selector_ == same->selector_ &&
         equal(key_, same->key_);
}

std::size_t NSSortDescriptor::hash() const {
  return (key_ ? key_->hash() : 0) * 2 + (ascending_ ? 1 : 0);
}

Ref<NSObject> NSSortDescriptor::copy() const { return const_cast<NSSortDescriptor*>(this); }

Ref<NSString> NSSortDescriptor::description() const {
  return NSString::stringWithUTF8String("(" + to_string(key_) +
                                        (ascending_ ? ", ascending, " : ", descending, ") +
                                        std::string(selector_.name()) + ")");
}

}  // namespace qz
