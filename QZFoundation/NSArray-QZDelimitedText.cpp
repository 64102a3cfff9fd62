#include "QZFoundation/NSArray-QZDelimitedText.h"

#include <string_view>
#include <utility>
#include <vector>

#include "Platform/Runtime/Class.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Values/detail/StringStorage.h"
#include "Platform/Values/detail/UnitSearch.h"

namespace qz {
namespace {

constexpr auto operation =
    "arrayWithDelimitedText:objectDelimiter:fieldDelimiter:keys:objectClass:";

std::u16string_view requireDelimiter(NSString* delimiter, const char* what) {
  detail::requireArgument(operation, what, delimiter);
  if (delimiter->length() == 0)
    detail::raise(NSInvalidArgumentException, std::string(operation) + ": " + what + " is empty");
  return delimiter->view();
}

/// Takes from `rest` what stands before the next `delimiter`, and the delimiter; false when there
/// is none, and `rest` is as it was.
bool cut(std::u16string_view& rest, std::u16string_view delimiter, std::u16string_view& piece) {
  const std::size_t at = delimiter.size() == 1 ? detail::findUnit(rest, delimiter[0])
                                               : detail::findUnits(rest, delimiter);
  if (at == std::u16string_view::npos) return false;
  piece = rest.substr(0, at);
  rest.remove_prefix(at + delimiter.size());
  return true;
}

}  // namespace

Ref<NSMutableArray> arrayWithDelimitedText_objectDelimiter_fieldDelimiter_keys_objectClass(
    NSString* text, NSString* objectDelimiter, NSString* fieldDelimiter, NSArray* keys,
    Class* objectClass) {
  // Setting values runs code of the class, which may change a mutable String.
  const Ref<NSString> settledText =
      text == nullptr ? NSString::string() : NSString::stringWithString(text);
  const std::u16string recordEnd(requireDelimiter(objectDelimiter, "the object delimiter"));
  const std::u16string fieldEnd(requireDelimiter(fieldDelimiter, "the field delimiter"));
  detail::requireArgument(operation, "the class", objectClass);
  std::vector<Ref<NSString>> names;
  for (NSString* key : elements<NSString>(keys)) names.push_back(NSString::stringWithString(key));

  detail::ArrayBuilder objects;
  std::u16string_view rest = settledText->view();
  std::u16string_view record;
  std::u16string_view field;
  while (cut(rest, recordEnd, record)) {
    Ref<NSObject> object = objectClass->newObject();
    for (std::size_t i = 0; i < names.size() && cut(record, fieldEnd, field); ++i)
      object->setValue_forKey(detail::makeString(field), names[i]);
    objects.take(std::move(object));
  }
  return detail::finishMutable(objects);
}

void detail::registerNSArrayQZDelimitedText() {
  extend<NSArray>("QZFoundation")
      .classMethod<&arrayWithDelimitedText_objectDelimiter_fieldDelimiter_keys_objectClass>(
          "arrayWithDelimitedText:objectDelimiter:fieldDelimiter:keys:objectClass:");
}

}  // namespace qz
