#include "Platform/Runtime/detail/KeptForEver.h"

#include <mutex>
#include <utility>
#include <vector>

namespace qz::detail {

NSObject* keepForEver(Ref<NSObject> object) {
  static auto* const mutex = new std::mutex;
  static auto* const kept = new std::vector<Ref<NSObject>>;
  NSObject* const answer = object.get();
  if (answer == nullptr) return nullptr;
  const std::lock_guard lock(*mutex);
  kept->push_back(std::move(object));
  return answer;
}

}  // namespace qz::detail
