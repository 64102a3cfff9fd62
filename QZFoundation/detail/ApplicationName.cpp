#include "QZFoundation/detail/ApplicationName.h"

#include "Platform/System/NSBundle.h"
#include "Platform/System/NSProcessInfo.h"

namespace qz::detail {

Ref<NSString> applicationName() {
  const auto name =
      as<NSString>(NSBundle::mainBundle()->objectForInfoDictionaryKey("CFBundleName"_ns));
  const bool isUsable = name && name->length() != 0 && !name->containsString("/"_ns);
  return isUsable ? name : NSProcessInfo::processInfo()->processName();
}

}  // namespace qz::detail
