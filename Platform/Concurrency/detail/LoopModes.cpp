#include "Platform/Concurrency/detail/LoopModes.h"

#include <bit>
#include <mutex>
#include <vector>

#include "Platform/Collections/NSArray.h"
#include "Platform/Concurrency/NSRunLoop.h"
#include "Platform/Runtime/NSException.h"

namespace qz::detail {
namespace {

struct Names {
  std::mutex mutex;
  std::vector<Ref<NSString>> names{Ref<NSString>(NSDefaultRunLoopMode)};  // bit by bit
};

Names& known() {
  static auto* const names = new Names();
  return *names;
}

}  // namespace

ModeMask modeBit(NSString* name) {
  if (name == nullptr) raise(NSInvalidArgumentException, "a run-loop mode is a name, not nil");
  if (name == NSDefaultRunLoopMode) return defaultMode;
  if (name->isEqualToString(NSRunLoopCommonModes)) return commonModes;
  Names& all = known();
  std::lock_guard lock(all.mutex);
  std::size_t bit = 0;
  while (bit < all.names.size() && !all.names[bit]->isEqualToString(name)) ++bit;
  if (bit == all.names.size()) {
    if (bit == 63) raise(NSInvalidArgumentException, "there are too many run-loop modes");
    all.names.push_back(NSString::stringWithString(name));
  }
  return ModeMask{1} << bit;
}

ModeMask modeBits(NSArray* names) {
  ModeMask bits = 0;
  for (NSString* name : elements<NSString>(names)) bits |= modeBit(name);
  if (bits == 0) raise(NSInvalidArgumentException, "a run loop needs to know for which modes");
  return bits;
}

Ref<NSString> modeName(ModeMask bit) {
  if (bit == commonModes) return Ref<NSString>(NSRunLoopCommonModes);
  Names& all = known();
  std::lock_guard lock(all.mutex);
  return all.names[static_cast<std::size_t>(std::countr_zero(bit))];
}

}  // namespace qz::detail
