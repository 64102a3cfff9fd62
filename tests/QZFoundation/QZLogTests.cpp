#include "QZFoundation/QZLog.h"

#include <sys/stat.h>
#include <unistd.h>

#include <ctime>
#include <regex>

#include "Platform/Runtime/Implementations.h"
#include "Platform/System/NSUserDefaults.h"
#include "Platform/Text/NSTimeZone.h"
#include "QZFoundation/QZDebug.h"
#include "tests/support/Environment.h"
#include "tests/support/Files.h"
#include "tests/support/FullDisk.h"

namespace qz::test {
namespace {

constexpr std::size_t stampLength = 22;  // "07-03-14 09:26:53.589 "

/// The lines of a log without the times, each of which must look like one.
std::vector<std::string> messages(const std::string& path) {
  static const std::regex stamp(R"(\d\d-\d\d-\d\d \d\d:\d\d:\d\d\.\d\d\d )");
  std::vector<std::string> all;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    EXPECT_TRUE(std::regex_match(line.substr(0, stampLength), stamp)) << line;
    all.push_back(line.size() < stampLength ? line : line.substr(stampLength));
  }
  return all;
}

class QZLogTest : public ::testing::Test {
 protected:
  Ref<QZLog> logTo(const std::string& file, bool writes = true) const {
    auto log = QZLog::initWithFilePath(ns(file));
    if (writes) log->setKey_enabled("all"_ns, true);
    return log;
  }

