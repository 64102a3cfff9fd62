// Files: copies, walks, sizes, beside the system's own calls and programs.
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "Platform/Runtime/Describe.h"
#include "Platform/System/NSFileManager.h"
#include "QZFoundation/NSFileManager-QZCopy.h"
#include "QZFoundation/NSFileManager-QZFoundation.h"
#include "bench/support/Comparison.h"
#include "bench/support/Families.h"
#include "bench/support/Files.h"

namespace qz::bench {
namespace {

namespace fs = std::filesystem;

// A tree of small files ---------------------------------------------------------------------------

void copyTree(benchmark::State& state) {
  copyTreeBy(state, [](const std::string& from, const std::string& to) {
    return NSFileManager::defaultManager()->copyItemAtPath_toPath_error(ns(from), ns(to), nullptr);
  });
}

void copyTreeByProgram(benchmark::State& state) {
  copyTreeBy(state, [](const std::string& from, const std::string& to) {
    return runProgram({"cp", "-a", from, to});
  });
}

// One large file

bool copyByReading(const std::string& from, const std::string& to) {
  const int in = ::open(from.c_str(), O_RDONLY);
  const int out = ::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0600);
  std::vector<char> buffer(256 * 1024);
  ssize_t count = 0;
  while ((count = ::read(in, buffer.data(), buffer.size())) > 0)
    if (::write(out, buffer.data(), static_cast<std::size_t>(count)) != count) count = -1;
  ::close(in);
  return ::close(out) == 0 && count == 0;
}

bool copyByRange(const std::string& from, const std::string& to) {
  const int in = ::open(from.c_str(), O_RDONLY);
  const int out = ::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0600);
  ssize_t count = 0;
  while ((count = ::copy_file_range(in, nullptr, out, nullptr, 1 << 30, 0)) > 0) {
  }
  ::close(in);
  return ::close(out) == 0 && count == 0;
}

void copyLarge(benchmark::State& state) {
  copyLargeBy(state, [](const std::string& from, const std::string& to) {
    return NSFileManager::defaultManager()->copyItemAtPath_toPath_error(ns(from), ns(to), nullptr);
  });
}

// The quicker of the two on this file system.
void copyLargeByHand(benchmark::State& state) {
  static const auto best = [] {
    const std::string from = largeFile();
    const std::string to = place().at("trial");
    double shortest[2] = {1e9, 1e9};
    for (int turn = 0; turn < 6; ++turn) {
      const auto start = std::chrono::steady_clock::now();
      (turn % 2 == 0 ? copyByReading : copyByRange)(from, to);
      const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
      shortest[turn % 2] = std::min(shortest[turn % 2], took.count());
      fs::remove(to);
    }
    return shortest[0] < shortest[1] ? copyByReading : copyByRange;
  }();
  copyLargeBy(state, best);
}

// Overwriting

constexpr int overwritten = 1000;

void prepareOverwriting() {
  for (int i = 0; i < overwritten; ++i) {
    writeFile(place().at("from/" + std::to_string(i)), 4000);
    writeFile(place().at("to/" + std::to_string(i)), 3000);
  }
}

void overwrite(benchmark::State& state) {
  prepareOverwriting();
  const Ref<NSFileManager> manager = NSFileManager::defaultManager();
  timed(
      state,
      [&] {
        bool isDone = true;
        for (int i = 0; i < overwritten; ++i) {
          const std::string name = std::to_string(i);
          isDone &= !copyPath_toPath_withOptions(manager, ns(place().at("from/" + name)),
                                                 ns(place().at("to/" + name)), QZCopyOverwrite);
        }
        return isDone;
      },
      [] {});
}

// What a copy of one file that keeps permissions and times takes at least.
bool copyPlainly(const std::string& from, const std::string& to) {
  const int in = ::open(from.c_str(), O_RDONLY);
  struct ::stat about;
  ::fstat(in, &about);
  const int out = ::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0600);
  char buffer[8192];
  const ssize_t count = ::read(in, buffer, sizeof buffer);
  const bool isDone = ::write(out, buffer, static_cast<std::size_t>(count)) == count;
  const ::timespec times[2] = {about.st_atim, about.st_mtim};
  ::fchmod(out, about.st_mode & 07777);
  ::futimens(out, times);
  ::close(in);
  return ::close(out) == 0 && isDone;
}

void copyAnew(benchmark::State& state) {
  prepareOverwriting();
  timed(
      state,
      [] {
        bool isDone = true;
        for (int i = 0; i < overwritten; ++i) {
          const std::string name = std::to_string(i);
          isDone &= copyPlainly(place().at("from/" + name), place().at("new " + name));
        }
        return isDone;
      },
      [] {
        for (int i = 0; i < overwritten; ++i) fs::remove(place().at("new " + std::to_string(i)));
      });
}

