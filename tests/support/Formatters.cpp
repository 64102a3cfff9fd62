#include "tests/support/Formatters.h"

#include "Platform/Text/NSKeyedArchiver.h"
#include "tests/support/Threads.h"

namespace qz::test {

Ref<NSDateFormatter> setUp(Ref<NSDateFormatter> formatter, std::string_view name, NSString* zone) {
  formatter->setLocale(locale(name));
  formatter->setTimeZone(NSTimeZone::timeZoneWithName(zone));
  return formatter;
}

std::string text(NSDateFormatter* formatter, double seconds) {
  return to_string(formatter->stringFromDate(dateAt(seconds)));
}

Read read(NSFormatter* formatter, NSString* text) {
  Ref<NSObject> value = "left over"_ns;
  Ref<NSString> error = "left over"_ns;
  const bool isRead = formatter->getObjectValue_forString_errorDescription(&value, text, &error);
  EXPECT_EQ(isRead, error == nullptr) << text << " " << error;
  EXPECT_EQ(isRead, value != nullptr) << text << " " << value;
  return {value, error ? error->UTF8String() : ""};
}

Ref<NSObject> throughArchive(NSObject* object) {
  Ref<NSError> error;
  auto again = NSKeyedUnarchiver::unarchivedObjectOfClasses_fromData_error(
      NSArray::arrayWithObject(object->classObject()),
      NSKeyedArchiver::archivedDataWithRootObject(object), &error);
  EXPECT_EQ(error, nullptr) << error;
  return again;
}

void expectServesManyThreads(NSFormatter* shared, const std::function<Ref<NSObject>(int)>& value) {
  inThreads(4, [&](int) {
    for (int k = 0; k < 150; ++k) {
      const Ref<NSObject> expected = value(k);
      const Ref<NSString> shown = shared->stringForObjectValue(expected);
      Ref<NSObject> read;
      shared->getObjectValue_forString_errorDescription(&read, shown, nullptr);
      EXPECT_TRUE(equal(read, expected)) << shown;
    }
  });
}

}  // namespace qz::test
