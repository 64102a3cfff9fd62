#include "tests/support/Test.h"

namespace qz::test {
namespace {

class Account : public Derives<Account, NSObject> {
 public:
  static void describe(ClassDescription<Account>& is) {
    is.named("SuggestionAccount")
        .property<&Account::balance, &Account::setBalance>("balance")
        .property<&Account::owner>("owner");
  }
  int balance() const { return 1; }
  void setBalance(int) {}
  Ref<NSString> owner() const { return "Ada"_ns; }
};

/// Comes before NSMutableArray in the alphabet, and has what that has.
class Album : public Derives<Album, NSMutableArray> {
 public:
  static void describe(ClassDescription<Album>& is) { is.named("AlbumOfSuggestions"); }
};

template <class Action>
void expectReasonEnds(const std::string& end, Action action) {
  try {
    action();
    ADD_FAILURE() << "nothing was raised";
  } catch (const Raised& raised) {
    const std::string reason = to_string(raised->reason());
    EXPECT_TRUE(reason.ends_with(end)) << reason;
  }
}

TEST(Suggestion, NamesOperationsThatMayHaveBeenMeant) {
  const auto array = NSArray::array();
  classOf<Album>();
  const auto expect = [](NSObject* receiver, Selector selector, const std::string& end) {
    expectReasonEnds(end, [&] { receiver->doesNotRecognizeSelector(selector); });
  };
  expect(array, "objectAtIndx:"_sel, "instance; is objectAtIndex: meant?");
  expect(array, "description:"_sel, "instance; is description meant?");
  expect(array, "stringValue"_sel, "unrecognized selector sent to instance");
  expect(array, "x"_sel, "unrecognized selector sent to instance");
  expect(classOf<NSArray>(), "arrayWithObjet:"_sel, "class; is arrayWithObject: meant?");
  expect(array, Selector::named(std::string(5000, 'a')), "sent to instance");
  expect(array, "addObject:"_sel, "instance; NSMutableArray has it");
  expect(classOf<NSData>(), "dataWithCapacity:"_sel, "class; NSMutableData has it");
}

TEST(Suggestion, NamesKeysThatMayHaveBeenMeant) {
  const auto account = make<Account>();
  expectReasonEnds("key balanec; is balance meant?", [&] { account->valueForKey("balanec"_ns); });
  expectReasonEnds("key Owner; is owner meant?",
                   [&] { account->setValue_forKey("Grace"_ns, "Owner"_ns); });
  expectReasonEnds("key owner; it can be read, not set",
                   [&] { account->setValue_forKey("Grace"_ns, "owner"_ns); });
  expectReasonEnds("for the key somethingElse", [&] { account->valueForKey("somethingElse"_ns); });
}

}  // namespace
}  // namespace qz::test
