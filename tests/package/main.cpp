#include <iostream>

#include "Platform/Collections/NSArray.h"
#include "Platform/Runtime/NSObject.h"
#include "QZFoundation/QZFoundation.h"

using namespace qz;

// The messages come from where the package was installed.
int main() {
  NSBundle::setPreferredLanguages(NSArray::arrayWithObjects({"de_AT"_ns}));
  Ref<NSBundle> bundle = NSBundle::bundleWithIdentifier("qz.QZFoundation"_ns);
  Ref<NSString> message = QZLocalizedStringFromTableInBundle(
      "Source file does not exist"_ns, nullptr, bundle, "File copy error message"_ns);
  if (message->UTF8String() != "Die Ausgangsdatei existiert nicht") {
    std::cerr << "No German message: " << message << '\n';
    return 1;
  }
  std::cout << "QZFoundation found, built and linked\n";
  return 0;
}