// Walking

class Counter : public Derives<Counter, NSObject> {
 public:
  static void describe(ClassDescription<Counter>& is) {
    is.named("QZFileBenchCounter").method<&Counter::see_with>("see:with:");
  }
  Ref<NSObject> see_with(NSString*, NSObject*) {
    ++count;
    return nullptr;
  }
  int count = 0;
};

void walk(benchmark::State& state) {
  const Ref<NSString> top = ns(wideTree());
  auto counter = make<Counter>();
  timed(
      state,
      [&] {
        counter->count = 0;
        iterateDirectory_recursively_target_selector_withObject(
            NSFileManager::defaultManager(), top, true, counter, "see:with:"_sel, nullptr);
        return counter->count > entries;
      },
      [] {});
}

int countRaw(int folder) {
  struct Entry {
    std::uint64_t inode;
    std::int64_t next;
    std::uint16_t size;
    std::uint8_t type;
    char name[1];
  };
  std::vector<char> block(64 * 1024);
  int count = 1;
  for (;;) {
    const long size = ::syscall(SYS_getdents64, folder, block.data(), block.size());
    if (size <= 0) break;
    for (long at = 0; at < size;) {
      const auto* entry = reinterpret_cast<const Entry*>(block.data() + at);
      at += entry->size;
      const std::string_view name(entry->name);
      if (name == "." || name == "..") continue;
      if (entry->type == DT_DIR)
        count += countRaw(::openat(folder, entry->name, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
      else
        ++count;
    }
  }
  ::close(folder);
  return count;
}

void walkRaw(benchmark::State& state) {
  const std::string top = wideTree();
  timed(
      state, [&] { return countRaw(::open(top.c_str(), O_RDONLY | O_DIRECTORY)) > entries; },
      [] {});
}

// Sizes and types

template <class Ask>
void askOurs(benchmark::State& state, Ask ask) {
  std::vector<Ref<NSString>> paths;
  for (const std::string& each : widePaths()) paths.push_back(ns(each));
  const Ref<NSFileManager> manager = NSFileManager::defaultManager();
  timed(
      state,
      [&] {
        std::uint64_t sum = 0;
        for (const auto& each : paths) sum += ask(manager, each);
        return sum == paths.size();
      },
      [] {});
}

void askRaw(benchmark::State& state, unsigned int mask) {
  const auto paths = widePaths();
  timed(
      state,
      [&] {
        std::size_t sum = 0;
        struct ::statx about;
        for (const std::string& each : paths)
          sum += ::statx(AT_FDCWD, each.c_str(), AT_SYMLINK_NOFOLLOW, mask, &about) == 0 &&
                 S_ISREG(about.stx_mode);
        return sum == paths.size();
      },
      [] {});
}

void sizes(benchmark::State& state) {
  askOurs(state, [](NSFileManager* manager, NSString* path) {
    return totalSizeOfFileAtPath(manager, path);
  });
}
void sizesRaw(benchmark::State& state) { askRaw(state, STATX_TYPE | STATX_SIZE); }

void types(benchmark::State& state) {
  askOurs(state, [](NSFileManager* manager, NSString* path) -> std::uint64_t {
    return objectTypeAtPath(manager, path);
  });
}
void directories(benchmark::State& state) {
  askOurs(state, [](NSFileManager* manager, NSString* path) -> std::uint64_t {
    return isDirectoryAtPath(manager, path) ? 0 : 1;
  });
}
void typesRaw(benchmark::State& state) { askRaw(state, STATX_TYPE); }

}  // namespace

void compareFiles() {
  compareElapsed("CopyTree", {"copy a tree of 5,000 small files", "cp -a", 0.6}, &copyTree,
                 &copyTreeByProgram);
  compareElapsed("CopyLarge",
                 {"copy a large file", "the better of read/write and copy_file_range", 1.05},
                 &copyLarge, &copyLargeByHand);
  compareElapsed("Overwrite",
                 {"overwrite 1,000 small files by a copy that takes their place",
                  "plain copies of them under new names", 2},
                 &overwrite, &copyAnew);
  compareElapsed(
      "Walk", {"walk 200,000 entries, told by Selector of each path", "getdents64 + openat", 1.6},
      &walk, &walkRaw);
  compareElapsed("Sizes", {"sizes of 200,000 files", "statx", 1.1}, &sizes, &sizesRaw);
  compareElapsed("Types", {"objectTypeAtPath: of 200,000 files", "statx", 1.2}, &types, &typesRaw);
  compareElapsed("Directories", {"isDirectoryAtPath: of 200,000 files", "statx", 1.2}, &directories,
                 &typesRaw);
}

}  // namespace qz::bench
