#include "QZFoundation/NSAttributedString-QZFoundation.h"

#include "Platform/Runtime/Describe.h"

namespace qz {

NSRange fullRange(NSAttributedString* self) { return {0, self->length()}; }

void detail::registerNSAttributedStringQZFoundation() {
  extend<NSAttributedString>("QZFoundation").method<&fullRange>("fullRange");
}

}  // namespace qz
