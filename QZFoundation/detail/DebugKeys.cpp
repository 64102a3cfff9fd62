#include "QZFoundation/detail/DebugKeys.h"

#include "Platform/Collections/NSMutableArray.h"
#include "Platform/System/NSUserDefaults.h"
#include "QZFoundation/NSObject-QZFoundation.h"

namespace qz::detail {

Ref<NSArray> debugKeys() {
  auto keys = NSMutableArray::array();
  const auto value = NSUserDefaults::standardUserDefaults()->objectForKey("QZDebug"_ns);
  if (!value) return keys;
  for (NSObject* each : objectAsArray(value))
    if (isKind<NSString>(each)) keys->addObject(each);
  return keys;
}

}  // namespace qz::detail
