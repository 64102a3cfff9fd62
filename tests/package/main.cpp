#include <iostream>

#include "Platform/Collections/NSArray.h"
#include "Platform/Runtime/NSObject.h"
#include "QZFoundation/QZFoundation.h"

using namespace qz;

namespace {

class Visitor : public Derives<Visitor, NSObject> {
 public:
  static void describe(ClassDescription<Visitor>& is) {
    is.named("Visitor").method<&Visitor::greeting>("greeting");
  }
  Ref<NSString> greeting() const { return "Hello"_ns; }
};

// A class made here and the library's know each other: by Selector, by class and by exception.
bool isAtHome() {
  auto visitor = make<Visitor>();
  auto guests = arrayByPerformingSelector(NSArray::arrayWithObjects({visitor}), "greeting"_sel);
  if (!guests->isEqual(NSArray::arrayWithObjects({"Hello"_ns}))) return false;
  if (NSClassFromString("Visitor"_ns) != classOf<Visitor>()) return false;
  if (as<NSString>(guests->objectAtIndex(0)) == nullptr) return false;
  try {
    send<void>(visitor, "gretting"_sel);
  } catch (const Raised&) {
    return true;
  }
  return false;
}

}  // namespace

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
  if (!isAtHome()) {
    std::cerr << "A class of this program does not get on with the library\n";
    return 1;
  }
  std::cout << "QZFoundation found, built and linked\n";
  return 0;
}
