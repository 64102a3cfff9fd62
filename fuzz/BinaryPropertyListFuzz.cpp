// Binary property lists from outside: a list or a fault, and what was read comes back as it was.
#include <cstddef>
#include <cstdint>

#include "fuzz/support/PropertyListRoundTrip.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::uint32_t mutability = data[0] % 3;
  // The head is given, so that no effort goes into finding it.
  const std::string bytes =
      "bplist00" + std::string(reinterpret_cast<const char*>(data + 1), size - 1);
  qz::NSPropertyListFormat format;
  const auto list = qz::fuzz::readList(bytes, mutability, &format);
  if (!list) return 0;
  // Not in the other formats: what the file shares would be written out as often as it is used.
  qz::fuzz::checkRoundTrip(list, qz::NSPropertyListBinaryFormat, mutability);
  return 0;
}
