#include "Platform/Collections/detail/ReleaseElements.h"

#include <cstdlib>
#include <cstring>

namespace qz::detail {
namespace {

constexpr unsigned deepest = 200;

// Elements start on the way from memory to the cache this many places before their turn.
constexpr std::size_t lookAhead = 8;

struct Postponed {
  Postponed* next;
  std::size_t count;
};

[[gnu::tls_model("initial-exec")]] constinit thread_local unsigned depth = 0;
[[gnu::tls_model("initial-exec")]] constinit thread_local Postponed* postponed = nullptr;

bool postpone(NSObject* const* elements, std::size_t count) noexcept {
  void* block = std::malloc(sizeof(Postponed) + count * sizeof(void*));
  if (block == nullptr) return false;
  auto* work = ::new (block) Postponed{postponed, count};
  std::memcpy(work + 1, elements, count * sizeof(void*));
  postponed = work;
  return true;
}

void releaseNow(NSObject* const* elements, std::size_t count) noexcept {
  std::size_t i = 0;
  for (; i + lookAhead < count; ++i) {
    __builtin_prefetch(elements[i + lookAhead], 1);
    release(elements[i]);
  }
  for (; i < count; ++i) release(elements[i]);
}

void releasePostponed() noexcept {
  while (Postponed* work = postponed) {
    postponed = work->next;
    releaseNow(reinterpret_cast<NSObject* const*>(work + 1), work->count);
    std::free(work);
  }
}

}  // namespace

void releaseElements(NSObject* const* elements, std::size_t count) noexcept {
  if (depth >= deepest && postpone(elements, count)) return;
  ++depth;
  releaseNow(elements, count);
  if (depth == 1 && postponed != nullptr) [[unlikely]]
    releasePostponed();
  --depth;
}

}  // namespace qz::detail
