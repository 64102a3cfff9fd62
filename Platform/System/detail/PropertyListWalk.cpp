#include "Platform/System/detail/PropertyListWalk.h"

#include <algorithm>
#include <utility>

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/NSDictionary.h"
#include "Platform/System/NSPropertyListUID.h"
#include "Platform/System/detail/PropertyListFault.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/NSDate.h"
#include "Platform/Values/NSNumber.h"
#include "Platform/Values/NSString.h"

namespace qz::detail {
namespace {

PropertyListType typeByClass(const NSObject* object) {
  if (isKind<NSString>(object)) return PropertyListType::String;
  if (isKind<NSNumber>(object)) return PropertyListType::Number;
  if (isKind<NSDictionary>(object)) return PropertyListType::Dictionary;
  if (isKind<NSArray>(object)) return PropertyListType::Array;
  if (isKind<NSData>(object)) return PropertyListType::Data;
  if (isKind<NSDate>(object)) return PropertyListType::Date;
  if (isKind<NSPropertyListUID>(object)) return PropertyListType::UID;
  return PropertyListType::None;
}

}  // namespace

PropertyListType PropertyListWalk::typeOf(const NSObject* object) {
  if (object == nullptr) return PropertyListType::None;
  const std::uintptr_t vptr = vptrOf(object);
  Known& known = known_[(vptr >> 4 ^ vptr >> 10) % known_.size()];
  if (known.vptr != vptr) known = {vptr, typeByClass(object)};
  return known.type;
}

PropertyListWalk::Level::Level(PropertyListWalk& walk, NSObject* container) : walk_(walk) {
  auto& steps = walk.steps_;
  // A cycle is found when it has been gone round until the limit: looking at each step would make
  // deep lists slow.
  if (steps.size() == deepestPropertyList) {
    const bool isCycle = std::any_of(steps.begin(), steps.end(),
                                     [&](const Step& step) { return step.container == container; });
    walk.refuse(isCycle ? "a container contains itself" : "nested too deep");
  }
  steps.push_back({container});
}

std::vector<PropertyListWalk::Entry> PropertyListWalk::sortedEntries(NSObject* object) {
  auto* const dictionary = static_cast<NSDictionary*>(object);
  std::vector<Entry> entries;
  entries.reserve(dictionary->count());
  for (const auto& [key, value] : dictionary) {
    if (typeOf(key) != PropertyListType::String)
      refuse("a key is of the class " + std::string(key->classObject()->name()) + ", not a String");
    entries.push_back({static_cast<NSString*>(key.get()), value});
  }
  const auto comesFirst = [](const Entry& a, const Entry& b) {
    return a.key->view() < b.key->view();
  };
  if (!std::is_sorted(entries.begin(), entries.end(), comesFirst))
    std::sort(entries.begin(), entries.end(), comesFirst);
  return entries;
}

void PropertyListWalk::refuse(const std::string& reason) const {
  throw PropertyListRefusal{place() + ": " + reason};
}

void PropertyListWalk::refuseClass(const NSObject* object) const {
  if (object == nullptr) refuse("nil is no property list");
  refuse("a value of the class " + std::string(object->classObject()->name()) +
         " cannot stand in a property list");
}

// The steps beyond what anybody reads are left out.
std::string PropertyListWalk::place() const {
  constexpr std::size_t longest = 200;
  std::string text = "root";
  for (const Step& step : steps_) {
    if (text.size() > longest) return text + "…";
    if (step.key != nullptr)
      text += "." + step.key->UTF8String();
    else if (step.index != NSNotFound)
      text += "[" + std::to_string(step.index) + "]";
  }
  return text;
}

}  // namespace qz::detail
