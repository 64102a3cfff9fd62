#include "QZFoundation/NSError-QZFoundation.h"

#include "Platform/System/NSBundle.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

void expectError(NSError* error, NSString* domain, std::int32_t code, NSDictionary* info) {
  ASSERT_NE(error, nullptr);
  EXPECT_TRUE(equal(error->domain(), domain)) << error;
  EXPECT_EQ(error->code(), code);
  EXPECT_TRUE(equal(error->userInfo(), info)) << error->userInfo();
}

TEST(NSErrorQZFoundation, ZeroIsSuccessInThePlatformsDomainsOnly) {
  auto x = described("x"_ns);
  auto none = NSDictionary::dictionary();
  expectError(POSIXError_description(2, "x"_ns), NSPOSIXErrorDomain, 2, x);
  expectError(carbonError_description(-43, "x"_ns), NSOSStatusErrorDomain, -43, x);
  expectError(cocoaError_description(INT32_MIN, nullptr), NSCocoaErrorDomain, INT32_MIN, none);
  EXPECT_EQ(POSIXError_description(0, "x"_ns), nullptr);
  EXPECT_EQ(carbonError_description(0, "x"_ns), nullptr);
  EXPECT_EQ(cocoaError_description(0, "x"_ns), nullptr);

  auto application = NSBundle::mainBundle()->bundleIdentifier();
  expectError(appError_description(0, "x"_ns), application, 0, x);
  expectError(errorWithDescription("x"_ns), application, -1, x);
  expectError(send<Ref<NSError>>(classOf<NSError>(), "appError:description:"_sel, 5, "x"_ns),
              application, 5, x);
}

TEST(NSErrorQZFoundation, ErrnoCountsForTheFailureStatusAlone) {
  errno = ENOTDIR;
  expectError(errnoError_description(-1, "x"_ns), NSPOSIXErrorDomain, ENOTDIR, described("x"_ns));
  errno = ENOTDIR;
  for (std::int32_t status : {0, 1, -2, INT32_MIN})
    EXPECT_EQ(errnoError_description(status, "x"_ns), nullptr) << status;
  errno = 0;
  EXPECT_EQ(errnoError_description(-1, "x"_ns), nullptr);
}

TEST(NSErrorQZFoundation, ASuggestionNeedsADescription) {
  auto make = [](NSString* description, NSString* suggestion) {
    return errorWithDomain_code_description_recoverySuggestion("d"_ns, 0, description, suggestion);
  };
  auto both = NSDictionary::of(
      {{NSLocalizedDescriptionKey, "x"_ns}, {NSLocalizedRecoverySuggestionErrorKey, "y"_ns}});
  expectError(make("x"_ns, "y"_ns), "d"_ns, 0, both);
  expectError(make("x"_ns, nullptr), "d"_ns, 0, described("x"_ns));
  expectError(make(nullptr, "y"_ns), "d"_ns, 0, NSDictionary::dictionary());
}

TEST(NSErrorQZFoundation, OnlyTwoErrorsMeanThatTheUserStopped) {
  for (const std::int32_t code : {-128, 3072}) {
    EXPECT_EQ(isUserCancelledError(carbonError_description(code, nullptr)), code == -128);
    EXPECT_EQ(isUserCancelledError(cocoaError_description(code, nullptr)), code == 3072);
    EXPECT_FALSE(isUserCancelledError(POSIXError_description(code, nullptr)));
  }
  EXPECT_FALSE(isUserCancelledError(nullptr));
}

TEST(NSErrorQZFoundation, RecoveryIsAskedOfTheRightError) {
  auto with = [](NSString* key, NSObject* value) {
    return NSError::errorWithDomain_code_userInfo(
        "d"_ns, 1, NSDictionary::dictionaryWithObject_forKey(value, key));
  };
  auto cause = with(NSRecoveryAttempterErrorKey, "attempter"_ns);
  auto error = with(NSUnderlyingErrorKey, cause);
  EXPECT_EQ(underlyingError(error), cause);
  EXPECT_TRUE(equal(underlyingAttempter(error), "attempter"_ns));
  EXPECT_FALSE(canRecover(error));
  EXPECT_TRUE(canRecover(cause));
  EXPECT_EQ(underlyingError(cause), nullptr);
  EXPECT_EQ(underlyingError(with(NSUnderlyingErrorKey, "no error"_ns)), nullptr);
}

}  // namespace
}  // namespace qz::test
