#include "Platform/Text/detail/NumberSettings.h"

#include <unicode/decimfmt.h>

#include <vector>

#include "Platform/Text/detail/IcuText.h"

namespace qz::detail {

std::optional<PatternSections> splitPattern(std::u16string_view format) {
  std::vector<std::u16string> parts(1);
  bool isQuoted = false;
  for (const char16_t unit : format) {
    if (unit == u'\'') isQuoted = !isQuoted;
    if (unit == u';' && !isQuoted)
      parts.emplace_back();
    else
      parts.back() += unit;
  }
  if (parts.size() > 3 || parts[0].empty()) return std::nullopt;
  PatternSections sections{parts[0], {}, {}};
  if (parts.size() == 3) sections.zero = parts[1];
  if (parts.size() > 1) sections.negative = parts.back();
  return sections;
}

bool isNumberPattern(std::u16string_view pattern) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::DecimalFormat format(
      copyOf(pattern), icu::DecimalFormatSymbols(icu::Locale::getRoot(), status), status);
  return U_SUCCESS(status);
}

bool hasDigitPlace(std::u16string_view pattern) noexcept {
  bool isQuoted = false;
  for (const char16_t unit : pattern) {
    if (unit == u'\'') isQuoted = !isQuoted;
    if (!isQuoted && (unit == u'#' || unit == u'@' || (unit >= u'0' && unit <= u'9'))) return true;
  }
  return false;
}

}  // namespace qz::detail
