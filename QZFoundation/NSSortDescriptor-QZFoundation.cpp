#include "QZFoundation/NSSortDescriptor-QZFoundation.h"

#include "Platform/Runtime/Describe.h"

namespace qz {

Ref<NSSortDescriptor> sortDescriptorWithKey_ascending(NSString* key, bool ascending) {
  return NSSortDescriptor::initWithKey_ascending(key, ascending);
}

Ref<NSSortDescriptor> sortDescriptorWithKey_ascending_selector(NSString* key, bool ascending,
                                                               Selector selector) {
  return NSSortDescriptor::initWithKey_ascending_selector(key, ascending, selector);
}

void detail::registerNSSortDescriptorQZFoundation() {
  extend<NSSortDescriptor>("QZFoundation")
      .classMethod<&sortDescriptorWithKey_ascending>("sortDescriptorWithKey:ascending:")
      .classMethod<&sortDescriptorWithKey_ascending_selector>(
          "sortDescriptorWithKey:ascending:selector:");
}

}  // namespace qz
