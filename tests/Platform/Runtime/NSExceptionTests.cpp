#include "tests/support/Witness.h"

namespace qz::test {
namespace {

void fail(NSObject* object) {
  NSAssertionHandler::currentHandler()->handleFailureInMethod_object_file_lineNumber_description(
      "count"_sel, object, "File"_ns, 12, "it went wrong"_ns);
}

TEST(NSException, IsCaughtAsItselfAndAsAStandardException) {
  try {
    NSException::raise_reason("Trouble"_ns, "because"_ns);
  } catch (const std::exception& caught) {
    EXPECT_STREQ(caught.what(), "Trouble: because");
  }
  Ref<NSException> kept;
  try {
    make<NSException>(nullptr, nullptr)->raise();
  } catch (const Raised& raised) {
    kept = raised.exception();
    EXPECT_TRUE(raised.is(NSGenericException));
  }
  EXPECT_EQ(kept->retainCount(), 1u);
  EXPECT_EQ(to_string(kept), "NSGenericException");
}

TEST(NSAssertionHandler, RaisesTheDescriptionAndSaysWhere) {
  try {
    fail("text"_ns);
    FAIL();
  } catch (const Raised& raised) {
    EXPECT_TRUE(raised.is(NSInternalInconsistencyException));
    EXPECT_EQ(to_string(raised->reason()), "it went wrong");
    EXPECT_EQ(to_string(raised->userInfo()->objectForKey("NSAssertionOperation"_ns)),
              "-[NSString count]");
    EXPECT_EQ(to_string(raised->userInfo()->objectForKey("NSAssertionLine"_ns)), "12");
  }
}

TEST(NSAssertionHandler, CanBeReplacedForAThread) {
  auto silent = make<Witness>();
  NSAssertionHandler::setCurrentHandler(silent);
  fail(nullptr);
  EXPECT_EQ(silent->line, 12);
  NSAssertionHandler::setCurrentHandler(nullptr);
  EXPECT_TRUE(raises(NSInternalInconsistencyException, [] { fail(nullptr); }));
}

}  // namespace
}  // namespace qz::test
