#include "QZFoundation/NSBundle-QZFoundation.h"

#include "Platform/Runtime/Describe.h"

namespace qz {

Ref<QZVersionNumber> versionNumber(NSBundle* self) {
  return QZVersionNumber::versionWithString(
      as<NSString>(self->objectForInfoDictionaryKey("CFBundleVersion"_ns)));
}

void detail::registerNSBundleQZFoundation() {
  extend<NSBundle>("QZFoundation").method<&versionNumber>("versionNumber");
}

}  // namespace qz
