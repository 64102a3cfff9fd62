#include "QZFoundation/NSData-QZFoundation.h"

#include <zlib.h>

#include <cmath>
#include <cstdlib>
#include <memory>

#include "Platform/Runtime/Describe.h"
#include "Platform/System/detail/PathBytes.h"
#include "Platform/Values/NSUUID.h"

namespace qz {
namespace {

const Bytef* bytesOf(NSData* data) { return static_cast<const Bytef*>(data->bytes()); }

// Null also for what can be no path. A child process gets no copy of the file ("e").
gzFile openForWriting(NSString* path) {
  const detail::PathBytes bytes(path);
  return bytes.error() == 0 ? gzopen(bytes.c_str(), "wbe") : nullptr;
}

}  // namespace

Ref<NSData> compressedData(NSData* self) {
  const auto capacity = static_cast<std::uint32_t>(std::ceil(self->length() * 1.001)) + 12;
  std::unique_ptr<void, decltype(&std::free)> buffer(std::malloc(capacity), &std::free);
  uLongf length = capacity;
  if (!buffer ||
      compress(static_cast<Bytef*>(buffer.get()), &length, bytesOf(self), self->length()) != Z_OK)
    return nullptr;
  if (void* const fitting = std::realloc(buffer.get(), length)) {
    static_cast<void>(buffer.release());
    buffer.reset(fitting);
  }
  return NSData::dataWithBytesNoCopy_length(buffer.release(), static_cast<std::uint32_t>(length));
}

int writeToGzipFile(NSData* self, NSString* path) {
  const gzFile file = openForWriting(path);
  if (file == nullptr) {
    int number = 0;
    gzerror(nullptr, &number);
    return number;
  }
  const int written = gzwrite(file, self->bytes(), self->length());
  gzclose(file);
  return written;
}

Ref<NSData> UUIDData() {
  const NSUUID::Bytes bytes = CFUUIDGetUUIDBytes(CFUUIDCreate());
  return NSData::dataWithBytes_length(bytes.data(), bytes.size());
}

void detail::registerNSDataQZFoundation() {
  extend<NSData>("QZFoundation")
      .method<&compressedData>("compressedData")
      .method<&writeToGzipFile>("writeToGzipFile:")
      .classMethod<&UUIDData>("UUIDData");
}

}  // namespace qz
