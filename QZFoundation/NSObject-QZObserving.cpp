#include "QZFoundation/NSObject-QZObserving.h"

#include <vector>

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/NSDictionary.h"
#include "Platform/Collections/NSEnumerator.h"
#include "Platform/Collections/NSSet.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSInvocation.h"
#include "Platform/Runtime/NSMethodSignature.h"
#include "Platform/Values/NSNull.h"

namespace qz {
namespace {

/// What a collection holds, kept, since being told may change it. Null, which stands for nil in
/// changes, holds nothing.
std::vector<Ref<NSObject>> membersOf(NSObject* collection) {
  std::vector<Ref<NSObject>> members;
  if (collection == nullptr || collection == NSNull::null()) return members;
  const auto all = send<Ref<NSEnumerator>>(collection, "objectEnumerator"_sel);
  while (Ref<NSObject> each = all->nextObject()) members.push_back(std::move(each));
  return members;
}

std::vector<Ref<NSString>> pathsOf(NSObject* keyPaths) {
  std::vector<Ref<NSString>> paths;
  for (NSObject* each : membersOf(keyPaths))
    if (auto* path = as<NSString>(each)) paths.emplace_back(path);
  return paths;
}

void observeMember(NSObject* self, NSObject* member, const std::vector<Ref<NSString>>& paths,
                   NSKeyValueObservingOptions options, void* context) {
  for (NSString* path : paths)
    member->addObserver_forKeyPath_options_context(self, path, options, context);
}

void unobserveMember(NSObject* self, NSObject* member, const std::vector<Ref<NSString>>& paths) {
  for (NSString* path : paths) member->removeObserver_forKeyPath(self, path);
}

Ref<NSSet> setOf(NSDictionary* change, NSString* key) {
  return change == nullptr
             ? NSSet::set()
             : NSSet::setWithArray(NSArray::fromRange(membersOf(change->objectForKey(key))));
}

}  // namespace

void startObservationsForObject_key_forKeyPaths_options_context(NSObject* self, NSObject* owner,
                                                                NSString* key, NSObject* keyPaths,
                                                                NSKeyValueObservingOptions options,
                                                                void* context) {
  if (self == nullptr || owner == nullptr) return;
  owner->addObserver_forKeyPath_options_context(
      self, key, NSKeyValueObservingOptionNew | NSKeyValueObservingOptionOld, nullptr);
  const auto paths = pathsOf(keyPaths);
  for (NSObject* member : membersOf(owner->valueForKey(key)))
    observeMember(self, member, paths, options, context);
}

void updateObservationsWithChange_forKeyPaths_options_context(NSObject* self, NSDictionary* change,
                                                              NSObject* keyPaths,
                                                              NSKeyValueObservingOptions options,
                                                              void* context) {
  if (self == nullptr) return;
  const auto before = setOf(change, NSKeyValueChangeOldKey);
  const auto now = setOf(change, NSKeyValueChangeNewKey);
  const auto paths = pathsOf(keyPaths);
  for (NSObject* member : before)
    if (!now->containsObject(member)) unobserveMember(self, member, paths);
  for (NSObject* member : now)
    if (!before->containsObject(member)) observeMember(self, member, paths, options, context);
}

void endObservationsForObject_key_forKeyPaths(NSObject* self, NSObject* owner, NSString* key,
                                              NSObject* keyPaths) {
  if (self == nullptr || owner == nullptr) return;
  owner->removeObserver_forKeyPath(self, key);
  const auto paths = pathsOf(keyPaths);
  for (NSObject* member : membersOf(owner->valueForKey(key))) unobserveMember(self, member, paths);
}

void dispatchKVOWithSelector_object_keyPath_change(NSObject* self, Selector selector,
                                                   NSObject* object, NSString* keyPath,
                                                   NSDictionary* change) {
  if (self == nullptr) return;
  const Ref<NSMethodSignature> signature = self->methodSignatureForSelector(selector);
  if (!signature) return;
  const auto call = NSInvocation::invocationWithMethodSignature(signature);
  call->setTarget(self);
  call->setSelector(selector);
  const std::uint32_t count = signature->numberOfArguments();
  if (count > 2) call->setArgument_atIndex(object, 2);
  if (count > 3) call->setArgument_atIndex(keyPath, 3);
  if (count > 4) call->setArgument_atIndex(change, 4);
  call->invoke();
}

void detail::registerNSObjectQZObserving() {
  extend<NSObject>("QZFoundation")
      .method<&startObservationsForObject_key_forKeyPaths_options_context>(
          "startObservationsForObject:key:forKeyPaths:options:context:")
      .method<&updateObservationsWithChange_forKeyPaths_options_context>(
          "updateObservationsWithChange:forKeyPaths:options:context:")
      .method<&endObservationsForObject_key_forKeyPaths>(
          "endObservationsForObject:key:forKeyPaths:")
      .method<&dispatchKVOWithSelector_object_keyPath_change>(
          "dispatchKVOWithSelector:object:keyPath:change:");
}

}  // namespace qz
