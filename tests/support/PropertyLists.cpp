#include "tests/support/PropertyLists.h"

#include <bit>

namespace qz::test {
namespace {

using Random = std::mt19937_64;

Ref<NSString> text(Random& random) {
  constexpr const char* pieces[] = {"a",  "Zebra", " ",  "\n",     "\t", "\r", "\r\n", "<",
                                    "&",  ">",     "\"", "'",      "ü",  "–",  "中",   "😀",
                                    "]]", "&amp;", "0",  "\u00A0", "=",  "é",  "/*",   "\x7F"};
  std::string all;
  for (std::size_t left = random() % 8; left > 0; --left)
    all += pieces[random() % std::size(pieces)];
  return ns(all);
}

Ref<NSObject> integer(Random& random) {
  const std::uint64_t bits = random() >> random() % 64;
  switch (random() % 3) {
    case 0:
      return NSNumber::of(bits);
    case 1:
      return NSNumber::of(static_cast<std::int64_t>(bits));
    default:
      return NSNumber::of(static_cast<std::int16_t>(-static_cast<std::int16_t>(bits & 0x7FFF)));
  }
}

Ref<NSObject> real(Random& random) {
  constexpr double special[] = {0.0, 1.0, 0.1, 1e300, -5e-324, HUGE_VAL, -HUGE_VAL, 1e16};
  if (random() % 2 == 0) return NSNumber::of(special[random() % std::size(special)]);
  const auto value = std::bit_cast<double>(random());
  return NSNumber::of(value == value ? value : 0.5);
}

Ref<NSObject> data(Random& random) {
  std::string bytes(random() % 200, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random());
  return NSData::dataWithBytes(bytes);
}

}  // namespace

Ref<NSObject> read(std::string_view bytes, std::uint32_t mutability) {
  Ref<NSString> problem;
  auto list =
      NSPropertyListSerialization::propertyListFromData_mutabilityOption_format_errorDescription(
          NSData::dataWithBytes(bytes), mutability, nullptr, &problem);
  EXPECT_TRUE(list && !problem) << problem;
  return list;
}

std::string written(NSObject* list, NSPropertyListFormat format) {
  Ref<NSString> problem = "left over"_ns;
  auto data = NSPropertyListSerialization::dataFromPropertyList_format_errorDescription(
      list, format, &problem);
  EXPECT_EQ(data == nullptr, problem != nullptr);
  return data ? std::string(data->view()) : "refused: " + problem->UTF8String();
}

Ref<NSObject> randomPropertyList(Random& random, int levels) {
  switch (random() % (levels > 0 ? 10 : 6)) {
    case 0:
      return NSNumber::of(random() % 2 == 0);
    case 1:
      return integer(random);
    case 2:
      return real(random);
    case 3: {
      const auto second = static_cast<std::int64_t>(random() % 250'000'000'000) - 62'000'000'000;
      return NSDate::dateWithTimeIntervalSince1970(static_cast<double>(second));
    }
    case 4:
      return data(random);
    case 5:
      return text(random);
    case 6:
    case 7: {
      auto array = NSMutableArray::array();
      for (std::size_t left = random() % 20; left > 0; --left)
        array->addObject(randomPropertyList(random, levels - 1));
      return array;
    }
    default: {
      auto dictionary = NSMutableDictionary::dictionary();
      for (std::size_t left = random() % 20; left > 0; --left)
        dictionary->setObject_forKey(randomPropertyList(random, levels - 1), text(random));
      return dictionary;
    }
  }
}

}  // namespace qz::test
