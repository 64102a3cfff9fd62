#include "QZFoundation/NSUserDefaults-QZFoundation.h"

#include "Platform/Collections/NSDictionary.h"
#include "Platform/Runtime/Describe.h"

namespace qz {

bool loadDefaults(NSUserDefaults* self) {
  return loadDefaultsFromBundle(self, NSBundle::mainBundle());
}

bool loadDefaultsFromBundle(NSUserDefaults* self, NSBundle* bundle) {
  if (bundle == nullptr) return false;
  const Ref<NSString> path = bundle->pathForResource_ofType("Defaults"_ns, "plist"_ns);
  return path && loadDefaultsFromFile(self, path);
}

bool loadDefaultsFromFile(NSUserDefaults* self, NSString* path) {
  const Ref<NSDictionary> values = NSDictionary::dictionaryWithContentsOfFile(path);
  if (!values) return false;
  self->registerDefaults(values);
  return true;
}

void detail::registerNSUserDefaultsQZFoundation() {
  extend<NSUserDefaults>("QZFoundation")
      .method<&loadDefaults>("loadDefaults")
      .method<&loadDefaultsFromBundle>("loadDefaultsFromBundle:")
      .method<&loadDefaultsFromFile>("loadDefaultsFromFile:");
}

}  // namespace qz
