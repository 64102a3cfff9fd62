// Old-style property lists from outside: a list or a fault, and what was read comes back as it was.
#include <cstddef>
#include <cstdint>

#include "fuzz/support/PropertyListRoundTrip.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::uint32_t mutability = data[0] % 3;
  const std::string_view bytes(reinterpret_cast<const char*>(data + 1), size - 1);
  qz::NSPropertyListFormat format;
  const auto list = qz::fuzz::readList(bytes, mutability, &format);
  if (!list || format != qz::NSPropertyListOldStyleFormat) return 0;
  for (auto each : {qz::NSPropertyListOldStyleFormat, qz::NSPropertyListXMLFormat,
                    qz::NSPropertyListBinaryFormat})
    qz::fuzz::checkRoundTrip(list, each, mutability);
  return 0;
}
