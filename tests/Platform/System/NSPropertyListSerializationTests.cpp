#include "Platform/System/NSPropertyListSerialization.h"

#include "Platform/System/NSPropertyListUID.h"
#include "Platform/Values/NSMutableData.h"
#include "tests/support/PropertyLists.h"

namespace qz::test {
namespace {

using Serialization = NSPropertyListSerialization;

constexpr NSPropertyListFormat formats[] = {NSPropertyListOldStyleFormat, NSPropertyListXMLFormat,
                                            NSPropertyListBinaryFormat};

/// What reading answers as a description; "none" for a list.
std::string problemOf(std::string_view bytes) {
  Ref<NSString> problem = "left over"_ns;
  auto list = Serialization::propertyListFromData_mutabilityOption_format_errorDescription(
      NSData::dataWithBytes(bytes), 0, nullptr, &problem);
  EXPECT_EQ(list == nullptr, problem != nullptr);
  return problem ? problem->UTF8String() : "none";
}

std::string plist(const std::string& value) {
  return "<?xml version=\"1.0\"?>\n<plist version=\"1.0\">\n" + value + "\n</plist>";
}

/// A binary list of the objects, with one byte for each offset and reference. The first is the
/// root.
std::string binary(const std::vector<std::string>& objects) {
  std::string bytes = "bplist00", table;
  for (const std::string& object : objects) {
    table += static_cast<char>(bytes.size());
    bytes += object;
  }
  const auto start = static_cast<char>(bytes.size());
  bytes += table + std::string(6, '\0') + "\x01\x01" + std::string(7, '\0') +
           static_cast<char>(objects.size()) + std::string(15, '\0') + start;
  return bytes;
}

TEST(PropertyList, XmlIsLaidOutForPeople) {
  auto list =
      NSDictionary::of({{"b & <c>"_ns, arrayOf({NSNumber::of(-7), NSNumber::of(2.5), "x\ry"_ns})},
                        {"a"_ns, NSDictionary::of({{"no"_ns, NSNumber::of(false)}})},
                        {"date"_ns, dateAt(1709208000.9)},
                        {"data"_ns, NSData::dataWithBytes(std::string(50, '\xFF'))},
                        {"empty"_ns, arrayOf({NSArray::array(), NSDictionary::dictionary()})}});
  EXPECT_EQ(written(list, NSPropertyListXMLFormat), R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0">
<dict>
	<key>a</key>
	<dict>
		<key>no</key>
		<false/>
	</dict>
	<key>b &amp; &lt;c&gt;</key>
	<array>
		<integer>-7</integer>
		<real>2.5</real>
		<string>x&#13;y</string>
	</array>
	<key>data</key>
	<data>
	//////////////////////////////////////////////////////////////////8=
	</data>
	<key>date</key>
	<date>2024-02-29T12:00:00Z</date>
	<key>empty</key>
	<array>
		<array/>
		<dict/>
	</array>
</dict>
</plist>
)");
}

TEST(PropertyList, BinaryHoldsWhatXmlDoesNot) {
  auto more = NSArray::arrayWithObjects({NSNumber::of(0.1f),
                                         NSPropertyListUID::UIDWithUnsignedLongLong(70'000),
                                         ns(u"\xD800\x0001"), dateAt(0.5), dateAt(-1e15)});
  auto again = as<NSArray>(read(written(more, NSPropertyListBinaryFormat)));
  EXPECT_TRUE(equal(again, more)) << again;
  EXPECT_EQ(as<NSNumber>(again->objectAtIndex(0))->kind(), NumberKind::Float);
}

TEST(PropertyList, RandomListsAndTheirFormatsAreRecognised) {
  std::mt19937_64 random(7);
  for (int i = 0; i < 50; ++i) {
    const auto list = randomPropertyList(random, 3);
    const std::string bytes = written(list, NSPropertyListBinaryFormat);
    const std::string text = written(list, NSPropertyListXMLFormat);
    for (std::uint32_t mutability : {0, 1, 2}) {
      ASSERT_TRUE(written(read(text, mutability), NSPropertyListXMLFormat) == text) << i;
      ASSERT_TRUE(written(read(bytes, mutability), NSPropertyListXMLFormat) == text) << i;
    }
  }
  const auto texts =
      NSDictionary::of({{"a \"b\"\\\n//"_ns, arrayOf({"ü😀\x01"_ns, ""_ns, "plain-1.0"_ns})},
                        {"bytes"_ns, NSData::dataWithBytes("\x00\x12\xFF\x7F\x80"s)},
                        {"none"_ns, arrayOf({NSArray::array(), NSData::data()})}});
  for (NSPropertyListFormat format : formats) {
    if (format == NSPropertyListXMLFormat) continue;  // has no room for U+0001
    NSPropertyListFormat found;
    auto data = Serialization::dataFromPropertyList_format_errorDescription(texts, format, nullptr);
    auto again = Serialization::propertyListFromData_mutabilityOption_format_errorDescription(
        data, 0, &found, nullptr);
    EXPECT_TRUE(equal(again, texts)) << again;
    EXPECT_EQ(found, format);
  }
}

TEST(PropertyList, MutabilityIsAsAsked) {
  auto list = NSDictionary::of({{"k"_ns, arrayOf({"s"_ns, NSData::data()})}});
  for (NSPropertyListFormat format : formats) {
    for (std::uint32_t option : {0u, 1u, 2u, 77u}) {
      auto root = read(written(list, format), option);
      auto array = as<NSDictionary>(root)->objectForKey("k"_ns);
      const bool containers = option == 1 || option == 2;
      EXPECT_EQ(isKind<NSMutableDictionary>(root), containers);
      EXPECT_EQ(isKind<NSMutableArray>(array), containers);
      EXPECT_EQ(isKind<NSMutableString>(as<NSArray>(array)->objectAtIndex(0)), option == 2);
      EXPECT_EQ(isKind<NSMutableData>(as<NSArray>(array)->objectAtIndex(1)), option == 2);
      EXPECT_TRUE(equal(root, list));
    }
  }
}

TEST(PropertyList, BinaryWritesEqualValuesOnce) {
  auto inner = arrayOf({"shared text"_ns, NSNumber::of(1), NSNumber::of(1.0)});
  auto list = arrayOf({inner, inner, NSMutableString::stringWithString("shared text"_ns),
                       NSNumber::of(true), NSNumber::of(std::int64_t{1})});
  const std::string bytes = written(list, NSPropertyListBinaryFormat);
  EXPECT_EQ(bytes.size(), 8 + (1 + 5) + (1 + 3) + (1 + 11) + 2 + 9 + 1 + 6 + 32u);
  auto again = as<NSArray>(read(bytes, NSPropertyListMutableContainers));
  EXPECT_EQ(again->objectAtIndex(0), again->objectAtIndex(1));
}

TEST(PropertyList, XmlIsReadByTheRules) {
  const auto expectText = [](const std::string& element, const std::string& text) {
    EXPECT_EQ(to_string(read(plist(element))), text) << element;
  };
  expectText("<string>a &lt;&#65;&#x1F600;&quot;&apos;&gt;&amp;amp;</string>", "a <A😀\"'>&amp;");
  expectText("<string> <!-- c --> x\r\ny<![CDATA[ &amp; ]]> </string>", "  x\ny &amp;  ");
  expectText("<string> <![CDATA[]]></string>", " ");
  expectText("<string> </string>", " ");
  expectText("<integer> 0x1F </integer>", "31");
  expectText("<real> 1e3\n</real>", "1000");
  expectText("<real>1.5e999</real>", "inf");
  expectText("<real>-1.5e-999</real>", "-0");
  expectText("<data> /w== </data>", "<ff>");
  auto seconds = [](const std::string& date) {
    return as<NSDate>(read(plist("<date>" + date + "</date>")))->timeIntervalSince1970();
  };
  EXPECT_EQ(seconds("2000-02-29T23:59:59Z"), 951868799);
  EXPECT_EQ(seconds("1970Z"), 0);
  EXPECT_EQ(seconds("0001-01-01T00:00:00Z"), -62135596800);
  EXPECT_TRUE(equal(read("\xEF\xBB\xBF <!DOCTYPE plist SYSTEM \"x.dtd\">\n<!-- c --><?pi?>"
                         "<plist><array><!-- c --><string/></array></plist><!-- end -->"),
                    arrayOf({""_ns})));
}

TEST(PropertyList, EncodingsAreRecognised) {
  const auto text = "<?xml version=\"1.0\"?><plist><string>ü😀</string></plist>"_ns;
  for (std::uint32_t encoding :
       {NSUTF16StringEncoding, NSUTF16BigEndianStringEncoding, NSUTF16LittleEndianStringEncoding,
        NSUTF32StringEncoding, NSUTF8StringEncoding})
    EXPECT_EQ(to_string(read(text->dataUsingEncoding(encoding)->view())), "ü😀");
  EXPECT_EQ(to_string(read("<?xml version='1.0' encoding='ISO-8859-1'?>"
                           "<plist><string>\xFC</string></plist>")),
            "ü");
  EXPECT_EQ(problemOf("<?xml encoding='nonsense-9'?><plist><true/></plist>"),
            "line 1, column 1: the encoding \"nonsense-9\" is not known");
}

TEST(PropertyList, XmlFaultsSayWhatAndWhere) {
  using Case = std::pair<std::string, const char*>;
  const std::string head = "<?xml version=\"1.0\"?>\n<plist version=\"1.0\">\n";
  for (const auto& [bytes, problem] : std::vector<Case>{
           {"", "line 1, column 1: the text is empty"},
           {"<?xml version='1.0'?>", "line 1, column 22: there is no <plist> element"},
           {"<plist/>", "line 1, column 1: the <plist> element holds no value"},
           {"<?xml?><dict/>", "line 1, column 8: the root element is <dict>, not <plist>"},
           {plist("<true/><true/>"),
            "line 3, column 8: the <plist> element holds more than one value"},
           {plist("<true/>") + "x", "line 4, column 9: there is text outside the root element"},
           {plist("<true/>") + "<plist/>", "line 4, column 9: there is more than one root element"},
           {plist("<dict>\n <key>ü</key>\n</dict>"), "line 4, column 2: the key has no value"},
           {plist("<dict><true/></dict>"), "line 3, column 7: a <key> is missing before <true>"},
           {plist("<dict><key>a</key><true/><key>b</key><true/>\n<key>a</key><true/></dict>"),
            "line 4, column 1: the key \"a\" stands twice"},
           {plist("<array>\r\n<truth/></array>"),
            "line 4, column 1: <truth> is no element of a property list"},
           {plist("<array>😀</array>"), "line 3, column 8: there is text between the elements"},
           {plist("<key>a</key>"), "line 3, column 1: a <key> stands where a value is wanted"},
           {plist("<string>a<b/></string>"), "line 3, column 10: <b> stands inside of <string>"},
           {plist("<string>äb &nbsp;</string>"),
            "line 3, column 12: this is no character or entity of XML's own"},
           {plist("<string>\x01</string>"), "line 3, column 9: the text has a control character"},
           {plist("<integer>18446744073709551616</integer>"),
            "line 3, column 1: \"18446744073709551616\" is not an integer of 64 bits"},
           {plist("<integer>-9223372036854775809</integer>"),
            "line 3, column 1: \"-9223372036854775809\" is not an integer of 64 bits"},
           {plist("<real>--1</real>"), "line 3, column 1: \"--1\" is not a number"},
           {plist("<date>2023-02-29T00:00:00Z</date>"),
            "line 3, column 1: \"2023-02-29T00:00:00Z\" is not a date such as "
            "2024-02-29T12:00:00Z"},
           {plist("<data>A</data>"), "line 3, column 1: the data is not in base 64"},
           {plist("<true>x</true>"), "line 3, column 1: <true> is not empty"},
           {head + "<array>\n<string>",
            "line 4, column 9: the end of an element is missing or that of another one"},
           {"<!DOCTYPE plist [<!ENTITY a \"b\">]><plist><string>&a;</string></plist>",
            "line 1, column 11: the document type declares entities or elements of its own"},
           {"<plist>\n<string>\xFF</string></plist>", "line 2, column 9: the text is not UTF-8"},
           {"<plist>\0</plist>"s, "line 1, column 8: a zero byte is no XML"},
       })
    EXPECT_EQ(problemOf(bytes), problem) << bytes;
}

TEST(PropertyList, OldStyleFaultsSayWhatAndWhere) {
  EXPECT_EQ(problemOf("// nothing"), "line 1, column 11: the text is empty");
  EXPECT_EQ(problemOf("{ a = 1;\n b = 2; a = 3; }"),
            "line 2, column 9: the key \"a\" stands twice");
  EXPECT_EQ(problemOf("{ a = <12 3>; }"), "line 1, column 11: half a byte in data");
  EXPECT_EQ(problemOf("(<12"), "line 1, column 2: the data has no end");
  EXPECT_EQ(problemOf("(<xy>)"), "line 1, column 3: unexpected 'x' in data");
}

TEST(PropertyList, BinaryFaultsSayWhatAndWhere) {
  const std::string text = "\x51x", cycle = "\xA1\x00"s;
  EXPECT_EQ(to_string(read(binary({"\xD1\x01\x01", text}))), "{\n    x = x;\n}");
  using Case = std::pair<std::string, const char*>;
  std::string lies = binary({text});
  lies[lies.size() - 1] = '\x7F';
  std::string tooMany = binary({text});
  tooMany[tooMany.size() - 24] = '\x7F';
  for (const auto& [bytes, problem] : std::vector<Case>{
           {"bplist01", "byte 0: this is no binary property list of version 00"},
           {"bplist00", "byte 8: the trailer is missing"},
           {lies, "byte 35: the table of offsets lies outside of the file"},
           {tooMany, "byte 19: there is no room for as many objects"},
           {binary({cycle}), "byte 9: a container contains itself"},
           {binary({"\xA1\x07"}), "byte 9: there is no object 7"},
           {binary({"\xD2\x01\x01\x01\x01", text}), "byte 8: the key \"x\" stands twice"},
           {binary({"\xD1\x01\x01", "\x09"}), "byte 8: a key of the dictionary is no string"},
           {binary({"\x5F\x10\x50"s + "x"}), "byte 8: the object is longer than the file"},
           {binary({"\x5Fx"}), "byte 8: the count is missing"},
           {binary({"\x52\xFFx"}), "byte 9: the character is not ASCII"},
           {binary({"\x14\x01"s + std::string(15, '\0')}),
            "byte 8: the integer takes more than 64 bits"},
           {binary({"\x33\x7F\xF0"s + std::string(6, '\0')}),
            "byte 8: the date is infinite or no number"},
           {binary({"\x00"s}), "byte 8: there is no kind of object 0"},
           {binary({"\xA3\x01\x01\x01",
                    "\x4F\x10\x04"
                    "abcd",
                    text}),
            "none"},
       })
    EXPECT_EQ(problemOf(bytes), problem) << problem;
  // Many objects over the same bytes: a few kilobytes would become gigabytes.
  EXPECT_EQ(problemOf(binary({"\xA3\x01\x02\x03", "", "", "\x58long text"})),
            "byte 12: objects overlap");
}

TEST(PropertyList, CutOffAnywhereItIsRefused) {
  std::mt19937_64 random(11);
  auto list = arrayOf({randomPropertyList(random, 2), "end"_ns, NSNumber::of(1.5)});
  const std::string xml = written(list, NSPropertyListXMLFormat);
  for (std::size_t i = 0; i + 1 < xml.size(); ++i)
    ASSERT_NE(problemOf(xml.substr(0, i)), "none") << i;
  const std::string bytes = written(list, NSPropertyListBinaryFormat);
  // Up to "bplis" it is a word in old-style text.
  for (std::size_t i = 6; i < bytes.size(); ++i)
    ASSERT_NE(problemOf(bytes.substr(0, i)), "none") << i;
  // Any one byte another one: an answer, whatever it is.
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    std::string damaged = bytes;
    damaged[i] = static_cast<char>(damaged[i] ^ (1 << random() % 8));
    problemOf(damaged);
  }
}

TEST(PropertyList, NestingAndCyclesAreBounded) {
  constexpr std::size_t million = 1'000'000;
  const auto repeated = [](std::string_view text, std::size_t times) {
    std::string all;
    for (std::size_t i = 0; i < times; ++i) all += text;
    return all;
  };
  EXPECT_EQ(problemOf(plist(repeated("<array>", million) + repeated("</array>", million))),
            "line 3, column 3585: nested too deep");
  EXPECT_EQ(problemOf(std::string(million, '(')), "line 1, column 513: nested too deep");
  for (std::uint32_t depth : {512u, 513u, 100'000u}) {
    Ref<NSObject> list = "deep"_ns;
    for (std::uint32_t i = 0; i < depth; ++i) list = arrayOf({list});
    for (NSPropertyListFormat format : formats) {
      const std::string bytes = written(list, format);
      EXPECT_EQ(bytes.starts_with("refused: root[0][0]"), depth > 512);
      EXPECT_EQ(bytes.ends_with("nested too deep"), depth > 512);
      if (depth == 512) {
        EXPECT_TRUE(equal(read(bytes), list));
      }
    }
  }
  auto loop = NSMutableDictionary::dictionary();
  loop->setObject_forKey(arrayOf({""_ns, loop}), "k"_ns);
  for (NSPropertyListFormat format : formats)
    EXPECT_TRUE(written(loop, format).ends_with("a container contains itself"));
  loop->removeAllObjects();
}

TEST(PropertyList, WhatCannotBeWrittenIsRefusedByItsPath) {
  const auto at = [](NSObject* value) {
    return NSDictionary::of({{"a"_ns, arrayOf({""_ns, value})}});
  };
  for (NSPropertyListFormat format : formats) {
    EXPECT_EQ(written(at(NSNull::null()), format),
              "refused: root.a[1]: a value of the class NSNull cannot stand in a property list");
    EXPECT_EQ(written(nullptr, format), "refused: root: nil is no property list");
    auto numbered = NSDictionary::of({{NSNumber::of(1), ""_ns}});
    EXPECT_EQ(written(at(numbered), format),
              "refused: root.a[1]: a key is of the class NSNumber, not a String");
  }
  const auto xml = NSPropertyListXMLFormat;
  EXPECT_EQ(written(at("x\x02"_ns), xml),
            "refused: root.a[1]: XML has no room for the character U+0002 of a String");
  EXPECT_EQ(written(at(ns(u"\xDC00")), xml),
            "refused: root.a[1]: XML has no room for the character U+DC00 of a String");
  EXPECT_EQ(written(at(dateAt(1e12)), xml),
            "refused: root.a[1]: XML has no room for a date outside the years 1 to 9999");
  EXPECT_EQ(written(at(NSPropertyListUID::UIDWithUnsignedLongLong(1)), xml),
            "refused: root.a[1]: a value of the class NSPropertyListUID cannot stand in a property "
            "list");
  for (const double never : {HUGE_VAL, -HUGE_VAL, std::nan("")})
    EXPECT_EQ(written(at(make<NSDate>(never)), NSPropertyListBinaryFormat),
              "refused: root.a[1]: the date is infinite or no number");
  EXPECT_EQ(written(NSNumber::of(1), NSPropertyListOldStyleFormat),
            "refused: root: old-style text has no numbers");
  EXPECT_EQ(written(""_ns, static_cast<NSPropertyListFormat>(3)),
            "refused: there is no property-list format 3");

  Ref<NSError> error;
  EXPECT_FALSE(
      Serialization::dataWithPropertyList_format_options_error(NSNull::null(), xml, 0, &error));
  EXPECT_EQ(error->code(), NSPropertyListWriteInvalidError);
  EXPECT_FALSE(
      Serialization::propertyListWithData_options_format_error(nullptr, 0, nullptr, &error));
  EXPECT_EQ(textOf(error), "there is no data");
  EXPECT_FALSE(Serialization::propertyList_isValidForFormat(NSSet::set(), xml));
}

}  // namespace
}  // namespace qz::test
