/// @file
/// What tests of formatters share.
#pragma once

#include "Platform/Text/NSDateFormatter.h"
#include "Platform/Text/NSLocale.h"
#include "Platform/Text/NSTimeZone.h"
#include "tests/support/Test.h"

namespace qz::test {

inline Ref<NSLocale> locale(std::string_view name) {
  return NSLocale::localeWithLocaleIdentifier(NSString::stringWithUTF8String(name));
}

constexpr double moment = 1709214600.25;  ///< Thursday, 2024-02-29 13:50:00.250 UTC

/// With a locale and a zone.
Ref<NSDateFormatter> setUp(Ref<NSDateFormatter> formatter, std::string_view locale, NSString* zone);

/// What the formatter shows for a date.
std::string text(NSDateFormatter* formatter, double seconds);

struct Read {
  Ref<NSObject> value;
  std::string error;  ///< Empty when there was none.
};

/// What the formatter reads, having checked that what it answers, the value and the error tell the
/// same.
Read read(NSFormatter* formatter, NSString* text);

/// The Object as it comes back from an archive.
Ref<NSObject> throughArchive(NSObject* object);

/// Threads that use the formatter at once read what they have shown.
void expectServesManyThreads(NSFormatter* shared, const std::function<Ref<NSObject>(int)>& value);

}  // namespace qz::test
