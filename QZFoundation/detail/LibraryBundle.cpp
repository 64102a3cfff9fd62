#include "QZFoundation/detail/LibraryBundle.h"

#include "Platform/System/Diagnostics.h"

namespace qz::detail {

NSBundle* libraryBundle() {
  static NSBundle* const bundle = [] {
    Ref<NSBundle> found = NSBundle::bundleWithIdentifier(libraryBundleIdentifier);
    // A program that has the library inside it may stand anywhere; the resources are then where
    // the library was installed.
    if (!found)
      found = NSBundle::bundleWithPath(NSString::stringWithUTF8String(QZ_INSTALLED_RESOURCES));
    if (!found) diagnose("The resources of QZFoundation are missing; messages stay in English.");
    return found.leak();
  }();
  return bundle;
}

}  // namespace qz::detail
