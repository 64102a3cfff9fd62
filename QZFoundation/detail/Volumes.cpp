#include "QZFoundation/detail/Volumes.h"

#include <string>

#include "Platform/System/detail/PathBytes.h"

namespace qz::detail {

std::optional<NSMountRecord> mountRecordForPath(NSString* path) {
  const PathBytes bytes(path);
  if (bytes.error() != 0) return std::nullopt;
  return NSMountTable::current()->recordForPath(std::string(bytes.view()));
}

Ref<NSString> volumeNameOf(const NSVolumeAttributes& attributes) {
  if (!attributes.name) return nullptr;
  return NSString::stringWithUTF8String(*attributes.name + '\0');
}

Ref<NSDate> dateOfSeconds(std::optional<std::int64_t> seconds) {
  if (!seconds) return nullptr;
  return NSDate::dateWithTimeIntervalSince1970(static_cast<NSTimeInterval>(*seconds));
}

}  // namespace qz::detail
