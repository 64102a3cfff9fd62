// What the printers are asked about.
#include "Platform/Runtime/Describe.h"
#include "QZFoundation/QZFoundation.h"

using namespace qz;

class Town : public Derives<Town, NSObject> {
 public:
  static void describe(ClassDescription<Town>& is) { is.named("Town"); }
  Ref<NSString> description() const override {
    if (size < 0) throw 1;
    return NSString::stringWithFormat("town of %d"_ns, size);
  }
  int size = 0;
};

[[gnu::noinline]] void stop(const Ref<NSString>&) { asm volatile(""); }

int main() {
  Ref<NSString> name = NSString::stringWithUTF8String("Zürich \xF0\x9F\x9A\x82");
  Ref<NSNumber> number = NSNumber::numberWithInt(42);
  Ref<NSArray> list = NSArray::arrayWithObjects({"a"_ns, "b"_ns});
  Ref<NSDictionary> dictionary = NSDictionary::dictionaryWithObject_forKey("v"_ns, "k"_ns);
  Ref<NSError> error = NSError::errorWithDomain_code_userInfo(NSPOSIXErrorDomain, 2, nullptr);
  Ref<QZIndexMap> map = sortMapUsingSelector(list, "compare:"_sel);
  Ref<NSObject> nothing;
  Town town;
  town.size = 3;
  Town broken;
  broken.size = -1;
  NSObject* plain = &town;
  stop(name);
  return plain == nullptr;
}
