// tsl::robin_map: open addressing, Robin Hood hashing. Keeps the hashes, as is advised for strings.
#include <tsl/robin_map.h>

#include <functional>
#include <memory>
#include <utility>

#include "bench/support/Families.h"
#include "bench/support/Maps.h"

namespace qz::bench {

void compareRobinMapDictionaries() {
  using Key = std::u16string;
  using Map = tsl::robin_map<Key, const void*, std::hash<Key>, std::equal_to<Key>,
                             std::allocator<std::pair<Key, const void*>>, true>;
  compareMapPeer<Map>("robin_map");
}

}  // namespace qz::bench
