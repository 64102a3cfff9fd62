// Strings: the numbers they begin with.

#include <cstdint>
#include <string_view>

#include "Platform/Runtime/Send.h"
#include "Platform/Values/NSString.h"
#include "Platform/Values/detail/NumberText.h"
#include "Platform/Values/detail/StringDescriptions.h"
#include "Platform/Values/detail/UnitKinds.h"

namespace qz {
namespace {

using detail::isBlank;

struct Start {
  bool negative = false;
  std::u16string_view rest;  // behind blanks and sign
};

Start startOf(std::u16string_view text) noexcept {
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  const bool negative = !text.empty() && text.front() == u'-';
  if (negative || (!text.empty() && text.front() == u'+')) text.remove_prefix(1);
  return {negative, text};
}

template <class T>
T clampedInteger(std::u16string_view text) noexcept {
  const Start start = startOf(text);
  return detail::signedWithin<T>(start.negative, detail::readDigits(start.rest, 10).value);
}

template <class T>
T floatingOf(std::u16string_view text) {
  const Start start = startOf(text);
  const auto number = detail::readFloating<T>(start.rest);
  return start.negative ? -number.value : number.value;
}

}  // namespace

std::int32_t NSString::intValue() const noexcept { return clampedInteger<std::int32_t>(view()); }

std::int64_t NSString::longLongValue() const noexcept {
  return clampedInteger<std::int64_t>(view());
}

std::uint64_t NSString::unsignedLongLongValue() const noexcept {
  const Start start = startOf(view());
  return start.negative ? 0 : detail::readDigits(start.rest, 10).value;
}

double NSString::doubleValue() const { return floatingOf<double>(view()); }

float NSString::floatValue() const { return floatingOf<float>(view()); }

bool NSString::boolValue() const {
  return send<bool>(const_cast<NSString*>(this), "boolValue"_sel);
}

bool detail::readTruth(NSString* string) {
  std::u16string_view text = startOf(string->view()).rest;
  while (!text.empty() && text.front() == u'0') text.remove_prefix(1);
  constexpr std::u16string_view yes = u"YyTt123456789";
  return !text.empty() && yes.find(text.front()) != yes.npos;
}

}  // namespace qz
