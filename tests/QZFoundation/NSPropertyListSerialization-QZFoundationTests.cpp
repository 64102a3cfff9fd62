#include "QZFoundation/NSPropertyListSerialization-QZFoundation.h"

#include "tests/support/FileTest.h"

namespace qz::test {
namespace {

class PropertyListFiles : public FileTest {
 protected:
  Ref<NSObject> read(const std::string& name, Ref<NSError>* error = nullptr) const {
    return propertyListFromFile_mutabilityOptions_format_error(path(name), 0, nullptr, error);
  }
};

TEST_F(PropertyListFiles, AreWrittenAndReadInEveryFormat) {
  auto list = NSDictionary::of({{"k"_ns, "v"_ns}});
  for (auto format :
       {NSPropertyListXMLFormat, NSPropertyListBinaryFormat, NSPropertyListOldStyleFormat}) {
    EXPECT_EQ(writePropertyList_toFile_format(list, path("list"), format), nullptr);
    NSPropertyListFormat found;
    Ref<NSError> error = NSError::errorWithDomain_code_userInfo("left"_ns, 1, nullptr);
    auto again = propertyListFromFile_mutabilityOptions_format_error(
        path("list"), NSPropertyListMutableContainers, &found, &error);
    EXPECT_TRUE(equal(again, list));
    EXPECT_TRUE(isKind<NSMutableDictionary>(again));
    EXPECT_EQ(found, format);
    EXPECT_EQ(error, nullptr);
  }
  EXPECT_TRUE(writeToFile_atomically_error(list, path("other"), false, nullptr));
  EXPECT_TRUE(equal(read("other"), list));
}

TEST_F(PropertyListFiles, ErrorsOfTheFileAreThePlatforms) {
  Ref<NSError> error;
  EXPECT_FALSE(read("none", &error));
  EXPECT_TRUE(equal(error->domain(), NSPOSIXErrorDomain));
  EXPECT_EQ(error->code(), ENOENT);
  auto list = NSDictionary::dictionary();
  error = writePropertyList_toFile_format(list, path("no/folder"), NSPropertyListXMLFormat);
  EXPECT_EQ(error->code(), ENOENT);
  EXPECT_FALSE(writeToFile_atomically_error(list, path("no/folder"), true, &error));
  EXPECT_EQ(error->code(), ENOENT);
  EXPECT_FALSE(writeToFile_atomically_error(list, nullptr, true, nullptr));
}

TEST_F(PropertyListFiles, ErrorsOfTheListAreTheApplications) {
  directory.write("text", "this is no list");
  Ref<NSError> error;
  EXPECT_FALSE(read("text", &error));
  EXPECT_EQ(error->code(), -1);
  EXPECT_EQ(textOf(error),
            "A property list could not be read from the file " + directory.path() +
                "/text (line 1, column 6: a semicolon is missing behind the entry \"this\")");

  // The file that was there stays as it was.
  directory.write("kept", "{ old = file; }");
  auto bad = NSDictionary::of({{"k"_ns, NSNull::null()}});
  const std::string why = "root.k: a value of the class NSNull cannot stand in a property list";
  error = writePropertyList_toFile_format(bad, path("kept"), NSPropertyListBinaryFormat);
  EXPECT_EQ(textOf(error), "Could not create property list data. (" + why + ")");
  EXPECT_FALSE(writeToFile_atomically_error(bad, path("kept"), false, &error));
  EXPECT_EQ(textOf(error), "Could not create XML for dictionary: " + why);
  EXPECT_EQ(contentsOf(at("kept")), "{ old = file; }");
}

}  // namespace
}  // namespace qz::test
