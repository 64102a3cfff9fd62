/// @file
/// Two keys of an Object, kept in step through a table of pairs.
#pragma once

#include <list>
#include <unordered_map>

#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSString.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

class NSMutableDictionary;

/// Watches Objects, and sets one of two keys to the value that is paired with the other's new one.
///
///     auto syncer = QZKeyValueSyncer::initWithPrimaryKey_secondaryKey("size"_ns, "name"_ns);
///     syncer->setPrimaryValue_forSecondaryValue(NSNumber::of(1), "small"_ns);
///     syncer->setPrimaryValue_forSecondaryValue(NSNumber::of(2), "large"_ns);
///     syncer->observeObject(shirt);
///     shirt->setValue_forKey(NSNumber::of(2), "size"_ns);   // its name is "large" now
///
/// A value that is in no pair sets the other key to nil, and that change sets the first one to nil
/// as well: an unpaired value does not survive. Where a key is a scalar, `setNilValueForKey:` has
/// its say. The watched Objects are kept alive. Changes are followed in the thread that makes them;
/// the tables are unguarded, so fill them before Objects change in other threads.
class QZKeyValueSyncer : public Derives<QZKeyValueSyncer, NSObject> {
 public:
  static void describe(ClassDescription<QZKeyValueSyncer>& is);

  /// For these keys, which are copied and are keys, no paths. A nil key is a failed assertion:
  /// "Primary key is nil", "Secondary key is nil".
  static Ref<QZKeyValueSyncer> initWithPrimaryKey_secondaryKey(NSString* primaryKey,
                                                               NSString* secondaryKey);
  QZKeyValueSyncer(NSString* primaryKey, NSString* secondaryKey);

  /// Stops watching every Object.
  ~QZKeyValueSyncer() override;

  /// Pairs two values. A value that was paired before has its own entry replaced, and stays the
  /// answer for the value it was paired with. Raises NSInvalidArgumentException for nil.
  void setPrimaryValue_forSecondaryValue(NSObject* primaryValue, NSObject* secondaryValue);

  /// The value paired with this one; nil when there is none.
  Ref<NSObject> secondaryValueForPrimaryValue(NSObject* primaryValue) const;
  Ref<NSObject> primaryValueForSecondaryValue(NSObject* secondaryValue) const;

  /// Watches an Object from now on; its values are left as they are. Nothing for one that is
  /// watched, and for nil. What observing a key raises passes through, and then neither is
  /// observed.
  void observeObject(NSObject* object);

  /// Watches it no longer. Nothing for one that is not watched, and for nil.
  void unobserveObject(NSObject* object);

  /// Sets one key to what is paired with the other's value now, or to nil.
  void updateSecondaryValueForObject(NSObject* object);
  void updatePrimaryValueForObject(NSObject* object);

  /// The same for every watched Object, in the order in which they were added.
  void updateSecondaryValues();
  void updatePrimaryValues();

  void observeValueForKeyPath_ofObject_change_context(NSString* keyPath, NSObject* object,
                                                      NSDictionary* change, void* context) override;

 private:
  const Ref<NSString> primaryKey_;
  const Ref<NSString> secondaryKey_;
  const Ref<NSMutableDictionary> valueMap_;         // primary to secondary
  const Ref<NSMutableDictionary> inverseValueMap_;  // secondary to primary

  // The very Objects: their hashes may change with their values.
  using Objects = std::list<Ref<NSObject>>;
  Objects objects_;
  std::unordered_map<const NSObject*, Objects::iterator> places_;
};

}  // namespace qz

#pragma GCC visibility pop
