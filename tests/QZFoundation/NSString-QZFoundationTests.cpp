#include "Platform/Runtime/NSAssertionHandler.h"
#include "Platform/Values/NSScanner.h"
#include "QZFoundation/QZFoundation.h"
#include "tests/support/Letters.h"
#include "tests/support/Person.h"
#include "tests/support/SourceTree.h"
#include "tests/support/Witness.h"

namespace qz::test {
namespace {

std::string orNil(const Ref<NSString>& string) { return string ? string->UTF8String() : "nil"; }

TEST(NSStringQZFoundation, JoinsStrings) {
  EXPECT_EQ(orNil(stringWithStrings_separator(arrayOf({"a"_ns, ""_ns, "b"_ns}), ","_ns)), "a,,b");
  EXPECT_EQ(orNil(stringWithStrings_separator(arrayOf({}), ","_ns)), "");
  EXPECT_EQ(orNil(stringWithStrings(arrayOf({"ä"_ns, "b"_ns}))), "äb");
  EXPECT_EQ(orNil(initWithStrings(nullptr)), "");
  // Made anew each time, and each time longer.
  const auto growing =
      make<Computed>(3u, [n = 0u](std::uint32_t) mutable { return ns(std::u16string(++n, u'x')); });
  EXPECT_EQ(orNil(initWithStrings_separator(growing, "-"_ns)), "x-xx-xxx");
  EXPECT_TRUE(refuses([] { initWithStrings(arrayOf({"a"_ns, number(1)})); }));
  // 16384 times 131072 units: more than there may be, and refused before room is made.
  const auto large = ns(std::u16string(1 << 17, u'x'));
  const std::vector<Ref<NSString>> many(1 << 14, large);
  EXPECT_TRUE(raises(NSMallocException, [&] { initWithStrings(NSArray::fromRange(many)); }));
}

TEST(NSStringQZFoundation, ReadsAndFillsRecords) {
  HFSUniStr255 record{3, {u'a', 0, u'c', u'd'}};
  EXPECT_EQ(stringWithHFSUniStr255(record)->view(), std::u16string_view(u"a\0c", 3));

  std::memset(&record, 0xEE, sizeof record);
  getHFSUniStr255("ab"_ns, &record);
  EXPECT_EQ(record.length, 2);
  EXPECT_TRUE(std::all_of(record.unicode + 2, std::end(record.unicode),
                          [](char16_t unit) { return unit == 0; }));
  EXPECT_EQ(std::u16string_view(record.unicode, 2), u"ab");
  const auto longName = ns(std::u16string(299, u'x') + u'y');
  getHFSUniStr255(longName, &record);
  EXPECT_EQ(record.length, 255);
  EXPECT_EQ(orNil(initWithHFSUniStr255(record)), std::string(255, 'x'));
  EXPECT_TRUE(refuses([] { getHFSUniStr255("a"_ns, nullptr); }));
}

TEST(NSStringQZFoundation, AssertsTheLengthOfRecords) {
  HFSUniStr255 record{0x1FF, {}};
  std::fill(std::begin(record.unicode), std::end(record.unicode), u'x');
  EXPECT_EQ(reasonRaised(NSInternalInconsistencyException, [&] { initWithHFSUniStr255(record); }),
            "Illegal HFS string length 0x1ff");

  const auto witness = make<Witness>();
  NSAssertionHandler::setCurrentHandler(witness);
  const auto string = initWithHFSUniStr255(record);
  NSAssertionHandler::setCurrentHandler(nullptr);
  EXPECT_EQ(string->length(), 255u);
  EXPECT_EQ(witness->seen,
            "initWithHFSUniStr255: NSString-QZFoundation: Illegal HFS string length 0x1ff");
  std::ifstream source(sourcePath("QZFoundation/NSString-QZFoundation.cpp"));
  std::string line;
  for (int i = 0; i < witness->line; ++i) std::getline(source, line);
  EXPECT_NE(line.find("assertRecord(record)"), line.npos) << line;
}

TEST(NSStringQZFoundation, MakesSmallStrings) {
  EXPECT_EQ(stringWithCharacter(0xD800)->view(), std::u16string(1, 0xD800));
  EXPECT_EQ(orNil(horizontalEllipsisString()), "…");
  EXPECT_EQ(UUIDString()->length(), 36u);
  EXPECT_FALSE(equal(UUIDString(), UUIDString()));
  const auto data = NSData::dataWithBytes("a\xC3\xA4");
  EXPECT_EQ(orNil(stringWithData_encoding(data, 4)), "aä");
  EXPECT_EQ(orNil(stringWithData_encoding(data, 1)), "nil");
}

TEST(NSStringQZFoundation, FindsNamesThatAreNotTaken) {
  const auto taken = arrayOf({"Untitled"_ns, "Untitled 2"_ns, "Untitled 4"_ns, "5%"_ns});
  const auto unique = [&](NSString* base, NSString* format) {
    return orNil(uniqueStringWithBaseString_appendFormatString_inStrings(base, format, taken));
  };
  EXPECT_EQ(unique("Untitled"_ns, " %d"_ns), "Untitled 3");
  EXPECT_EQ(unique("Name"_ns, " %d"_ns), "Name");
  EXPECT_EQ(unique("5%"_ns, "d"_ns), "52");
  // One that never changes, and is taken, would be tried for ever.
  EXPECT_TRUE(refuses([&] { unique("Untitled"_ns, ""_ns); }));
}

TEST(NSStringQZFoundation, EditsText) {
  const auto self = NSMutableString::stringWithUTF8String("abc");
  EXPECT_EQ(orNil(stringByPrependingString(self, "x"_ns)), "xabc");
  EXPECT_EQ(orNil(stringByReplacingPrefix_withString(self, "ab"_ns, "xyz"_ns)), "xyzc");
  const auto other = NSMutableString::stringWithUTF8String("new");
  EXPECT_TRUE(stringByReplacingPrefix_withString(self, "abc"_ns, other) == other);
  EXPECT_TRUE(stringByReplacingPrefix_withString(self, "bc"_ns, other) == self);

  const auto set = NSCharacterSet::characterSetWithCharactersInString("ac"_ns);
  const auto replaced = [&](const char* from, NSString* by) {
    return orNil(stringByReplacingCharactersInSet_withString(ns(from), set, by));
  };
  EXPECT_EQ(replaced("abcab", "<>"_ns), "<>b<><>b");
  EXPECT_EQ(replaced("aac", ""_ns), "");

  EXPECT_EQ(orNil(lowercaseFirst("ABC"_ns)), "aBC");
  EXPECT_EQ(orNil(uppercaseFirst("ßa"_ns)), "SSa");
  EXPECT_TRUE(refusesRange([] { lowercaseFirst(""_ns); }));
  EXPECT_TRUE(refuses([] { stringByPrependingString("a"_ns, nullptr); }));

  EXPECT_EQ(orNil(stringByReplacingPercentEscapes("a%20%C3%A4%2F"_ns)), "a ä/");
  EXPECT_EQ(orNil(stringByReplacingPercentEscapes("100%"_ns)), "nil");
}

TEST(NSStringQZFoundation, DeletesNumbersFromTheEnd) {
  for (const char* kept : {"Copy 0", "Copy -3", "Copy12", "Copy 2 ", "Copy 2\n", "a 1.5", ""})
    EXPECT_EQ(orNil(stringByDeletingNumberFromEnd(ns(kept))), kept);
  EXPECT_EQ(orNil(stringByDeletingNumberFromEnd(" 3"_ns)), "");
  EXPECT_EQ(orNil(stringByDeletingNumberFromEnd("Copy  4"_ns)), "Copy ");
  EXPECT_EQ(orNil(stringByDeletingNumberFromEnd("a 99999999999999999999"_ns)), "a");
}

TEST(NSStringQZFoundation, BuildsPaths) {
  EXPECT_EQ(orNil(stringWithPathComponents(arrayOf({"usr"_ns, "bin"_ns}))), "/usr/bin");
  EXPECT_EQ(orNil(stringWithPathComponents(arrayOf({"/"_ns, "usr"_ns, "/"_ns}))), "/usr");

  EXPECT_EQ(orNil(stringByAppendingPathComponents("/"_ns, "a"_ns, ns("b/"), "c"_ns)), "/a/b/c");
  EXPECT_EQ(orNil(stringByAppendingPathComponents("a"_ns, "b"_ns, nullptr, "c"_ns)), "a/b");
  EXPECT_EQ(orNil(stringByAppendingPathComponents("a"_ns, arrayOf({"b"_ns, "c"_ns}))), "a/b/c");
  const auto self = ns("a/");
  EXPECT_TRUE(stringByAppendingPathComponents(self) == self);
  EXPECT_EQ(orNil(stringByPrependingPathComponent("b"_ns, "/a"_ns)), "/a/b");

  const auto before = [](NSString* path, NSString* added) {
    return orNil(stringByAppendingStringBeforePathExtension(path, added));
  };
  EXPECT_EQ(before("a/b.txt"_ns, "-1"_ns), "a/b-1.txt");
  EXPECT_EQ(before("a.d/b"_ns, "-1"_ns), "a.d/b-1");
  EXPECT_EQ(before(".hidden"_ns, "-%@"_ns), ".hidden-%@");
  EXPECT_TRUE(hasPathExtension("a.txt"_ns, "txt"_ns));
  EXPECT_FALSE(hasPathExtension("a.txt"_ns, "TXT"_ns));
  EXPECT_TRUE(hasPathExtension("a"_ns, ""_ns));

  for (NSString* inside : {"/a/b"_ns, "/a/b/c"_ns}) EXPECT_TRUE(containsPath("/a/b"_ns, inside));
  for (NSString* outside : {"/a/bc"_ns, "/a"_ns, "a/b"_ns, static_cast<NSString*>(nullptr)})
    EXPECT_FALSE(containsPath("/a/b"_ns, outside)) << outside;
  EXPECT_TRUE(containsPath(""_ns, "x"_ns) && containsPath("/"_ns, "/x"_ns));

  EXPECT_EQ(orNil(POSIXPathFromCarbonPath("Root:usr:a/b"_ns)), "/usr/a:b");
  EXPECT_EQ(orNil(carbonPathFromPOSIXPath("/Volumes/D/x"_ns)), "D:x");
  EXPECT_EQ(orNil(carbonPathFromPOSIXPath(""_ns)), "nil");
}

TEST(NSStringQZFoundation, ReadsScalars) {
  for (const char* no : {"yes", "Yes", "1", "true", "Y", "YES ", " YES", "NO", ""})
    EXPECT_FALSE(boolValue(ns(no))) << no;
  EXPECT_TRUE(boolValue(NSMutableString::stringWithUTF8String("YES")));
  EXPECT_EQ(fullRange("abc"_ns), NSMakeRange(0, 3));
  EXPECT_EQ(unsignedIntValue("-5"_ns), 0u);
  EXPECT_EQ(unsignedIntValue(" 12x"_ns), 12u);
  EXPECT_EQ(unsignedIntValue("4294967295"_ns), 2147483647u);
  for (const char* each : {" \n-42x", "+7", "x1", "", "- 1", "9223372036854775808",
                           "-99999999999999999999", "\u00A03"}) {
    std::int64_t scanned = 0;
    NSScanner::scannerWithString(ns(each))->scanLongLong(&scanned);
    EXPECT_EQ(longLongValue(ns(each)), scanned) << each;
  }
  EXPECT_EQ(fourCharCode("abcde"_ns), 0x61626364u);
  EXPECT_EQ(fourCharCode("ab"_ns), 0x61620000u);
  EXPECT_EQ(fourCharCode("abcdä"_ns), 0u);
}

// The stricter reading of truth values holds wherever a String is asked by name.
TEST(NSStringQZFoundation, TruthIsYESEverywhere) {
  EXPECT_TRUE(send<bool>("YES"_ns, "boolValue"_sel));
  EXPECT_FALSE(send<bool>(NSMutableString::stringWithUTF8String("1"), "boolValue"_sel));
  const auto object = make<Person>();
  object->setValue_forKey("1"_ns, "married"_ns);
  EXPECT_FALSE(object->married);
  object->setValue_forKey("YES"_ns, "married"_ns);
  EXPECT_TRUE(object->married);
}

// Replacing asks for an operation that is there, of the same type.
TEST(Extension, ReplacesOnlyWhatFits) {
  const auto reason = [](const char* name) {
    return reasonRaised(NSInternalInconsistencyException,
                        [&] { extend<NSString>("test").replace<&boolValue>(name); });
  };
  EXPECT_THAT(reason("noSuch"), ::testing::ContainsRegex("noSuch.*does not exist"));
  EXPECT_THAT(reason("length"), HasSubstr("another type"));
  EXPECT_EQ(send<std::uint32_t>("abc"_ns, "length"_sel), 3u);
}

TEST(NSMutableStringQZFoundation, GrowsAndShrinksByOne) {
  const auto string = NSMutableString::string();
  deleteLastCharacter(string);
  appendCharacter(string, u'a');
  appendCharacter(string, 0xD83D);
  EXPECT_EQ(string->view(), std::u16string({u'a', 0xD83D}));
  send<void>(string, "deleteLastCharacter"_sel);
  send<void>(string, "appendCharacter:"_sel, u'b');
  EXPECT_EQ(string->view(), u"ab");
}

TEST(NSURLQZFoundation, AppendsToThePath) {
  const auto folder = NSURL::URLWithString("http://h/a%20b/?q#f"_ns);
  const auto file = fileURLByAppendingPathComponent(folder, "c d/"_ns);
  EXPECT_EQ(orNil(file->absoluteString()), "file:///a%20b/c%20d");
  EXPECT_TRUE(refuses([&] { fileURLByAppendingPathComponent(folder, nullptr); }));
}

}  // namespace
}  // namespace qz::test
