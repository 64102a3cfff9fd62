#include "QZFoundation/QZDisk.h"

#include <algorithm>
#include <limits>

#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Runtime/Describe.h"
#include "QZFoundation/detail/Volumes.h"

namespace qz {
namespace {

Ref<NSString> text(std::string_view bytes) {
  return NSString::stringWithFileSystemRepresentation(bytes);
}

bool isListed(const NSMountRecord& record) {
  // By the text, so that "/VolumesX" passes as well: deliberate.
  return record.mountedOn == "/" || record.mountedOn.starts_with("/Volumes");
}

}  // namespace

Ref<NSArray> QZDisk::mountedDisks() {
  const auto records = NSMountTable::current()->records();
  if (!records) return nullptr;
  auto disks = NSMutableArray::array();
  for (const NSMountRecord& each : *records)
    if (isListed(each)) disks->addObject(initWithStat(each));
  return as<NSArray>(disks->copy());
}

Ref<QZDisk> QZDisk::diskForMountPath(NSString* path) {
  const auto record = detail::mountRecordForPath(path);
  if (!record || !text(record->mountedOn)->isEqualToString(path)) return nullptr;
  return initWithStat(*record);
}

// The test asks whether the mount path begins with the file's, not the other way round. It is what
// the file watcher relies on.
Ref<QZDisk> QZDisk::diskForFilePath(NSString* path) {
  if (path == nullptr) return nullptr;
  QZDisk* best = nullptr;
  const auto disks = mountedDisks();
  for (QZDisk* disk : elements<QZDisk>(disks)) {
    const std::uint32_t bestLength = best != nullptr ? best->mountPath_->length() : 0;
    if (disk->mountPath_->hasPrefix(path) && path->length() > bestLength) best = disk;
  }
  return Ref<QZDisk>(best);
}

Ref<QZDisk> QZDisk::initWithStat(const NSMountRecord& record) {
  auto disk = make<QZDisk>();
  disk->record_ = record;
  disk->mountPath_ = text(record.mountedOn);
  disk->devicePath_ = text(record.mountedFrom);
  disk->isMounted_ = true;
  disk->fileSystemID_ = record.identifier;
  disk->ignoresPermissions_ = (record.flags & NSMountIgnoresOwnership) != 0;
  disk->getAttrInfo();
  return disk;
}

void QZDisk::getAttrInfo() {
  getAttrInfoCached_ = true;
  const auto attributes = NSMountTable::current()->attributes(record_);
  if (!attributes) return;
  volumeName_ = detail::volumeNameOf(*attributes);
  creationDate_ = detail::dateOfSeconds(attributes->created);
  modificationDate_ = detail::dateOfSeconds(attributes->modified);
}

bool QZDisk::isLocalVolume() const { return devicePath_ && devicePath_->hasPrefix("/dev"_ns); }

std::int64_t QZDisk::availableFreeSpace() const {
  constexpr std::uint64_t most = std::numeric_limits<std::int64_t>::max();
  const auto bytes = NSMountTable::current()->freeBytes(record_.mountedOn);
  return static_cast<std::int64_t>(std::min(bytes.value_or(0), most));
}

Ref<NSString> QZDisk::description() const {
  return NSString::stringWithFormat("%@ %@ on %@"_ns, Derives::description(), devicePath_,
                                    mountPath_);
}

void QZDisk::describe(ClassDescription<QZDisk>& is) {
  is.named("QZDisk")
      .classMethod<&QZDisk::mountedDisks>("mountedDisks")
      .classMethod<&QZDisk::diskForMountPath>("diskForMountPath:")
      .classMethod<&QZDisk::diskForFilePath>("diskForFilePath:")
      .initializer<&QZDisk::initWithStat>("initWithStat:")
      .method<&QZDisk::getAttrInfo>("getAttrInfo")
      .method<&QZDisk::getAttrInfoCached>("getAttrInfoCached")
      .method<&QZDisk::availableFreeSpace>("availableFreeSpace")
      .method<&QZDisk::isLocalVolume>("isLocalVolume")
      .method<&QZDisk::fileSystemID>("fileSystemID")
      .property<&QZDisk::devicePath>("devicePath")
      .property<&QZDisk::mountPath>("mountPath")
      .property<&QZDisk::volumeName>("volumeName")
      .property<&QZDisk::creationDate>("creationDate")
      .property<&QZDisk::modificationDate>("modificationDate")
      .method<&QZDisk::isMounted>("isMounted")
      .method<&QZDisk::isWritable>("isWritable")
      .method<&QZDisk::isRemovable>("isRemovable")
      .method<&QZDisk::ignoresPermissions>("ignoresPermissions");
}

}  // namespace qz
