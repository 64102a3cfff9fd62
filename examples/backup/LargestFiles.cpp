#include "LargestFiles.h"

#include <algorithm>

#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Runtime/Describe.h"

namespace backup {

using namespace qz;

void File::describe(ClassDescription<File>& is) {
  is.named("BackupFile").field<&File::path>("path").field<&File::size>("size");
}

void LargestFiles::add(NSString* path, std::uint64_t size) {
  const auto isLarger = [](const Ref<File>& one, const Ref<File>& other) {
    return one->size > other->size;
  };
  if (size == 0 || limit_ == 0) return;
  if (heap_.size() == limit_) {
    if (heap_.front()->size >= size) return;
    std::pop_heap(heap_.begin(), heap_.end(), isLarger);
    heap_.pop_back();
  }
  heap_.push_back(make<File>(path, size));
  std::push_heap(heap_.begin(), heap_.end(), isLarger);
}

Ref<NSArray> LargestFiles::files() const {
  auto files = NSMutableArray::array();
  for (const Ref<File>& each : heap_) files->addObject(each);
  return files;
}

}  // namespace backup
