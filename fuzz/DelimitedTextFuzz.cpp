// Delimited text, read into Dictionaries and put together again: what was read is the text up to
// the last whole record, field by field, and nothing else.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/Runtime/Describe.h"
#include "QZFoundation/NSArray-QZDelimitedText.h"
#include "fuzz/support/Require.h"

using namespace qz;
using fuzz::require;

namespace {

constexpr const char* keyNames[] = {"a", "b", "c"};

/// The fields of `record` that have an end, at most `most`.
std::u16string wholeFields(std::u16string_view record, std::u16string_view fieldEnd,
                           std::size_t most) {
  std::u16string fields;
  for (std::size_t i = 0; i < most; ++i) {
    const std::size_t end = record.find(fieldEnd);
    if (record.empty() || end == std::u16string_view::npos) break;
    fields += record.substr(0, end + fieldEnd.size());
    record.remove_prefix(end + fieldEnd.size());
  }
  return fields;
}

std::u16string fieldsOf(NSMutableDictionary* object, NSArray* keys, std::u16string_view fieldEnd) {
  std::u16string fields;
  std::uint32_t found = 0;
  for (NSObject* key : keys) {
    const auto value = as<NSString>(object->objectForKey(key));
    if (!value) break;
    fields += value->view();
    fields += fieldEnd;
    ++found;
  }
  require(object->count() == found);  // fields are set from the first key on
  return fields;
}

}  // namespace

// The first byte says how long the two delimiters are, which follow; the rest is the text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  const std::size_t recordLength = 1 + data[0] % 3;
  const std::size_t fieldLength = 1 + data[0] / 3 % 3;
  if (bytes.size() < recordLength + fieldLength) return 0;
  const auto recordEnd = NSString::stringWithUTF8String(bytes.substr(0, recordLength));
  const auto fieldEnd = NSString::stringWithUTF8String(bytes.substr(recordLength, fieldLength));
  const auto text = NSString::stringWithUTF8String(bytes.substr(recordLength + fieldLength));
  std::vector<Ref<NSString>> names;
  for (std::size_t i = 0; i < std::size_t{data[0]} / 9 % 4; ++i)
    names.push_back(NSString::stringWithUTF8String(keyNames[i]));
  const auto keys = NSArray::fromRange(names);

  const auto objects = arrayWithDelimitedText_objectDelimiter_fieldDelimiter_keys_objectClass(
      text, recordEnd, fieldEnd, keys, classOf<NSMutableDictionary>());
  std::u16string_view rest = text->view();
  for (NSMutableDictionary* object : elements<NSMutableDictionary>(objects)) {
    const std::size_t end = rest.find(recordEnd->view());
    require(end != std::u16string_view::npos);
    require(fieldsOf(object, keys, fieldEnd->view()) ==
            wholeFields(rest.substr(0, end), fieldEnd->view(), names.size()));
    rest.remove_prefix(end + recordEnd->length());
  }
  require(rest.find(recordEnd->view()) == std::u16string_view::npos);
  return 0;
}
