#include "QZFoundation/NSFileManager-QZVolumes.h"

#include "Platform/Collections/NSDictionary.h"
#include "Platform/Runtime/Describe.h"
#include "QZFoundation/detail/Volumes.h"

namespace qz {
namespace {

std::optional<NSMountRecord> volumeOf(NSString* path) {
  if (!NSFileManager::defaultManager()->fileExistsAtPath(path)) return std::nullopt;
  return detail::mountRecordForPath(path);
}

Ref<NSString> mountPathOf(const NSMountRecord& record) {
  return NSString::stringWithFileSystemRepresentation(record.mountedOn);
}

}  // namespace

Ref<NSString> volumeMountPathForFilePath(NSFileManager*, NSString* path) {
  const auto record = volumeOf(path);
  return record ? mountPathOf(*record) : nullptr;
}

Ref<NSDictionary> volumeAttributesForPath(NSFileManager*, NSString* path) {
  const auto record = volumeOf(path);
  const auto attributes = record ? NSMountTable::current()->attributes(*record) : std::nullopt;
  if (!attributes) return nullptr;
  // Ends at the first nil, so a volume without a label has no time either: deliberate.
  return NSDictionary::dictionaryWithObjectsAndKeys(
      mountPathOf(*record), QZVolumeMountPath, detail::volumeNameOf(*attributes), QZVolumeName,
      detail::dateOfSeconds(attributes->created), QZVolumeCreationDate);
}

void detail::registerNSFileManagerQZVolumes() {
  extend<NSFileManager>("QZVolumes")
      .method<&volumeMountPathForFilePath>("volumeMountPathForFilePath:")
      .method<&volumeAttributesForPath>("volumeAttributesForPath:");
}

}  // namespace qz
