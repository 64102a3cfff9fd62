#include "bench/support/Files.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

extern char** environ;

namespace qz::bench {

namespace fs = std::filesystem;

namespace {

constexpr int smallFiles = 5000;
constexpr int entriesInFolder = 100;

std::string numbered(const std::string& top, int number, int inFolder) {
  const int folder = number / inFolder;
  return top + "/folder " + std::to_string(folder / 20) + "/part " + std::to_string(folder) +
         "/file " + std::to_string(number) + ".txt";
}

}  // namespace

Place::Place() {
  std::string name = (fs::temp_directory_path() / "qz-bench-XXXXXX").string();
  if (::mkdtemp(name.data()) == nullptr) std::abort();
  path_ = name;
}

Place::~Place() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

Place& place() {
  static Place here;
  return here;
}

void writeFile(const std::string& path, std::size_t size) {
  fs::create_directories(fs::path(path).parent_path());
  std::ofstream(path, std::ios::binary) << std::string(size, 'x');
}

const std::string& smallTree() {
  static const std::string top = [] {
    std::string path = place().at("small");
    for (int i = 0; i < smallFiles; ++i)
      writeFile(numbered(path, i, 50), static_cast<std::size_t>(i * 37 % 16384));
    return path;
  }();
  return top;
}

const std::string& wideTree() {
  static const std::string top = [] {
    std::string path = place().at("wide");
    for (int i = 0; i < entries; ++i) writeFile(numbered(path, i, entriesInFolder), 1);
    return path;
  }();
  return top;
}

std::vector<std::string> widePaths() {
  std::vector<std::string> paths;
  for (int i = 0; i < entries; ++i) paths.push_back(numbered(wideTree(), i, entriesInFolder));
  return paths;
}

const std::string& largeFile() {
  static const std::string path = [] {
    const char* wanted = std::getenv("QZ_BENCH_MEGABYTES");
    const int megabytes = wanted == nullptr ? 256 : std::atoi(wanted);
    std::string name = place().at("large");
    std::ofstream file(name, std::ios::binary);
    const std::string block(1 << 20, 'b');
    for (int i = 0; i < megabytes; ++i) file << block;
    return name;
  }();
  return path;
}

Ref<NSString> ns(const std::string& path) {
  return NSString::stringWithFileSystemRepresentation(path);
}

bool runProgram(const std::vector<std::string>& words) {
  std::vector<char*> arguments;
  for (const std::string& each : words) arguments.push_back(const_cast<char*>(each.c_str()));
  arguments.push_back(nullptr);
  ::posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t child = 0;
  int status = -1;
  const bool isStarted =
      ::posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ) == 0;
  ::posix_spawn_file_actions_destroy(&actions);
  return isStarted && ::waitpid(child, &status, 0) == child && status == 0;
}

}  // namespace qz::bench
