// Files without an object library: std::filesystem and other programs, those that are installed.
// What std::filesystem copies has the time and the owner of now.
#include <unistd.h>

#include <cstdlib>
#include <sstream>

#include "bench/support/Comparison.h"
#include "bench/support/Families.h"
#include "bench/support/Files.h"

namespace qz::bench {
namespace {

namespace fs = std::filesystem;
using State = benchmark::State;

void copyTree(State& state) {
  copyTreeBy(state, [](const std::string& from, const std::string& to) {
    fs::copy(from, to, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
    return true;
  });
}

void copyLarge(State& state) {
  copyLargeBy(state, [](const std::string& from, const std::string& to) {
    return fs::copy_file(from, to);
  });
}

void walk(State& state) {
  walkBy(state, [](const std::string& top) {
    int count = 1;
    std::size_t length = 0;
    for (const fs::directory_entry& each : fs::recursive_directory_iterator(top)) {
      length += each.path().native().size();
      ++count;
    }
    benchmark::DoNotOptimize(length);
    return count;
  });
}

void sizes(State& state) {
  const auto paths = widePaths();
  timed(
      state,
      [&] {
        std::uintmax_t sum = 0;
        for (const std::string& each : paths) sum += fs::file_size(each);
        return sum == paths.size();
      },
      [] {});
}

void copyTreeByRsync(State& state) {
  copyTreeBy(state, [](const std::string& from, const std::string& to) {
    return runProgram({"rsync", "-a", from + '/', to});
  });
}

// Each full path is printed, to nowhere.
void walkByFind(State& state) {
  walkBy(state, [](const std::string& top) { return runProgram({"find", top}) ? entries + 1 : 0; });
}

bool isInstalled(const std::string& program) {
  const char* path = std::getenv("PATH");
  std::istringstream folders(path == nullptr ? "" : path);
  for (std::string folder; std::getline(folders, folder, ':');)
    if (::access((folder + '/' + program).c_str(), X_OK) == 0) return true;
  return false;
}

}  // namespace

void comparePlainFiles() {
  compareElapsedPeer("CopyTree", "std", &copyTree);
  compareElapsedPeer("CopyLarge", "std", &copyLarge);
  compareElapsedPeer("Walk", "std", &walk);
  compareElapsedPeer("Sizes", "std", &sizes);
  if (isInstalled("rsync")) compareElapsedPeer("CopyTree", "rsync", &copyTreeByRsync);
  if (isInstalled("find")) compareElapsedPeer("Walk", "find", &walkByFind);
}

}  // namespace qz::bench
