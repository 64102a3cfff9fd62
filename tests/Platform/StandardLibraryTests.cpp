// How the library and the standard one use each other's types.
#include <future>
#include <ranges>
#include <span>
#include <system_error>
#include <unordered_map>
#include <unordered_set>

#include "Platform/Collections/NSCountedSet.h"
#include "Platform/Collections/NSEnumerator.h"
#include "Platform/Concurrency/NSLock.h"
#include "Platform/Concurrency/NSRunLoop.h"
#include "Platform/Runtime/Class.h"
#include "Platform/Values/FileSystemPath.h"
#include "Platform/Values/NSGeometry.h"
#include "Platform/Values/NSIndexPath.h"
#include "Platform/Values/NSIndexSet.h"
#include "tests/support/Letters.h"

namespace qz::test {
namespace {

using std::views::filter;
using std::views::transform;

template <class R, class Element>
concept RangeOf =
    std::ranges::input_range<R> && std::same_as<std::ranges::range_reference_t<R>, Element>;

static_assert(RangeOf<const NSArray, NSObject*> && RangeOf<Ref<NSArray>, NSObject*>);
static_assert(RangeOf<const Ref<NSMutableArray>, NSObject*>);
static_assert(RangeOf<Elements<NSString>, NSString*>);
static_assert(RangeOf<const NSSet, NSObject*> && RangeOf<Ref<NSSet>, NSObject*>);
static_assert(RangeOf<const NSDictionary, const NSDictionary::Pair&>);
static_assert(RangeOf<Ref<NSMutableDictionary>, const NSDictionary::Pair&>);
static_assert(RangeOf<Ref<NSEnumerator>, NSObject*>);
static_assert(!std::ranges::range<Ref<NSString>> && !std::ranges::range<Ref<NSObject>>);

template <class T>
std::string printed(const T& value) {
  std::ostringstream out;
  out << value;
  return out.str();
}

bool isOdd(NSObject* each) { return as<NSNumber>(each)->intValue() % 2 != 0; }

#if !defined(__clang__) || __clang_major__ >= 16  // older ones cannot do libstdc++'s views
TEST(StandardLibraryTest, CollectionsAreSeenThroughViews) {
  const auto text = [](auto&& range) {
    std::string all;
    for (auto&& each : range) all += to_string(each) + " ";
    return all;
  };
  const auto five = numbers({1, 2, 3, 4, 5});
  EXPECT_EQ(text(*five | filter(&isOdd)), "1 3 5 ");
  EXPECT_EQ(text(five | filter(&isOdd) | std::views::drop(1)), "3 5 ");
  EXPECT_EQ(text(numbers({1, 2, 3, 4, 5}) | std::views::take(2)), "1 2 ")
      << "keeps what nobody else keeps";
  EXPECT_EQ(text(five->objectEnumerator() | filter(&isOdd)), "1 3 5 ");
  EXPECT_EQ(text(elements<NSNumber>(five) | transform(&NSNumber::stringValue)), "1 2 3 4 5 ");
  const auto ages = NSDictionary::of({{"Ada"_ns, number(36)}, {"Mary"_ns, number(31)}});
  EXPECT_EQ(text(ages | transform(&NSDictionary::Pair::key)), "Ada Mary ");

  const std::map<std::string, int> plain{{"Ada", 36}, {"Mary", 31}};
  EXPECT_TRUE(ages->isEqual(NSDictionary::fromRange(
      plain | transform([](const auto& entry) {
        return std::pair(NSString::stringWithUTF8String(entry.first), number(entry.second));
      }))));
}
#endif

TEST(StandardLibraryTest, CollectionsComeFromRangesAndGoThere) {
  const auto five = numbers({1, 2, 3, 4, 5});
  EXPECT_EQ(std::ranges::count_if(NSSet::setWithArray(five), &isOdd), 3);
  EXPECT_EQ(to_string(*std::ranges::find_if(*five, std::not_fn(&isOdd))), "2");
  EXPECT_EQ(std::ranges::distance(Ref<NSArray>()), 0) << "nil is empty";

  const std::vector<Ref<NSObject>> kept(five->begin(), five->end());
  EXPECT_TRUE(five->isEqualToArray(NSArray::fromRange(kept)));
  const auto typed = elements<NSNumber>(five);
  const std::vector<Ref<NSNumber>> sized(typed.begin(), typed.end());
  EXPECT_EQ(sized.size(), 5u);
  EXPECT_TRUE(NSSet::setWithArray(five)->isEqualToSet(NSSet::fromRange(sized)));

  const std::vector<std::pair<NSString*, Ref<NSNumber>>> pairs{
      {"Ada"_ns, number(35)}, {"Mary"_ns, number(31)}, {"Ada"_ns, number(36)}};
  const auto ages = NSDictionary::of({{"Ada"_ns, number(36)}, {"Mary"_ns, number(31)}});
  EXPECT_TRUE(ages->isEqualToDictionary(NSDictionary::fromRange(pairs)));
  EXPECT_TRUE(ages->isEqualToDictionary(NSDictionary::fromRange(ages)));
  // Mutable classes make their own kind.
  const Ref<NSMutableDictionary> changing = NSMutableDictionary::fromRange(pairs);
  EXPECT_TRUE(ages->isEqualToDictionary(changing));
  const Ref<NSMutableSet> members = NSMutableSet::fromRange(sized);
  EXPECT_EQ(members->count(), 5u);
  const Ref<NSCountedSet> counted =
      NSCountedSet::fromRange(std::vector<NSObject*>{"a"_ns, "b"_ns, "a"_ns});
  EXPECT_EQ(counted->countForObject("a"_ns), 2u);
}

TEST(StandardLibraryTest, ValuesArePrinted) {
  EXPECT_EQ(printed(Ref<NSObject>(number(7))), "7");
  EXPECT_EQ(printed("Grüße"_ns), "Grüße");
  EXPECT_EQ(printed(Ref<NSString>()), "(null)");
  EXPECT_EQ(printed(classOf<NSArray>()), "NSArray");
  EXPECT_EQ(printed("compare:"_sel), "compare:");
  EXPECT_EQ(printed(Selector()), "(null)");
  EXPECT_EQ(printed(NSMakeRange(3, 5)), "{3, 5}");
  EXPECT_EQ(printed(NSMakeRect(1, 2, 3.5, 4)), "{{1, 2}, {3.5, 4}}");
}

TEST(StandardLibraryTest, HashedContainersTellRefsApartByValue) {
  const auto text = [](const char* bytes) { return NSString::stringWithUTF8String(bytes); };
  std::unordered_map<Ref<NSString>, int> count;
  for (const char* each : {"a", "b", "a"}) ++count[text(each)];
  EXPECT_EQ(count.size(), 2u);
  EXPECT_EQ(count.at(text("a")), 2);
  const std::unordered_set<Ref<NSObject>> some{number(1), NSNumber::numberWithDouble(1), nullptr};
  EXPECT_EQ(some.size(), 2u);
  EXPECT_TRUE(some.contains(nullptr));
  EXPECT_NE(text("a"), text("a")) << "== is identity";
}

TEST(StandardLibraryTest, BytesTextsAndIndicesAreSpansAndViews) {
  const std::string bytes = "Gr\u00fc\u00dfe";
  const auto name = NSString::stringWithUTF8String(bytes);
  EXPECT_EQ(std::u16string(name->view()), u"Gr\u00fc\u00dfe");
  EXPECT_TRUE(name->isEqual(NSString::stringWithCharacters(std::u16string(name->view()))));
  const auto data = NSData::dataWithBytes(bytes);
  EXPECT_TRUE(std::ranges::equal(data->span(), std::as_bytes(std::span(bytes))));
  const std::vector<std::uint32_t> indices{1, 4, 3};
  EXPECT_TRUE(std::ranges::equal(NSIndexPath::indexPathWithIndexes(indices)->indexes(), indices));

  const fs::path path = fs::path("/tmp") / "a\xff";
  EXPECT_EQ(fileSystemPath(stringWithFileSystemPath(path)), path);
}

TEST(StandardLibraryTest, DurationsAreTimes) {
  EXPECT_EQ(timeInterval(250ms), 0.25);
  EXPECT_EQ(timeInterval(2min), 120);
  const auto limit = NSDate::dateAfter(100s);
  EXPECT_NEAR(limit->timeIntervalSinceNow(), 100, 5);

  int fired = 0;
  NSTimer::scheduledTimer(1ms, true, [&](NSTimer* timer) {
    if (++fired == 2) timer->invalidate();
  });
  while (fired < 2) NSRunLoop::currentRunLoop()->runMode_beforeDate(NSDefaultRunLoopMode, limit);
  NSLock lock;
  const std::scoped_lock guard(lock);
  std::thread([&] { EXPECT_FALSE(lock.lockBeforeDate(NSDate::dateAfter(1ms))); }).join();
}

TEST(StandardLibraryTest, ErrorsAreErrorCodes) {
  std::error_code code;
  fs::create_directory("/nowhere/at/all", code);
  const auto missing = NSError::errorWithErrorCode(code);
  EXPECT_EQ(missing->domain(), NSPOSIXErrorDomain);
  EXPECT_EQ(missing->errorCode(), std::errc::no_such_file_or_directory);
  EXPECT_EQ(textOf(missing), code.message());
  EXPECT_EQ(NSError::errorWithErrorCode({}), nullptr);

  const auto own = NSError::errorWithDomain_code_description("Mine"_ns, 7, nullptr);
  EXPECT_EQ(own->errorCode(), own->errorCode());
  EXPECT_STREQ(own->errorCode().category().name(), "Mine");
  EXPECT_EQ(own->errorCode().message(), textOf(own));
  EXPECT_TRUE(own->isEqual(NSError::errorWithErrorCode(own->errorCode())));
  EXPECT_NE(own->errorCode(), NSError(nullptr, 7, nullptr).errorCode());

  const auto future = NSError::errorWithErrorCode(make_error_code(std::future_errc::no_state));
  EXPECT_EQ(to_string(future->domain()), std::future_category().name());
  EXPECT_EQ(textOf(future), make_error_code(std::future_errc::no_state).message());
}

}  // namespace
}  // namespace qz::test
