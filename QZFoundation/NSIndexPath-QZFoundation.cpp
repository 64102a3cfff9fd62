#include "QZFoundation/NSIndexPath-QZFoundation.h"

#include <algorithm>

#include "Platform/Runtime/Describe.h"

namespace qz {

Ref<NSIndexPath> indexPathByAppendingPath(NSIndexPath* self, NSIndexPath* path) {
  if (path == nullptr) return self;
  return NSIndexPath::filled(std::uint64_t{self->length()} + path->length(),
                             [&](std::uint32_t* out) {
                               out = std::ranges::copy(self->indexes(), out).out;
                               std::ranges::copy(path->indexes(), out);
                             });
}

Ref<NSIndexPath> indexPathByRemovingFirstIndex(NSIndexPath* self) {
  if (self->length() == 0) return self;
  return NSIndexPath::indexPathWithIndexes(self->indexes().subspan(1));
}

void detail::registerNSIndexPathQZFoundation() {
  extend<NSIndexPath>("QZFoundation")
      .method<&indexPathByAppendingPath>("indexPathByAppendingPath:")
      .method<&indexPathByRemovingFirstIndex>("indexPathByRemovingFirstIndex");
}

}  // namespace qz
