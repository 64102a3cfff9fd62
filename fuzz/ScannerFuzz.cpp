// A text, and what to read from it: each reading either moves on or changes nothing, and what is
// handed out stands in the text where the location was.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Platform/Values/NSCharacterSet.h"
#include "Platform/Values/NSScanner.h"
#include "Platform/Values/NSString.h"
#include "fuzz/support/Require.h"

using namespace qz;
using fuzz::require;

namespace {

bool read(NSScanner* scanner, NSString* wanted, int how, Ref<NSString>* found) {
  std::int32_t i = 0;
  std::int64_t l = 0;
  std::uint32_t x = 0;
  std::uint64_t u = 0;
  double d = 0;
  float f = 0;
  const Ref<NSCharacterSet> letters = NSCharacterSet::letterCharacterSet();
  switch (how % 12) {
    case 0:
      return scanner->scanInt(&i);
    case 1:
      return scanner->scanLongLong(&l);
    case 2:
      return scanner->scanUnsignedLongLong(&u);
    case 3:
      return scanner->scanHexInt(&x);
    case 4:
      return scanner->scanHexLongLong(&u);
    case 5:
      return scanner->scanDouble(&d);
    case 6:
      return scanner->scanFloat(&f);
    case 7:
      return scanner->scanString_intoString(wanted, found);
    case 8:
      return scanner->scanUpToString_intoString(wanted, found);
    case 9:
      return scanner->scanCharactersFromSet_intoString(letters, found);
    case 10:
      return scanner->scanUpToCharactersFromSet_intoString(letters, found);
    default:
      scanner->setCaseSensitive(!scanner->caseSensitive());
      scanner->setCharactersToBeSkipped(scanner->caseSensitive() ? nullptr : letters);
      return false;
  }
}

}  // namespace

// The first byte says how many of the next ones choose what is read; the last four are looked for.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const std::size_t steps = data[0] % size;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const auto text = NSString::stringWithUTF8String(bytes.substr(steps));
  const auto wanted = NSString::stringWithUTF8String(bytes.substr(size - size % 5));
  const auto scanner = NSScanner::scannerWithString(text);
  for (std::size_t i = 1; i <= steps; ++i) {
    const std::uint32_t before = scanner->scanLocation();
    const bool wasAtEnd = scanner->isAtEnd();
    Ref<NSString> found;
    const bool moved = read(scanner, wanted, data[i], &found);
    const std::uint32_t after = scanner->scanLocation();
    require(moved ? after > before && !wasAtEnd : after == before && !found);
    require(after <= text->length());
    if (!found) continue;
    const NSRange range{after - found->length(), found->length()};
    require(range.location >= before && text->substringWithRange(range)->isEqual(found));
  }
  return 0;
}
