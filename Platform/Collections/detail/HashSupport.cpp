#include "Platform/Collections/detail/HashSupport.h"

#include <sys/mman.h>

#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSNumber.h"

namespace qz::detail {

bool comparesQuietly(const NSObject* key) { return isKind<NSString>(key) || isKind<NSNumber>(key); }

void useLargePages(void* block, std::size_t size) noexcept {
  constexpr std::uintptr_t page = std::uintptr_t{2} << 20;
  const auto start = reinterpret_cast<std::uintptr_t>(block);
  const std::uintptr_t first = (start + page - 1) / page * page;
  const std::uintptr_t last = (start + size) / page * page;
  if (first < last) ::madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
}

void raiseTooMany() { raise(NSMallocException, "a collection holds at most 2147483646 entries"); }

}  // namespace qz::detail
