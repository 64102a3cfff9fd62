/// @file
/// What the benchmarks of files work on. It lies in $TMPDIR, is made when a case asks for it, and
/// is removed at the end.
#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "Platform/Values/NSString.h"

namespace qz::bench {

/// A directory of this run's own.
class Place {
 public:
  Place();
  ~Place();
  std::string at(const std::string& name) const { return path_ + '/' + name; }

 private:
  std::string path_;
};
Place& place();

/// Writes a file of so many bytes, and the directories it lies in.
void writeFile(const std::string& path, std::size_t size);

/// 5,000 files of 0 to 16 KiB.
const std::string& smallTree();

/// 200,000 files of one byte, and their paths.
inline constexpr int entries = 200'000;
const std::string& wideTree();
std::vector<std::string> widePaths();

/// A file of 256 MiB, or as many as QZ_BENCH_MEGABYTES says.
const std::string& largeFile();

Ref<NSString> ns(const std::string& path);

/// Runs a program and waits; what it prints is dropped. Whether it succeeded.
bool runProgram(const std::vector<std::string>& words);

/// Times `work`, which answers whether it succeeded, and tidies up untimed.
template <class Work, class Tidy>
void timed(benchmark::State& state, Work work, Tidy tidy) {
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    const bool isDone = work();
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    state.SetIterationTime(elapsed.count());
    if (!isDone) state.SkipWithError("it failed");
    tidy();
  }
}

/// Times `copy(from, to)`, of the tree of small files and of the large file.
template <class Copy>
void copyTreeBy(benchmark::State& state, Copy copy) {
  const std::string from = smallTree();
  const std::string to = place().at("copy of small");
  timed(
      state, [&] { return copy(from, to); }, [&] { std::filesystem::remove_all(to); });
}
template <class Copy>
void copyLargeBy(benchmark::State& state, Copy copy) {
  const std::string from = largeFile();
  const std::string to = place().at("copy of large");
  timed(
      state, [&] { return copy(from, to); }, [&] { std::filesystem::remove(to); });
}

/// Times `walk(top)`, which answers how many entries of the wide tree it met.
template <class Walk>
void walkBy(benchmark::State& state, Walk walk) {
  const std::string top = wideTree();
  timed(
      state, [&] { return walk(top) > entries; }, [] {});
}

}  // namespace qz::bench
