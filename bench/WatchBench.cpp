// Watching files, beside the bare system calls.
#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "Platform/System/detail/VnodeEvents.h"
#include "QZFoundation/XJKQueue.h"
#include "QZFoundation/detail/PolledPaths.h"
#include "bench/support/Comparison.h"
#include "bench/support/Families.h"

namespace qz::bench {
namespace {

/// A folder with that many files.
class Files {
 public:
  explicit Files(int count) {
    std::string folder = "/tmp/qzbenchXXXXXX";
    folder_ = ::mkdtemp(folder.data());
    for (int i = 0; i < count; ++i) {
      paths.push_back(folder_ + "/" + std::to_string(i));
      ::close(::creat(paths.back().c_str(), 0600));
      strings.push_back(NSString::stringWithUTF8String(paths.back()));
    }
  }
  ~Files() { std::filesystem::remove_all(folder_); }
  std::vector<std::string> paths;
  std::vector<Ref<NSString>> strings;

 private:
  std::string folder_;
};

constexpr int many = 10'000;

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

/// From a write here until another thread that waits has seen it and says so. `wait` blocks until
/// there was an event; it is called once more to end.
template <class Wait>
void writeUntilSeen(benchmark::State& state, const std::string& path, Wait wait) {
  std::atomic<int> seen{0};
  std::atomic<bool> running{true};
  std::thread watcher([&] {
    while (running) {
      wait();
      seen.fetch_add(1);
      seen.notify_one();
    }
  });
  const int file = ::open(path.c_str(), O_WRONLY);
  for (auto _ : state) {
    state.PauseTiming();
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    const int before = seen;
    state.ResumeTiming();
    if (::pwrite(file, "x", 1, 0) != 1) state.SkipWithError("write");
    seen.wait(before);
  }
  running = false;
  if (::pwrite(file, "x", 1, 0) != 1) state.SkipWithError("write");
  watcher.join();
  ::close(file);
}

void eventSeen(benchmark::State& state) {
  const Files files(1);
  const auto events = detail::VnodeEvents::open();
  events->add(files.paths[0], detail::vnodeWritten);
  writeUntilSeen(state, files.paths[0], [&] {
    while (events->wait(std::chrono::seconds(5)).empty()) {
    }
  });
}

void inotifySeen(benchmark::State& state) {
  const Files files(1);
  const int notify = ::inotify_init1(IN_CLOEXEC);
  ::inotify_add_watch(notify, files.paths[0].c_str(), IN_MODIFY);
  writeUntilSeen(state, files.paths[0], [&] {
    std::array<char, 4096> buffer;
    benchmark::DoNotOptimize(::read(notify, buffer.data(), buffer.size()));
  });
  ::close(notify);
}

void pollPaths(benchmark::State& state) {
  const Files files(many);
  detail::PolledPaths polled;
  for (const std::string& path : files.paths) polled.add(path, [] {});
  for (auto _ : state) polled.check([](const std::string&, detail::PolledPaths::Change) {});
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
          {"from a write until the waiting thread has the event", "a blocking read", 1.15},
          &eventSeen, &inotifySeen);
  compare("WatchPoll", {"poll one of 10,000 paths", "statx", 1.2}, &pollPaths, &statPaths);
}

}  // namespace qz::bench
