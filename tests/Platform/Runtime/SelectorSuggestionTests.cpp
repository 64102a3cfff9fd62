#include "Platform/Runtime/detail/SelectorSuggestion.h"

#include "tests/support/Test.h"

namespace qz::test {
namespace {

std::string reasonOf(NSObject* receiver, Selector selector) {
  try {
    receiver->doesNotRecognizeSelector(selector);
  } catch (const Raised& raised) {
    return to_string(raised->reason());
  }
  return "nothing was raised";
}

TEST(SelectorSuggestion, NamesWhatMayHaveBeenMeant) {
  const auto array = NSArray::array();
  const auto expectEnd = [](const std::string& reason, const std::string& end) {
    EXPECT_TRUE(reason.ends_with(end)) << reason;
  };
  expectEnd(reasonOf(array, "objectAtIndx:"_sel), "instance; is objectAtIndex: meant?");
  expectEnd(reasonOf(array, "description:"_sel), "instance; is description meant?");
  expectEnd(reasonOf(array, "stringValue"_sel), "unrecognized selector sent to instance");
  expectEnd(reasonOf(array, "x"_sel), "unrecognized selector sent to instance");
  expectEnd(reasonOf(classOf<NSArray>(), "arrayWithObjet:"_sel),
            "class; is arrayWithObject: meant?");
  expectEnd(reasonOf(array, Selector::named(std::string(5000, 'a'))), "sent to instance");
}

}  // namespace
}  // namespace qz::test
