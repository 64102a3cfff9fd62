/// @file
/// Private: what the writers of property lists have in common.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "Platform/Runtime/NSObject.h"

#pragma GCC visibility push(default)
namespace qz {
class NSArray;
class NSData;
}  // namespace qz
#pragma GCC visibility pop

namespace qz::detail {

enum class PropertyListType : std::uint8_t {
  None,
  String,
  Number,
  Date,
  Data,
  UID,
  Array,
  Dictionary,
};

/// What a writer throws to itself: what cannot be written, and where it stands.
struct PropertyListRefusal {
  std::string reason;
};

/// Walks down a list: tells the kinds of Objects, keeps the way from the root, and refuses cycles
/// and what is nested too deep.
class PropertyListWalk {
 public:
  struct Entry {
    Ref<NSString> key;
    Ref<NSObject> value;
  };

  /// What kind of value an Object is; None for nil and for what has no place in a list.
  PropertyListType typeOf(const NSObject* object);

  /// Goes into an Array or Dictionary, for as long as this lives. Refuses one that contains itself.
  class Level {
   public:
    Level(PropertyListWalk& walk, NSObject* container);
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;
    ~Level() { walk_.steps_.pop_back(); }

    /// Which element or entry the walk has come to.
    void isAt(std::uint32_t index) const noexcept { walk_.steps_.back().index = index; }
    void isAt(NSString* key) const noexcept { walk_.steps_.back().key = key; }

   private:
    PropertyListWalk& walk_;
  };

  /// How many containers the walk is inside of.
  std::size_t depth() const noexcept { return steps_.size(); }

  /// The entries in the order of the keys; refuses keys that are no Strings.
  std::vector<Entry> sortedEntries(NSObject* dictionary);

  /// Throws a PropertyListRefusal: "settings.colours[2]: " and the reason.
  [[noreturn]] void refuse(const std::string& reason) const;

  /// The same for an Object that is no value at all.
  [[noreturn]] void refuseClass(const NSObject* object) const;

 private:
  struct Step {
    NSObject* container;
    NSString* key = nullptr;
    std::uint32_t index = NSNotFound;  // before the first element or entry
  };
  struct Known {
    std::uintptr_t vptr = 0;
    PropertyListType type = PropertyListType::None;
  };

  std::string place() const;

  std::vector<Step> steps_;
  std::array<Known, 64> known_;
};

}  // namespace qz::detail
