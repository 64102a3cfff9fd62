#include "QZFoundation/detail/DebugKeys.h"

#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Runtime/Send.h"
#include "Platform/Values/NSString.h"
#include "QZFoundation/NSObject-QZFoundation.h"

namespace qz::detail {

Ref<NSArray> debugKeys() {
  auto keys = NSMutableArray::array();
  const auto defaults =
      send<Ref<NSObject>>(Class::named("NSUserDefaults"), "standardUserDefaults"_sel);
  const auto value = send<Ref<NSObject>>(defaults, "objectForKey:"_sel, "QZDebug"_ns);
  if (!value) return keys;
  for (NSObject* each : objectAsArray(value))
    if (isKind<NSString>(each)) keys->addObject(each);
  return keys;
}

}  // namespace qz::detail
