#include "QZFoundation/NSSet-QZFoundation.h"

#include "Platform/Runtime/Describe.h"

namespace qz {

bool containsObjectsFromEnumerator(NSSet* self, NSEnumerator* enumerator) {
  for (NSObject* each : enumerator)
    if (!self->containsObject(each)) return false;
  return true;
}

void detail::registerNSSetQZFoundation() {
  extend<NSSet>("QZFoundation")
      .method<overload<bool(NSSet*, NSEnumerator*)>(&containsObjectsFromEnumerator)>(
          "containsObjectsFromEnumerator:");
}

}  // namespace qz
