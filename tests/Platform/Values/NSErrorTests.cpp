#include "Platform/Values/NSError.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/Runtime/Send.h"
#include "Platform/Values/NSNumber.h"
#include "Platform/Values/detail/PosixError.h"

namespace qz::test {
namespace {

Ref<NSDictionary> described(NSString* text) {
  return NSDictionary::dictionaryWithObject_forKey(text, NSLocalizedDescriptionKey);
}

std::string shown(NSString* domain, std::int32_t code, NSDictionary* info) {
  return NSError::errorWithDomain_code_userInfo(domain, code, info)
      ->localizedDescription()
      ->UTF8String();
}

TEST(NSError, DescriptionFallsBackToTheSystemAndThenToTheNumbers) {
  EXPECT_EQ(shown(NSPOSIXErrorDomain, 2, described("no such thing"_ns)), "no such thing");
  EXPECT_EQ(shown(NSPOSIXErrorDomain, EACCES, nullptr), std::strerror(EACCES));
  EXPECT_EQ(shown("D"_ns, -7, nullptr), "The operation could not be completed. (D error -7.)");
  EXPECT_EQ(shown(nullptr, 0, nullptr), "The operation could not be completed. ((null) error 0.)");
  // What stands under the key but is no text is no description.
  auto wrong = NSDictionary::dictionaryWithObject_forKey(NSNumber::numberWithInt(1),
                                                         NSLocalizedDescriptionKey);
  EXPECT_EQ(shown(NSPOSIXErrorDomain, EACCES, wrong), std::strerror(EACCES));
  // A percent sign in a domain is no placeholder.
  EXPECT_EQ(shown("%@%n"_ns, 1, nullptr), "The operation could not be completed. (%@%n error 1.)");
}

TEST(NSError, ReadsWhatStandsUnderTheStandardKeys) {
  auto attempter = make<NSMutableDictionary>();
  auto options = NSArray::arrayWithObjects({"Try again"_ns});
  auto info = NSMutableDictionary::of({{NSLocalizedFailureReasonErrorKey, "why"_ns},
                                       {NSLocalizedRecoverySuggestionErrorKey, "what now"_ns},
                                       {NSLocalizedRecoveryOptionsErrorKey, options},
                                       {NSRecoveryAttempterErrorKey, attempter}});
  auto error = NSError::initWithDomain_code_userInfo("D"_ns, 4, info);
  EXPECT_TRUE(equal(error->localizedFailureReason(), "why"_ns));
  EXPECT_TRUE(equal(error->localizedRecoverySuggestion(), "what now"_ns));
  EXPECT_EQ(error->localizedRecoveryOptions(), options);
  EXPECT_EQ(error->recoveryAttempter(), attempter);

  // The Error keeps what it was given, whatever becomes of the Dictionary.
  info->removeAllObjects();
  EXPECT_EQ(error->userInfo()->count(), 4u);
  auto bare = NSError::errorWithDomain_code_userInfo(nullptr, 4, nullptr);
  EXPECT_EQ(bare->userInfo()->count(), 0u);
  EXPECT_EQ(bare->domain(), nullptr);
  EXPECT_EQ(bare->localizedFailureReason(), nullptr);
  EXPECT_EQ(bare->recoveryAttempter(), nullptr);
}

TEST(NSError, EqualityTakesAllThreeParts) {
  auto one = NSError::errorWithDomain_code_userInfo("D"_ns, 1, described("x"_ns));
  auto same = send<Ref<NSError>>(classOf<NSError>(), "errorWithDomain:code:userInfo:"_sel, "D"_ns,
                                 1, described("x"_ns));
  EXPECT_TRUE(one->isEqual(same));
  EXPECT_EQ(one->hash(), same->hash());
  EXPECT_EQ(one->copy(), one);
  for (const auto& other : {NSError::errorWithDomain_code_userInfo("E"_ns, 1, described("x"_ns)),
                            NSError::errorWithDomain_code_userInfo("D"_ns, 2, described("x"_ns)),
                            NSError::errorWithDomain_code_userInfo("D"_ns, 1, described("y"_ns)),
                            NSError::errorWithDomain_code_userInfo(nullptr, 1, described("x"_ns))})
    EXPECT_FALSE(one->isEqual(other)) << other;
  EXPECT_FALSE(one->isEqual("D"_ns));
}

TEST(NSError, FailedCallsSayWhatWasDoneToWhich) {
  Ref<NSError> error = detail::posixError(ENOENT, "open", "/ä%d"_ns);
  EXPECT_TRUE(equal(error->domain(), NSPOSIXErrorDomain));
  EXPECT_EQ(error->code(), ENOENT);
  EXPECT_EQ(error->localizedDescription()->UTF8String(),
            std::string("open /ä%d: ") + std::strerror(ENOENT));
  EXPECT_TRUE(equal(error->userInfo()->objectForKey(NSFilePathErrorKey), "/ä%d"_ns));
  EXPECT_EQ(detail::posixError(EPIPE, "write", nullptr)->description()->UTF8String(),
            "NSPOSIXErrorDomain error 32: write: " + std::string(std::strerror(EPIPE)));
}

}  // namespace
}  // namespace qz::test
