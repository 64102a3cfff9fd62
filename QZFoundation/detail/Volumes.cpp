#include "QZFoundation/detail/Volumes.h"

#include <string>

namespace qz::detail {

std::optional<NSMountRecord> mountRecordForPath(NSString* path) {
  if (path == nullptr || path->view().find(u'\0') != std::u16string_view::npos) return std::nullopt;
  return NSMountTable::current()->recordForPath(path->fileSystemRepresentation());
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
