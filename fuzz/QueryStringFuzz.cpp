// Query strings, lines and pieces of any text: nothing is lost, and counts agree.
#include <cstddef>
#include <cstdint>
#include <string>

#include "QZFoundation/NSString-QZSearch.h"
#include "fuzz/support/Require.h"

using namespace qz;
using fuzz::require;

namespace {

void checkQuery(NSString* text) {
  Ref<NSDictionary> pairs = parseQueryString(text);
  std::u16string query;
  for (const auto& [key, value] : pairs) {
    const std::u16string name(as<NSString>(key)->view());
    require(name.find_first_of(u"&=") == name.npos);
    query += std::u16string(query.empty() ? u"" : u"&") + name + u"=" +
             std::u16string(as<NSString>(value)->view());
  }
  require(parseQueryString(NSString::stringWithCharacters(query))->isEqual(pairs));
}

void checkPieces(NSString* text) {
  std::u16string joined;
  Ref<NSMutableArray> pieces = stringsBySeparatingAtCharactersInSet(
      text, NSCharacterSet::characterSetWithCharactersInString("&= \n"_ns));
  for (NSObject* each : *pieces) joined += as<NSString>(each)->view();
  require(joined == text->view());
}

void checkLines(NSString* text) {
  const std::uint32_t count = numberOfLines(text);
  std::uint32_t end = 0;
  for (std::uint32_t i = 0; i < count && i < 50; ++i) {
    const NSRange line = rangeForLineNumber(text, i);
    require(line.location == end && line.length > 0);
    end = line.location + line.length;
  }
  require(end <= text->length());
  require(rangeForLineNumber(text, count).location == NSNotFound);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Ref<NSString> text = NSString::stringWithUTF8String({reinterpret_cast<const char*>(data), size});
  checkQuery(text);
  checkPieces(text);
  checkLines(text);
  return 0;
}
