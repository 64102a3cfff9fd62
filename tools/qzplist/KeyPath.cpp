#include "tools/qzplist/KeyPath.h"

#include <charconv>
#include <cstdint>
#include <span>

#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/Values/NSString.h"
#include "tools/Command.h"

namespace qz::tool {
namespace {

using Steps = std::span<const std::string>;

[[noreturn]] void failAt(const std::string& step, const std::string& reason) {
  fail("\"" + step + "\"", reason);
}

// The index of an element, or of the place behind the last one if `behind`.
std::uint32_t indexIn(NSArray* array, const std::string& step, bool behind) {
  std::uint32_t index = 0;
  const char* const end = step.data() + step.size();
  const auto [stop, error] = std::from_chars(step.data(), end, index);
  if (error != std::errc() || stop != end) failAt(step, "an array is indexed by numbers");
  if (index >= array->count() + (behind ? 1u : 0u))
    failAt(step, "the array has " + std::to_string(array->count()) + " elements");
  return index;
}

Ref<NSString> keyOf(const std::string& step) { return NSString::stringWithUTF8String(step); }

// Nil for a key that a Dictionary does not have.
Ref<NSObject> child(NSObject* parent, const std::string& step) {
  if (auto* dictionary = as<NSDictionary>(parent)) return dictionary->objectForKey(keyOf(step));
  if (auto* array = as<NSArray>(parent)) return array->objectAtIndex(indexIn(array, step, false));
  failAt(step, "the value before is no dictionary or array");
}

Ref<NSObject> parentOf(NSObject* root, Steps path) {
  Ref<NSObject> parent = root;
  for (const std::string& step : path.first(path.size() - 1)) {
    parent = child(parent, step);
    if (!parent) failAt(step, "there is no such key");
  }
  return parent;
}

void put(NSObject* parent, const std::string& step, NSObject* value) {
  if (auto* dictionary = as<NSMutableDictionary>(parent)) {
    dictionary->setObject_forKey(value, keyOf(step));
  } else if (auto* array = as<NSMutableArray>(parent)) {
    const std::uint32_t index = indexIn(array, step, true);
    if (index == array->count())
      array->addObject(value);
    else
      array->replaceObjectAtIndex_withObject(index, value);
  } else {
    failAt(step, "the value before is no dictionary or array");
  }
}

}  // namespace

KeyPath parseKeyPath(std::string_view text) {
  KeyPath path;
  if (text.empty()) return path;
  path.emplace_back();
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool escapes = text[i] == '\\' && i + 1 < text.size();
    if (escapes && (text[i + 1] == '.' || text[i + 1] == '\\'))
      path.back() += text[++i];
    else if (text[i] == '.')
      path.emplace_back();
    else
      path.back() += text[i];
  }
  return path;
}

Ref<NSObject> valueAt(NSObject* root, const KeyPath& path) {
  Ref<NSObject> value = root;
  for (const std::string& step : path) {
    value = child(value, step);
    if (!value) failAt(step, "there is no such key");
  }
  return value;
}

Ref<NSObject> settingValueAt(NSObject* root, const KeyPath& path, NSObject* value) {
  if (path.empty()) return value;
  Ref<NSObject> parent = root;
  for (std::size_t i = 0; i + 1 < path.size(); ++i) {
    Ref<NSObject> next = child(parent, path[i]);
    if (!next) {
      next = NSMutableDictionary::dictionary();
      put(parent, path[i], next);
    }
    parent = next;
  }
  put(parent, path.back(), value);
  return root;
}

void removeValueAt(NSObject* root, const KeyPath& path) {
  if (path.empty()) fail("the root cannot be removed");
  const Ref<NSObject> parent = parentOf(root, path);
  const std::string& step = path.back();
  if (!child(parent, step)) failAt(step, "there is no such key");
  if (auto dictionary = as<NSMutableDictionary>(parent))
    dictionary->removeObjectForKey(keyOf(step));
  else if (auto array = as<NSMutableArray>(parent))
    array->removeObjectAtIndex(indexIn(array, step, false));
}

}  // namespace qz::tool
