// Measures every row of the table. Arguments are Google Benchmark's, and come after what is asked
// for here, so they win:
//
//   qzbench --benchmark_filter=Sort --benchmark_repetitions=3
#include <benchmark/benchmark.h>

#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "bench/support/Comparison.h"
#include "bench/support/Families.h"

int main(int argc, char** argv) {
  // Interleaved repetitions put what disturbs the machine for a while on all sides of a comparison.
  std::vector<std::string> arguments{argv[0], "--benchmark_repetitions=9",
                                     "--benchmark_enable_random_interleaving=true",
                                     "--benchmark_min_time=0.05"};
  arguments.insert(arguments.end(), argv + 1, argv + argc);
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  int count = static_cast<int>(pointers.size());
  benchmark::Initialize(&count, pointers.data());
  if (benchmark::ReportUnrecognizedArguments(count, pointers.data())) return 1;

  qz::bench::compareDispatch();
  qz::bench::compareObjects();
  qz::bench::compareKeyValueAccess();
  qz::bench::compareCollections();
  qz::bench::compareDictionaries();
  qz::bench::compareArrays();
  qz::bench::compareSorting();
  qz::bench::compareStrings();
  qz::bench::compareMessages();
  qz::bench::compareThreads();
  qz::bench::compareCoroutines();
  qz::bench::compareObserving();
  qz::bench::compareThreadedTask();
  qz::bench::compareWatching();
  qz::bench::compareFiles();
  qz::bench::compareFormatters();
  qz::bench::compareSystem();
  qz::bench::comparePropertyLists();
  qz::bench::compareIcuStrings();
  qz::bench::comparePlainFiles();
#if defined(QZ_BENCH_QT)
  qz::bench::compareQt();
  qz::bench::compareQtStrings();
  qz::bench::compareQtFiles();
  qz::bench::compareQtFormatters();
  qz::bench::compareQtDictionaries();
  qz::bench::compareQtPropertyLists();
  qz::bench::compareQtObserving();
  qz::bench::compareQtWatching();
#endif
#if defined(QZ_BENCH_GLIB)
  qz::bench::compareGLib();
  qz::bench::compareGLibDictionaries();
  qz::bench::compareGLibObserving();
  qz::bench::compareGLibWatching();
#endif
#if defined(QZ_BENCH_BOOST)
  qz::bench::compareBoostObserving();
#endif
#if defined(QZ_BENCH_SPDLOG)
  qz::bench::compareSpdlog();
#endif
#if defined(QZ_BENCH_ABSEIL)
  qz::bench::compareAbseilDictionaries();
#endif
#if defined(QZ_BENCH_ROBIN_MAP)
  qz::bench::compareRobinMapDictionaries();
#endif

  const std::string memory = qz::bench::memoryTable();

  // A process that never had a second thread counts std::shared_ptr's owners without atomics.
  std::thread([] {}).join();

  qz::bench::MedianReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  qz::bench::printTimes(std::cout, reporter);
  std::cout << memory;
}
