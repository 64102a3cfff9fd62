// Watching files, beside the bare system calls.
#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "Platform/Concurrency/MainThread.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/System/detail/VnodeEvents.h"
#include "Platform/Values/NSDate.h"
#include "QZFoundation/XJKQueue.h"
#include "QZFoundation/detail/PolledPaths.h"
#include "bench/support/Comparison.h"
#include "bench/support/Families.h"
#include "bench/support/Watching.h"

namespace qz::bench {
namespace {

void addPaths(benchmark::State& state) {
  const Files files(many);
  for (auto _ : state) {
    state.PauseTiming();
    auto queue = XJKQueue::init();
    state.ResumeTiming();
    for (NSString* path : files.strings) queue->addPathToQueue(path);
    state.PauseTiming();
    queue = nullptr;
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * many);
}

void removePaths(benchmark::State& state) {
  const Files files(many);
  for (auto _ : state) {
    state.PauseTiming();
    auto queue = XJKQueue::init();
    for (NSString* path : files.strings) queue->addPathToQueue(path);
    state.ResumeTiming();
    for (NSString* path : files.strings) queue->removePathFromQueue(path);
    state.PauseTiming();
    queue = nullptr;
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * many);
}

constexpr std::uint32_t usual = IN_MODIFY | IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF;

template <bool timeAdding>
void inotifyCalls(benchmark::State& state) {
  const Files files(many);
  std::vector<int> numbers(many);
  for (auto _ : state) {
    state.PauseTiming();
    const int notify = ::inotify_init1(IN_CLOEXEC);
    if (timeAdding) state.ResumeTiming();
    for (std::size_t i = 0; i < many; ++i)
      numbers[i] = ::inotify_add_watch(notify, files.paths[i].c_str(), usual);
    if (timeAdding)
      state.PauseTiming();
    else
      state.ResumeTiming();
    if (!timeAdding) {
      for (const int number : numbers) ::inotify_rm_watch(notify, number);
      state.PauseTiming();
    }
    ::close(notify);
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * many);
}

void eventSeen(benchmark::State& state) {
  const Files files(1);
  const auto events = detail::VnodeEvents::open();
  writeUntilSeen(state, files.paths[0], [&] {
    events->add(files.paths[0], detail::vnodeWritten);
    return [&] {
      while (events->wait(std::chrono::seconds(5)).empty()) {
      }
    };
  });
}

/// Calls `see` for each batch of news.
template <class F>
auto blockingRead(const std::string& path, F see) {
  const int notify = ::inotify_init1(IN_CLOEXEC);
  ::inotify_add_watch(notify, path.c_str(), IN_MODIFY);
  return [notify, see] {
    std::array<char, 4096> buffer;
    benchmark::DoNotOptimize(::read(notify, buffer.data(), buffer.size()));
    see();
  };
}

void inotifySeen(benchmark::State& state) {
  const Files files(1);
  writeUntilSeen(state, files.paths[0], [&] { return blockingRead(files.paths[0], [] {}); });
}

/// From a write here, on the main thread, until `count` has grown while its loop runs.
void writeUntilTold(benchmark::State& state, const std::string& path, const int& count) {
  const int file = ::open(path.c_str(), O_WRONLY);
  for (auto _ : state) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    const int before = count;
    const auto start = std::chrono::steady_clock::now();
    if (::pwrite(file, "x", 1, 0) != 1) state.SkipWithError("write");
    while (count == before)
      NSRunLoop::mainRunLoop()->runMode_beforeDate(NSDefaultRunLoopMode,
                                                   NSDate::dateWithTimeIntervalSinceNow(5));
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    state.SetIterationTime(elapsed.count());
  }
  ::close(file);
}

class CountingDelegate : public Derives<CountingDelegate, NSObject> {
 public:
  static void describe(ClassDescription<CountingDelegate>& is) {
    is.named("CountingDelegate")
        .method<&CountingDelegate::receive>("watcher:receivedNotification:forPath:");
  }
  void receive(XJKQueue*, NSString*, NSString*) { ++count; }
  int count = 0;
};

void delegateTold(benchmark::State& state) {
  const Files files(1);
  auto delegate = make<CountingDelegate>();
  auto queue = XJKQueue::init();
  queue->setDelegate(delegate);
  queue->addPathToQueue(files.strings[0]);
  writeUntilTold(state, files.paths[0], delegate->count);
}

void readAndPosted(benchmark::State& state) {
  const Files files(1);
  int count = 0;
  std::atomic<bool> running{true};
  std::atomic<bool> ready{false};
  std::thread watcher([&] {
    const auto wait =
        blockingRead(files.paths[0], [&] { postToMainThread([&count] { ++count; }); });
    ready = true;
    while (running) wait();
  });
  while (!ready) std::this_thread::yield();
  writeUntilTold(state, files.paths[0], count);
  running = false;
  const int file = ::open(files.paths[0].c_str(), O_WRONLY);
  if (::pwrite(file, "x", 1, 0) != 1) state.SkipWithError("write");
  ::close(file);
  watcher.join();
  while (NSRunLoop::mainRunLoop()->runPending()) {
  }
}

void pollPaths(benchmark::State& state) {
  const Files files(many);
  detail::PolledPaths polled;
  for (const std::string& path : files.paths)
    polled.add(NSString::stringWithUTF8String(path), [] {});
  for (auto _ : state) polled.check([](NSString*, detail::PolledPaths::Change) {});
  state.SetItemsProcessed(state.iterations() * many);
}

void statPaths(benchmark::State& state) {
  const Files files(many);
  for (auto _ : state)
    for (const std::string& path : files.paths) {
      struct statx is {};
      benchmark::DoNotOptimize(::statx(AT_FDCWD, path.c_str(), 0, STATX_MTIME, &is));
    }
  state.SetItemsProcessed(state.iterations() * many);
}

}  // namespace

void compareWatching() {
  compare("WatchAdd", {"watch one more of 10,000 paths", "inotify_add_watch", 1.5}, &addPaths,
          &inotifyCalls<true>);
  compare("WatchRemove", {"stop watching one of 10,000 paths", "inotify_rm_watch", 1.5},
          &removePaths, &inotifyCalls<false>);
  compare("WatchEvent",
          {"from a write until the waiting thread has the event", "a blocking read", 1.15, true},
          &eventSeen, &inotifySeen);
  compareElapsed("WatchTold",
                 {"from a write until the delegate was called on the main thread",
                  "a blocking read and a posted call", 1.2},
                 &delegateTold, &readAndPosted);
  compare("WatchPoll", {"poll one of 10,000 paths", "statx", 1.2}, &pollPaths, &statPaths);
}

}  // namespace qz::bench
