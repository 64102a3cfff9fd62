/// @file
/// Dictionaries that change.
#pragma once

#include <array>
#include <functional>
#include <initializer_list>
#include <ranges>
#include <utility>

#include "Platform/Collections/NSDictionary.h"

#pragma GCC visibility push(default)

namespace qz {

/// A Dictionary whose entries can be added, replaced and removed, each in constant time.
///
///     auto ages = make<NSMutableDictionary>();
///     ages->setObject_forKey(NSNumber::of(30), "Ada"_ns);
///
/// A key keeps its place while its Object is replaced; a key that is removed and added again goes
/// to the end. A change of what stands under a String is announced to those who observe that key;
/// operations on all entries announce one after the other. A subclass that keeps its entries
/// elsewhere overrides `setObject_forKey` and `removeObjectForKey` too. One thread at a time: what
/// changes must not be read meanwhile.
class NSMutableDictionary : public Derives<NSMutableDictionary, NSDictionary> {
 public:
  static void describe(ClassDescription<NSMutableDictionary>& is);

  /// An empty Dictionary.
  NSMutableDictionary() noexcept = default;

  /// The constructors of NSDictionary, for a Dictionary that can change.
  static Ref<NSMutableDictionary> dictionary();
  static Ref<NSMutableDictionary> dictionaryWithObject_forKey(NSObject* object, NSObject* key);
  static Ref<NSMutableDictionary> dictionaryWithObjects_forKeys(NSArray* objects, NSArray* keys);
  static Ref<NSMutableDictionary> initWithObjects_forKeys(NSArray* objects, NSArray* keys);
  static Ref<NSMutableDictionary> dictionaryWithObjects_forKeys_count(NSObject* const* objects,
                                                                      NSObject* const* keys,
                                                                      std::uint32_t count);
  static Ref<NSMutableDictionary> initWithObjects_forKeys_count(NSObject* const* objects,
                                                                NSObject* const* keys,
                                                                std::uint32_t count);
  static Ref<NSMutableDictionary> dictionaryWithDictionary(NSDictionary* other);
  static Ref<NSMutableDictionary> initWithDictionary(NSDictionary* other);
  static Ref<NSMutableDictionary> initWithDictionary_copyItems(NSDictionary* other,
                                                               bool copiesItems);
  static Ref<NSMutableDictionary> of(std::initializer_list<Entry> entries);
  static Ref<NSMutableDictionary> dictionaryWithContentsOfFile(NSString* path);
  static Ref<NSMutableDictionary> initWithContentsOfFile(NSString* path);
  template <class... Objects>
  static Ref<NSMutableDictionary> dictionaryWithObjectsAndKeys(const Objects&... objectsAndKeys) {
    return alternating(std::array<NSObject*, sizeof...(Objects)>{objectsAndKeys...});
  }
  template <class... Objects>
  static Ref<NSMutableDictionary> initWithObjectsAndKeys(const Objects&... objectsAndKeys) {
    return dictionaryWithObjectsAndKeys(objectsAndKeys...);
  }
  template <std::ranges::input_range R>
  static Ref<NSMutableDictionary> fromRange(R&& pairs) {
    return with(tableOfRange(pairs));
  }

  /// The keys of `other`, each with what `transform(key, object)` answers; see NSDictionary's
  /// `dictionaryByMappingObjects`.
  static Ref<NSMutableDictionary> dictionaryByMapping(
      NSDictionary* other,
      const std::function<Ref<NSObject>(NSObject* key, NSObject* object)>& transform);

  /// An empty Dictionary with room for `capacity` entries; a hint.
  static Ref<NSMutableDictionary> dictionaryWithCapacity(std::uint32_t capacity);
  static Ref<NSMutableDictionary> initWithCapacity(std::uint32_t capacity);

  /// Keeps `object` under a copy of `key`, in place of what was there. Raises
  /// NSInvalidArgumentException for nil.
  virtual void setObject_forKey(NSObject* object, NSObject* key);

  /// Removes the entry under `key`; nothing when there is none. Raises NSInvalidArgumentException
  /// for nil.
  virtual void removeObjectForKey(NSObject* key);

  /// Removes the entries under all of `keys`; nil counts as empty.
  void removeObjectsForKeys(NSArray* keys);

  /// Removes everything and gives the memory back.
  void removeAllObjects();

  /// Sets every entry of `other`; nil counts as empty.
  void addEntriesFromDictionary(NSDictionary* other);

  /// Has the entries of `other` in place of its own; nil counts as empty.
  void setDictionary(NSDictionary* other);

  /// Keeps `value` under `key`; nil removes the entry.
  void setValue_forKey(NSObject* value, NSString* key) override;

 protected:
  /// Of a table that was filled already.
  explicit NSMutableDictionary(Table&& table) noexcept : Derives(std::move(table)) {}

 private:
  static Ref<NSMutableDictionary> with(Table&& table);

  template <std::size_t N>
  static Ref<NSMutableDictionary> alternating(const std::array<NSObject*, N>& objectsAndKeys) {
    return with(tableOfAlternating(objectsAndKeys.data(), N));
  }

  friend class NSDictionary;  // makes mutable copies
};

}  // namespace qz

#pragma GCC visibility pop
