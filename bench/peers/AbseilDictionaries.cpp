// Abseil: a flat hash map.
#include <absl/container/flat_hash_map.h>

#include "bench/support/Families.h"
#include "bench/support/Maps.h"

namespace qz::bench {

void compareAbseilDictionaries() {
  compareMapPeer<absl::flat_hash_map<std::u16string, const void*>>("Abseil");
}

}  // namespace qz::bench
