#include "QZFoundation/QZHMSFormatter.h"

#include <cmath>
#include <cstdint>

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/Send.h"
#include "Platform/Values/detail/StringStorage.h"
#include "QZFoundation/detail/HmsReader.h"

namespace qz {

void QZHMSFormatter::describe(ClassDescription<QZHMSFormatter>& is) {
  is.named("QZHMSFormatter")
      .property<&QZHMSFormatter::includeMilliseconds, &QZHMSFormatter::setIncludeMilliseconds>(
          "includeMilliseconds")
      .property<&QZHMSFormatter::includeLeadingZero, &QZHMSFormatter::setIncludeLeadingZero>(
          "includeLeadingZero");
}

Ref<QZHMSFormatter> QZHMSFormatter::init() { return make<QZHMSFormatter>(); }

Ref<NSObject> QZHMSFormatter::copy() const {
  Ref<NSObject> other = classObject()->newObject();
  auto* formatter = as<QZHMSFormatter>(other.get());
  formatter->includeMilliseconds_ = includeMilliseconds_;
  formatter->includeLeadingZero_ = includeLeadingZero_;
  return other;
}

namespace {

// A duration without its sign.
struct Duration {
  std::uint32_t seconds = 0;
  std::uint32_t milliseconds = 0;
};

Duration durationOf(double magnitude) noexcept {
  if (!std::isfinite(magnitude)) return {};
  constexpr double beyond = 4294967296;
  const double whole = std::floor(magnitude);
  return {static_cast<std::uint32_t>(whole < beyond ? whole : std::fmod(whole, beyond)),
          static_cast<std::uint32_t>((magnitude - whole) * 1000)};
}

char16_t* writeNumber(char16_t* to, std::uint32_t value) noexcept {
  if (value >= 10) to = writeNumber(to, value / 10);
  *to++ = static_cast<char16_t>(u'0' + value % 10);
  return to;
}

// Two digits, unless a single one will do.
char16_t* writePart(char16_t* to, std::uint32_t value, bool isPadded) noexcept {
  if (isPadded && value < 10) *to++ = u'0';
  return writeNumber(to, value);
}

}  // namespace

Ref<NSString> QZHMSFormatter::stringForObjectValue(NSObject* object) const {
  if (object == nullptr || !object->respondsToSelector("doubleValue"_sel)) return nullptr;
  const auto value = send<double>(object, "doubleValue"_sel);
  const Duration duration = durationOf(std::abs(value));
  const std::uint32_t minutes = duration.seconds / 60 % 60;
  const std::uint32_t hours = duration.seconds / 3600 % 24;
  const std::uint32_t days = duration.seconds / 86400;

  char16_t text[40];  // more than "-49710:23:59:59.999"
  char16_t* to = text;
  if (value < 0.0) *to++ = u'-';
  if (days != 0) {
    to = writeNumber(to, days);
    *to++ = u':';
  }
  // Hours have no leading zero, and below a minute the colon stays: both are wanted so.
  if (days != 0 || hours != 0) {
    to = writeNumber(to, hours);
    *to++ = u':';
  }
  if (days != 0 || hours != 0 || minutes != 0)
    to = writePart(to, minutes, includeLeadingZero_ || hours != 0);
  *to++ = u':';
  to = writePart(to, duration.seconds % 60, includeLeadingZero_ || minutes != 0);
  if (includeMilliseconds_ && duration.milliseconds != 0) {
    *to++ = u'.';
    *to++ = static_cast<char16_t>(u'0' + duration.milliseconds / 100);
    to = writePart(to, duration.milliseconds % 100, true);
  }
  return detail::makeString({text, static_cast<std::size_t>(to - text)});
}

bool QZHMSFormatter::getObjectValue_forString_errorDescription(Ref<NSObject>* object,
                                                               NSString* string,
                                                               Ref<NSString>* error) const {
  detail::requireString(string, "getObjectValue:forString:errorDescription:");
  detail::HmsReader reader(string);
  reader.read();
  return deliver(object, error, reader.value(), reader.error());
}

}  // namespace qz