  const TemporaryDirectory directory;
  const std::string path = directory.path() + "/app.log";
};

TEST_F(QZLogTest, OnlyEnabledKeysAreWritten) {
  auto log = logTo(path, false);
  log->logMessage("no"_ns);
  log->logWithKey_format("a"_ns, nullptr);  // would raise, were it expanded
  EXPECT_FALSE(fs::exists(path));
  log->setKey_enabled("a"_ns, true);
  EXPECT_TRUE(refuses([&] { log->logWithKey_format("a"_ns, nullptr); }));
  log->logWithKey_message("a"_ns, "yes"_ns);
  log->logWithKey_format("a"_ns, "%@ %d"_ns, "two"_ns, 2);
  log->logWithKey_format("b"_ns, "%d"_ns, 3);
  EXPECT_EQ(messages(path), (Lines{"yes", "two 2"}));
  log->setKey_enabled("a"_ns, false);
  log->setKey_enabled("all"_ns, true);
  EXPECT_FALSE(log->isKeyEnabled("a"_ns));
  log->logWithKey_message("a"_ns, "any key"_ns);
  log->logMessage("ünï"_ns);
  log->logFormat("%d %@ %s"_ns, 4);  // arguments are missing
  log->logWithKey_message(nullptr, nullptr);
  send<void>(log, "logWithKey:format:"_sel, "x"_ns, "100%%"_ns);
  EXPECT_EQ(messages(path),
            (Lines{"yes", "two 2", "any key", "ünï", "4 (null) (null)", "", "100%"}));
  EXPECT_TRUE(refuses([&] { log->setKey_enabled(nullptr, true); }));
}

TEST_F(QZLogTest, OpeningEmptiesTheFileUnlessItAppends) {
  directory.write("app.log", "07-01-01 00:00:00.000 old\n");
  auto log = logTo(path);
  log->setAppendToLog(true);
  log->logMessage("1"_ns);
  log->closeLog();
  EXPECT_EQ(log->logOutputHandle(), nullptr);
  log->logMessage("2"_ns);
  EXPECT_EQ(messages(path), (Lines{"old", "1", "2"}));
  log->closeLog();
  log->setAppendToLog(false);
  log->logMessage("3"_ns);
  EXPECT_EQ(messages(path), (Lines{"3"}));
  log->clearLog();
  EXPECT_FALSE(fs::exists(path));
  log->logData(NSData::dataWithBytes(std::string_view("raw")));
  EXPECT_EQ(contentsOf(path), "raw");
}

TEST_F(QZLogTest, TheTimeIsLocalWithMilliseconds) {
  const auto before = NSTimeZone::defaultTimeZone();
  NSTimeZone::setDefaultTimeZone(NSTimeZone::timeZoneForSecondsFromGMT(7200));
  detail::LogStamp stamp;
  constexpr std::int64_t day = 1'173'864'413;  // 2007-03-14 09:26:53 UTC
  EXPECT_EQ(stamp.textAt(day * 1'000'000'000 + 589'999'999), "07-03-14 11:26:53.589 ");
  EXPECT_EQ(stamp.textAt(day * 1'000'000'000 + 7'000'000), "07-03-14 11:26:53.007 ");
  EXPECT_EQ(stamp.textAt(-1), "70-01-01 01:59:59.999 ");
  NSTimeZone::setDefaultTimeZone(before);

  const auto stampNow = [] {
    return std::string(detail::LogStamp().textAt(std::time(nullptr) * 1'000'000'000));
  };
  const std::string earliest = stampNow();
  logTo(path)->logMessage("x"_ns);
  EXPECT_GE(contentsOf(path), earliest);
  EXPECT_LE(contentsOf(path).substr(0, 17), stampNow());
}

// What cannot be written is lost, and what was written before is still there.

TEST_F(QZLogTest, WhereTheFileCannotBeMade) {
  auto log = logTo(directory.path() + "/later/app.log");
  log->logMessage("lost"_ns);
  EXPECT_EQ(log->logOutputHandle(), nullptr);
  fs::create_directory(directory.path() + "/later");
  log->logMessage("found"_ns);
  EXPECT_EQ(messages(directory.path() + "/later/app.log"), (Lines{"found"}));
  logTo(directory.path())->logMessage("a folder"_ns);
  logTo("")->logMessage("no path"_ns);
  for (const char16_t unit : {u'\0', u'\xD800'}) {
    auto nowhere = QZLog::initWithFilePath(
        ns(directory.path() + "/x")->stringByAppendingString(ns({&unit, 1})));
    nowhere->setKey_enabled("all"_ns, true);
    nowhere->logMessage("what names no file"_ns);
    EXPECT_EQ(nowhere->logOutputHandle(), nullptr);
  }
  QZLog::initWithFilePath(nullptr)->logData(NSData::dataWithBytes(std::string_view("x")));
  make<QZLog>()->clearLog();
  // A pipe without a reader would make the program wait.
  const std::string pipe = directory.path() + "/pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  logTo(pipe)->logMessage("nobody reads"_ns);
  logTo("/dev/full")->logMessage("full"_ns);
}

TEST_F(QZLogTest, ADiskThatIsFullKeepsWhatWasThere) {
  auto log = logTo(path);
  log->logMessage("before"_ns);
  {
    const FullDisk full(contentsOf(path).size());
    log->logMessage("does not fit"_ns);
  }
  log->logMessage("after"_ns);
  EXPECT_EQ(messages(path), (Lines{"before", "after"}));
}

TEST_F(QZLogTest, AFileThatIsMovedAwayIsFollowedByANewOne) {
  auto log = logTo(path);
  log->logMessage("1"_ns);
  fs::rename(path, path + ".1");
  directory.write("app.log", "07-01-01 00:00:00.000 put there\n");
  for (int i = 0; i < 150 && messages(path).size() < 2; ++i) {
    log->logMessage("2"_ns);
    ::usleep(20'000);
  }
  EXPECT_EQ(messages(path), (Lines{"put there", "2"}));
  EXPECT_EQ(messages(path + ".1")[0], "1");
  // One that is emptied in place goes on from its start.
  fs::resize_file(path, 0);
  log->logMessage("3"_ns);
  EXPECT_EQ(messages(path), (Lines{"3"}));
}

class PieceLog : public Derives<PieceLog, QZLog> {
 public:
  using Derives::Derives;
  static void describe(ClassDescription<PieceLog>& is) { is.named("PieceLog"); }
  void logData(NSData* data) override {
    pieces.emplace_back(data->view());
    if (passesOn) Derives::logData(data);
    if (raises && pieces.size() == 2) NSException::raise_reason(NSGenericException, "full"_ns);
  }
  std::vector<std::string> pieces;
  bool passesOn = false;
  bool raises = false;
};

std::vector<std::string> replacedPieces;
void replacement(QZLog*, NSData* data) { replacedPieces.emplace_back(data->view()); }

TEST_F(QZLogTest, WhoTakesThePlaceOfLogDataSeesThreePieces) {
  auto log = make<PieceLog>();
  log->setKey_enabled("all"_ns, true);
  log->logMessage("text"_ns);
  EXPECT_THAT(log->pieces, ElementsAre(::testing::SizeIs(stampLength), "text", "\n"));
  log->pieces.clear();
  log->passesOn = log->raises = true;
  EXPECT_TRUE(raises(NSGenericException, [&] { log->logMessage("half"_ns); }));

  auto plain = logTo(path);
  const Imp before = classOf<QZLog>()->replaceInstanceMethod(
      "logData:"_sel, implementationOf<QZLog, &replacement>());
  plain->logMessage("text"_ns);
  classOf<QZLog>()->replaceInstanceMethod("logData:"_sel, before);
  ASSERT_EQ(replacedPieces.size(), 3u);
  EXPECT_EQ(replacedPieces[1], "text");
  EXPECT_FALSE(fs::exists(path));
}

// The debug log --------------------------------------------------------------------------------

class QZDebugTest : public ::testing::Test {
 protected:
  QZDebugTest() { QZDebugClose(); }
  ~QZDebugTest() override { QZDebugClose(); }

  const TemporaryDirectory home;
  const Environment atHome{"HOME", home.path()};
  const std::string file = home.path() + "/Desktop/foundation-tests.log";
};

TEST_F(QZDebugTest, EachLogBeginsAnew) {
  home.write("Desktop/foundation-tests.log", "of the run before");
  QZDebugLog("progress"_ns, "%d"_ns, 1);
  EXPECT_FALSE(fs::exists(file));
  EXPECT_EQ(QZGetDebugLog()->logFilePath()->UTF8String(), file);
  QZSetDebugEnabled("progress"_ns, true);
  QZDebugLog("progress"_ns, "%d of %@"_ns, 2, number(3));
  QZDebugLog("other"_ns, "no"_ns);
  QZDebugInitialize();
  QZDebugLogSystemProfile();
  QZSetDebugEnabled("all"_ns, true);
  EXPECT_FALSE(QZIsDebugEnabled("other"_ns));
  QZDebugLog("other"_ns, "yes"_ns);
  EXPECT_EQ(messages(file), (Lines{"2 of 3", "yes"}));

  const auto old = QZGetDebugLog();
  QZDebugClose();
  QZDebugClose();
  EXPECT_EQ(old->logOutputHandle(), nullptr);
  EXPECT_FALSE(QZIsDebugEnabled("progress"_ns));
  EXPECT_FALSE(fs::exists(file));
  EXPECT_NE(QZGetDebugLog(), old);
}

TEST_F(QZDebugTest, TheUserDefaultEnablesKeys) {
  home.write("Desktop/other", "");
  const auto enabled = [](NSObject* value) {
    NSUserDefaults::standardUserDefaults()->registerDefaults(
        NSDictionary::of({{"QZDebug"_ns, value}}));
    QZDebugClose();
    std::string keys;
    for (NSString* each : {"import"_ns, "progress"_ns, "5"_ns})
      if (QZIsDebugEnabled(each)) keys += each->UTF8String() + " ";
    return keys;
  };
  const auto list = arrayOf({"progress"_ns, number(5), "import"_ns});
  EXPECT_EQ(enabled(list), "import progress ");
  QZDebugLog("import"_ns, "written"_ns);
  QZDebugLog("other"_ns, "not written"_ns);
  EXPECT_EQ(messages(file), (Lines{"written"}));
  EXPECT_EQ(enabled("import"_ns), "import ");
  EXPECT_EQ(enabled(number(5)), "");
}

}  // namespace
}  // namespace qz::test
