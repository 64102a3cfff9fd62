// Log lines, versions, and the output of other programs.
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Collections/NSArray.h"
#include "Platform/System/NSFileHandle.h"
#include "Platform/Values/NSData.h"
#include "QZFoundation/NSTask-QZFoundation.h"
#include "QZFoundation/QZLog.h"
#include "QZFoundation/QZVersionNumber.h"
#include "bench/support/Comparison.h"
#include "bench/support/Families.h"

namespace qz::bench {
namespace {

// Log lines ---------------------------------------------------------------------------------------

/// A file that is gone when the benchmark is over.
class TemporaryFile {
 public:
  TemporaryFile() : descriptor_(::mkstemp(path_)) {}
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() {
    ::close(descriptor_);
    ::unlink(path_);
  }
  const char* path() const { return path_; }
  int descriptor() const { return descriptor_; }

 private:
  char path_[32] = "/tmp/qzbench-log-XXXXXX";
  int descriptor_;
};

void logLine(benchmark::State& state) {
  const TemporaryFile file;
  auto log = QZLog::initWithFilePath(NSString::stringWithUTF8String(file.path()));
  log->setKey_enabled("progress"_ns, true);
  for (auto _ : state) log->logWithKey_message("progress"_ns, "copied 1200 of 4711 files"_ns);
}

void writeReadyLine(benchmark::State& state) {
  const TemporaryFile file;
  ::fcntl(file.descriptor(), F_SETFL, O_APPEND);
  constexpr std::string_view line = "07-03-14 09:26:53.589 copied 1200 of 4711 files\n";
  for (auto _ : state)
    benchmark::DoNotOptimize(::write(file.descriptor(), line.data(), line.size()));
}

void lineThatIsOff(benchmark::State& state) {
  auto log = QZLog::initWithFilePath("/dev/null"_ns);
  for (auto _ : state)
    log->logWithKey_format("progress"_ns, "copied %d of %d files"_ns, 1200, 4711);
}

void testOfAFlag(benchmark::State& state) {
  volatile bool isOn = false;
  for (auto _ : state)
    if (isOn) state.SkipWithError("on");
}

// Versions ----------------------------------------------------------------------------------------

void compareVersionTexts(benchmark::State& state) {
  const auto first = NSString::stringWithUTF8String("10.4.11");
  const auto second = NSString::stringWithUTF8String("10.4.9");
  for (auto _ : state)
    benchmark::DoNotOptimize(
        QZVersionNumber::compareVersionString_withVersionString(first, second));
}

void compareVersionObjects(benchmark::State& state) {
  const auto first = NSString::stringWithUTF8String("10.4.11");
  const auto second = NSString::stringWithUTF8String("10.4.9");
  for (auto _ : state) {
    const auto a = QZVersionNumber::versionWithString(first);
    const auto b = QZVersionNumber::versionWithString(second);
    benchmark::DoNotOptimize(a->compare(b));
  }
}

void compareByLibrary(benchmark::State& state) {
  std::string first = "10.4.11";
  std::string second = "10.4.9";
  for (auto _ : state) {
    benchmark::DoNotOptimize(first);
    benchmark::DoNotOptimize(second);
    benchmark::DoNotOptimize(::strverscmp(first.c_str(), second.c_str()));
  }
}

// Output of other programs ------------------------------------------------------------------------

constexpr std::size_t outputLength = std::size_t{1} << 30;

Ref<NSArray> outputArguments() {
  return NSArray::arrayWithObjects(
      {"-c"_ns, NSString::stringWithUTF8String(std::to_string(outputLength)), "/dev/zero"_ns});
}

void collectOutput(benchmark::State& state) {
  for (auto _ : state) {
    const auto data = dataByRunningTask_withArguments("/usr/bin/head"_ns, outputArguments());
    if (data->length() != outputLength) state.SkipWithError("cut");
  }
}

void passOutputOn(benchmark::State& state) {
  auto null = NSFileHandle::fileHandleForWritingAtPath("/dev/null"_ns);
  for (auto _ : state) {
    auto task = make<NSTask>();
    task->setLaunchPath("/usr/bin/head"_ns);
    task->setArguments(outputArguments());
    launchAndWriteStandardOutputToFileHandle(task, null);
  }
}

/// Runs the same program and hands each piece of its output to `use`.
template <class Use>
void readByHand(Use use) {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) std::abort();
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_adddup2(&actions, ends[1], 1);
  std::string length = std::to_string(outputLength);
  char program[] = "head";
  char option[] = "-c";
  char source[] = "/dev/zero";
  char* arguments[] = {program, option, length.data(), source, nullptr};
  pid_t child = 0;
  if (::posix_spawn(&child, "/usr/bin/head", &actions, nullptr, arguments, environ) != 0)
    std::abort();
  ::posix_spawn_file_actions_destroy(&actions);
  ::close(ends[1]);
  static char buffer[64 * 1024];
  for (ssize_t count; (count = ::read(ends[0], buffer, sizeof buffer)) > 0;)
    use(buffer, static_cast<std::size_t>(count));
  ::close(ends[0]);
  ::waitpid(child, nullptr, 0);
}

void collectByHand(benchmark::State& state) {
  for (auto _ : state) {
    std::string all;
    readByHand([&](const char* bytes, std::size_t count) { all.append(bytes, count); });
    benchmark::DoNotOptimize(all.data());
  }
}

void passOnByHand(benchmark::State& state) {
  const int null = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
  for (auto _ : state)
    readByHand([&](const char* bytes, std::size_t count) {
      benchmark::DoNotOptimize(::write(null, bytes, count));
    });
  ::close(null);
}

}  // namespace

void compareSystem() {
  compare("LogLine", {"a log line, to the kernel", "write(2) of a ready line", 1.2}, &logLine,
          &writeReadyLine);
  compare("LogLineOff", {"a log line whose key is off", "test of a flag", 0}, &lineThatIsOff,
          &testOfAFlag);
  compare("CompareVersionTexts", {"compare two versions by their texts", "strverscmp", 6},
          &compareVersionTexts, &compareByLibrary);
  compare("CompareVersions", {"make two version Objects and compare them", "strverscmp", 6},
          &compareVersionObjects, &compareByLibrary);
  compare("CollectOutput", {"collect 1 GiB of a task's output", "a read loop into a string", 1.1},
          &collectOutput, &collectByHand);
  compare("PassOutputOn", {"pass 1 GiB of a task's output on", "a read and write loop", 1.1},
          &passOutputOn, &passOnByHand);
}

}  // namespace qz::bench
