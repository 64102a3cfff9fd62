/// @file
/// Private: a change that is under way.
#pragma once

#include <vector>

#include "Platform/Runtime/NSKeyValueObserving.h"
#include "Platform/Runtime/detail/Observation.h"
#include "Platform/Values/NSIndexSet.h"

namespace qz::detail {

struct ChangeStack;

/// One who is to be told when the change is made.
struct Pending {
  Ref<Observation> observation;
  std::uint32_t level;
  bool isTold;           ///< By this change; else it only follows, and a change around this tells.
  bool isDirect;         ///< Observes this very key, not one that depends on it.
  Ref<NSObject> object;  ///< Whose key is observed; null for the changing Object itself.
  Ref<NSObject> oldValue;
};

/// What is known of a change between its begin and its end. Frames are used again by their thread,
/// with the room they have: announcing allocates nothing once it has been done before.
struct ChangeFrame {
  ChangeStack* stack = nullptr;
  ChangeFrame* below = nullptr;
  Ref<NSObject> object{};
  Ref<NSString> key{};
  NSKeyValueChange kind = NSKeyValueChangeSetting;
  Ref<NSIndexSet> indexes{};
  bool isByHand = false;  ///< Ended by key, not by its guard.
  int exceptions = 0;     ///< Under way in the thread when its guard was made.
  std::vector<Pending> pending{};
};

/// Notes who is to be told, and what the values are; tells those who want to know before. What
/// that raises passes through, and then no change is under way.
ChangeFrame* beginChange(NSObject* object, NSString* key, NSKeyValueChange kind,
                         NSIndexSet* indexes, bool isByHand);

/// Tells everybody; raises the first exception raised on the way.
void endChange(ChangeFrame* frame);

/// Ends the innermost change by hand of that key, if there is one in this thread.
void endChangeByHand(NSObject* object, NSString* key);

/// Tells the observer of a single level what there is.
void tellInitialValue(Observation& observation, NSObject* root);

}  // namespace qz::detail
