#include "QZFoundation/QZStorageSizeFormatter.h"

#include <algorithm>
#include <utility>

#include "Platform/Runtime/Describe.h"
#include "Platform/Text/NSCoder.h"
#include "Platform/Values/NSFoundationVersion.h"
#include "Platform/Values/NSMutableString.h"
#include "Platform/Values/NSNumber.h"
#include "Platform/Values/detail/StringStorage.h"

namespace qz {

void QZStorageSizeFormatter::describe(ClassDescription<QZStorageSizeFormatter>& is) {
  is.named("QZStorageSizeFormatter")
      .initializer<&QZStorageSizeFormatter::initWithCoder>("initWithCoder:")
      .classMethod<&QZStorageSizeFormatter::storageSizeStringForBytes>("storageSizeStringForBytes:")
      .property<&QZStorageSizeFormatter::storageSizeMode,
                &QZStorageSizeFormatter::setStorageSizeMode>("storageSizeMode");
}

namespace {

// The last platform version that counts in powers of two.
constexpr int lastBinaryVersion = 677;

struct Unit {
  NSString* name;
  std::uint64_t binary;
  std::uint64_t decimal;

  std::uint64_t bytes(std::int32_t mode) const noexcept { return mode == 0 ? binary : decimal; }
};

// The greatest first.
const Unit units[] = {{detail::literal<"TB">(), 1ull << 40, 1'000'000'000'000},
                      {detail::literal<"GB">(), 1ull << 30, 1'000'000'000},
                      {detail::literal<"MB">(), 1ull << 20, 1'000'000},
                      {detail::literal<"KB">(), 1ull << 10, 1000},
                      {detail::literal<"bytes">(), 1, 1}};

Ref<NSString> withUnit(NSString& number, NSString& unit) {
  const std::u16string_view first = number.view();
  const std::u16string_view second = unit.view();
  return detail::fillString(first.size() + 1 + second.size(), [&](char16_t* to) {
    to = std::copy(first.begin(), first.end(), to);
    *to++ = u' ';
    std::copy(second.begin(), second.end(), to);
  });
}

}  // namespace

QZStorageSizeFormatter::QZStorageSizeFormatter()
    : mode_(static_cast<int>(NSFoundationVersionNumber) > lastBinaryVersion ? 1 : 0) {}

Ref<QZStorageSizeFormatter> QZStorageSizeFormatter::init() {
  return make<QZStorageSizeFormatter>();
}

Ref<QZStorageSizeFormatter> QZStorageSizeFormatter::initWithCoder(NSCoder* coder) {
  auto made = init();
  made->takeSettings(coder);
  return made;
}

Ref<NSString> QZStorageSizeFormatter::storageSizeStringForBytes(std::uint64_t bytes) {
  static QZStorageSizeFormatter* const shared = [] {
    auto formatter = init();
    formatter->setFormat("#,##0.0;0;#,##0.0"_ns);
    return formatter.leak();
  }();
  const auto count = NSNumber::numberWithUnsignedLongLong(bytes);
  return shared->stringForObjectValue(count);
}

Ref<NSString> QZStorageSizeFormatter::stringForObjectValue(NSObject* object) const {
  auto* number = as<NSNumber>(object);
  if (number == nullptr) return nullptr;
  if (number->longLongValue() < 0) return "--"_ns;
  const std::uint64_t bytes = number->unsignedLongLongValue();
  for (const Unit& unit : units) {
    if (bytes < unit.bytes(mode_)) continue;
    const float value = static_cast<float>(bytes) / static_cast<float>(unit.bytes(mode_));
    const auto quotient = NSNumber::numberWithFloat(value);
    const Ref<NSString> text = NSNumberFormatter::stringForObjectValue(quotient);
    if (text) return withUnit(*text, *unit.name);
    break;
  }
  const Ref<NSString> text = NSNumberFormatter::stringForObjectValue(number);
  return NSString::stringWithFormat("%@ bytes"_ns, text);
}

Ref<NSString> QZStorageSizeFormatter::editingStringForObjectValue(NSObject* object) const {
  return NSNumberFormatter::stringForObjectValue(object);
}

bool QZStorageSizeFormatter::getObjectValue_forString_errorDescription(Ref<NSObject>* object,
                                                                       NSString* string,
                                                                       Ref<NSString>* error) const {
  constexpr std::uint32_t anyCaseFromEnd = NSCaseInsensitiveSearch | NSBackwardsSearch;
  detail::requireString(string, "getObjectValue:forString:errorDescription:");
  std::uint64_t multiplier = 1;
  Ref<NSString> number = string;
  for (const Unit& unit : units) {
    const NSRange found = string->rangeOfString_options(unit.name, anyCaseFromEnd);
    if (found.location == NSNotFound) continue;
    multiplier = unit.bytes(mode_);
    number = string->substringToIndex(found.location)
                 ->stringByReplacingOccurrencesOfString_withString(" "_ns, ""_ns);
    break;
  }
  Ref<NSObject> parsed;
  Ref<NSString> message;
  NSNumberFormatter::getObjectValue_forString_errorDescription(&parsed, number, &message);
  const NSNumber* count = as<NSNumber>(parsed.get());
  Ref<NSNumber> bytes;
  if (!message && count != nullptr)
    bytes = NSNumber::numberWithUnsignedLongLong(count->unsignedLongLongValue() * multiplier);
  const bool isRead = bytes != nullptr;
  deliver(object, error, std::move(bytes), std::move(message));
  return isRead;
}

Ref<NSObject> QZStorageSizeFormatter::copy() const {
  Ref<NSObject> other = NSNumberFormatter::copy();
  as<QZStorageSizeFormatter>(other.get())->mode_ = mode_;
  return other;
}

}  // namespace qz
