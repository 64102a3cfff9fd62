#include "Platform/System/detail/ArgumentDefaults.h"

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/System/detail/OldStylePropertyList.h"
#include "Platform/Values/NSString.h"

namespace qz::detail {
namespace {

bool isNumber(std::u16string_view word) {
  if (word.starts_with(u'-')) word.remove_prefix(1);
  if (word.starts_with(u'.')) word.remove_prefix(1);
  return !word.empty() && word[0] >= '0' && word[0] <= '9';
}

bool isName(std::u16string_view word) {
  return word.size() > 1 && word[0] == '-' && word[1] != '-' && !isNumber(word);
}

bool isValue(std::u16string_view word) { return !word.starts_with(u'-') || isNumber(word); }

// Only what begins as lists do is taken for one: elsewhere blanks and semicolons mean themselves.
Ref<NSObject> valueOf(NSString* word) {
  constexpr std::u16string_view starts = u"{(<\"";
  const std::u16string_view text = word->view();
  if (!text.empty() && starts.find(text[0]) != starts.npos) {
    PropertyListFault fault;
    if (auto list = readOldStylePropertyList(text, {0, /*isTable=*/false}, &fault)) return list;
  }
  return word;
}

}  // namespace

Ref<NSDictionary> defaultsOfArguments(NSArray* words) {
  auto values = NSMutableDictionary::dictionary();
  const std::uint32_t count = words->count();
  for (std::uint32_t i = 1; i + 1 < count; ++i) {
    const auto word = as<NSString>(words->objectAtIndex(i));
    const auto next = as<NSString>(words->objectAtIndex(i + 1));
    if (!isName(*word) || !isValue(*next)) continue;
    values->setObject_forKey(valueOf(next), word->substringFromIndex(1));
    ++i;
  }
  return as<NSDictionary>(values->copy());
}

}  // namespace qz::detail
