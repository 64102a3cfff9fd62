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

TEST(Suggestion, NamesOperationsThatMayHaveBeenMeant) {
  const auto array = NSArray::array();
  classOf<Album>();
  const auto expect = [](NSObject* receiver, Selector selector, const std::string& end) {
    EXPECT_THAT(reasonRaised(NSInvalidArgumentException,
                             [&] { receiver->doesNotRecognizeSelector(selector); }),
                testing::EndsWith(end));
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
  const auto expect = [](const char* end, const std::function<void()>& code) {
    EXPECT_THAT(reasonRaised(NSUndefinedKeyException, code), testing::EndsWith(end));
  };
  expect("key balanec; is balance meant?", [&] { account->valueForKey("balanec"_ns); });
  expect("key Owner; is owner meant?", [&] { account->setValue_forKey("Grace"_ns, "Owner"_ns); });
  expect("key owner; it can be read, not set",
         [&] { account->setValue_forKey("Grace"_ns, "owner"_ns); });
  expect("for the key somethingElse", [&] { account->valueForKey("somethingElse"_ns); });
}

}  // namespace
}  // namespace qz::test
