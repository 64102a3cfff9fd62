#include "QZFoundation/NSURL-QZFoundation.h"

#include "Platform/Runtime/Describe.h"

namespace qz {

Ref<NSURL> fileURLByAppendingPathComponent(NSURL* self, NSString* component) {
  return NSURL::fileURLWithPath(self->path()->stringByAppendingPathComponent(component));
}

void detail::registerNSURLQZFoundation() {
  extend<NSURL>("QZFoundation")
      .method<&fileURLByAppendingPathComponent>("fileURLByAppendingPathComponent:");
}

}  // namespace qz
