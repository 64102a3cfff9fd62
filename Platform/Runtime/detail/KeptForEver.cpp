#include "Platform/Runtime/detail/KeptForEver.h"

#include <mutex>
#include <utility>
#include <vector>

namespace qz::detail {

NSObject* keepForEver(Ref<NSObject> object) {
  static auto* const mutex = new std::mutex;
  static auto* const kept = new std::vector<Ref<NSObject>>;
  if (!object) return nullptr;
  const std::lock_guard lock(*mutex);
  return kept->emplace_back(std::move(object));
}

}  // namespace qz::detail
