/// @file
/// Private: what a Class keeps under the run-time's lock.
#pragma once

#include <atomic>
#include <deque>
#include <mutex>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "Platform/Runtime/Class.h"
#include "Platform/Runtime/detail/Dispatch.h"

namespace qz::detail {

using MethodTable = std::unordered_map<Selector, Method>;

/// Methods stand in node-based tables, so that pointers to them stay good.
struct ClassTables {
  MethodTable methods;
  MethodTable classMethods;
  std::deque<MethodTable::node_type> replaced;
  std::vector<std::string_view> propertyKeys;
  std::unordered_multimap<std::string_view, std::string_view> dependencies;  // by property

  std::recursive_mutex initializing;
  std::atomic<bool> initialized{false};
  bool insideInitialize = false;
  void (*initializer)() = nullptr;

  /// The nearest implementation, or null. The caller holds the run-time's lock.
  static const Method* findInstance(const Class* aClass, Selector selector);
  static const Method* findClassLevel(const Class* aClass, Selector selector);

  /// The key paths that `key` was described to depend on, in the class or above. Takes the lock.
  static std::vector<std::string_view> dependenciesOf(const Class* aClass, std::string_view key);

  /// Runs the class's one-time function, and before it those of the classes above.
  static void ensureInitialized(Class* aClass);
};

}  // namespace qz::detail
