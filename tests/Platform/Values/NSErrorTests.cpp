#include "Platform/Values/detail/PosixError.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

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
  auto wrong = NSDictionary::dictionaryWithObject_forKey(number(1), NSLocalizedDescriptionKey);
  EXPECT_EQ(shown(NSPOSIXErrorDomain, EACCES, wrong), std::strerror(EACCES));
  // A percent sign in a domain is no placeholder.
  EXPECT_EQ(shown("%@%n"_ns, 1, nullptr), "The operation could not be completed. (%@%n error 1.)");
}

TEST(NSError, MayBeMadeOfADescriptionAlone) {
  auto text = NSMutableString::stringWithString("no such thing"_ns);
  auto short1 = NSError::errorWithDomain_code_description("D"_ns, 4, text);
  text->appendString("!"_ns);
  auto long1 = NSError::errorWithDomain_code_userInfo("D"_ns, 4, described("no such thing"_ns));
  EXPECT_EQ(to_string(short1->localizedDescription()), "no such thing");
  EXPECT_FALSE(short1->localizedFailureReason());
  EXPECT_TRUE(short1->isEqual(long1) && long1->isEqual(short1));
  EXPECT_FALSE(short1->isEqual(make<NSError>("D"_ns, 4, nullptr)));
  // Threads that ask for the Dictionary at once get the same one.
  for (int i = 0; i < 50; ++i) {
    auto error = NSError::errorWithDomain_code_description("D"_ns, i, "text"_ns);
    Ref<NSDictionary> theirs;
    std::thread other([&] { theirs = error->userInfo(); });
    auto mine = error->userInfo();
    other.join();
    ASSERT_EQ(mine, theirs);
  }
}

TEST(NSError, KeepsWhatItWasGiven) {
  auto info = NSMutableDictionary::of({{NSLocalizedFailureReasonErrorKey, "why"_ns},
                                       {NSLocalizedRecoverySuggestionErrorKey, "what now"_ns}});
  auto error = NSError::initWithDomain_code_userInfo("D"_ns, 4, info);
  info->removeAllObjects();
  EXPECT_TRUE(equal(error->localizedFailureReason(), "why"_ns));
  EXPECT_TRUE(equal(error->localizedRecoverySuggestion(), "what now"_ns));
}

TEST(NSError, TheSystemsReasonIsToldOnce) {
  auto told = NSError::errorWithDomain_code_description(NSPOSIXErrorDomain, EACCES, "Sorry"_ns);
  EXPECT_TRUE(equal(told->localizedFailureReason(),
                    make<NSError>(NSPOSIXErrorDomain, EACCES, nullptr)->localizedDescription()));
  EXPECT_FALSE(detail::posixError(EACCES, "open", "/x"_ns)->localizedFailureReason());
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
}

TEST(NSError, FailedCallsSayWhatWasDoneToWhich) {
  Ref<NSError> error = detail::posixError(ENOENT, "open", "/ä%d"_ns);
  EXPECT_EQ(error->localizedDescription()->UTF8String(),
            std::string("open /ä%d: ") + std::strerror(ENOENT));
  EXPECT_TRUE(equal(error->userInfo()->objectForKey(NSFilePathErrorKey), "/ä%d"_ns));
  EXPECT_EQ(detail::posixError(EPIPE, "write", nullptr)->description()->UTF8String(),
            "NSPOSIXErrorDomain error 32: write: " + std::string(std::strerror(EPIPE)));
}

}  // namespace
}  // namespace qz::test
