// Key paths from outside: whatever their text, a value, an unknown key or nil comes of them.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSNumber.h"
#include "Platform/Values/NSString.h"

using namespace qz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  auto path = NSString::stringWithUTF8String({reinterpret_cast<const char*>(data), size});
  auto inner = make<NSMutableDictionary>();
  inner->setObject_forKey(NSArray::arrayWithObjects({"a"_ns, "bc"_ns}), "list"_ns);
  auto outer = make<NSMutableDictionary>();
  outer->setObject_forKey(inner, "in"_ns);
  for (int set = 0; set < 2; ++set) {
    try {
      if (set == 0)
        outer->valueForKeyPath(path);
      else
        outer->setValue_forKeyPath(NSNumber::numberWithInt(1), path);
    } catch (const Raised& raised) {
      if (!raised.is(NSUndefinedKeyException) && !raised.is(NSInvalidArgumentException)) throw;
    }
  }
  return 0;
}
