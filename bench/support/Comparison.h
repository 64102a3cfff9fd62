/// @file
/// The table of comparisons: one row for each operation, with what a C++ programmer would use
/// instead, and what the same costs in other object systems.
///
///     compare("SendOneClass", {"send by Selector, one class", "virtual call", 2.0},
///             &sendOneClass, &virtualOneClass);
///     comparePeer("SendOneClass", "Qt", &invokeByName);
///
/// Each becomes a benchmark of its own, "SendOneClass/ours", "SendOneClass/reference" and
/// "SendOneClass/Qt", so that `--benchmark_filter=SendOneClass` measures one row.
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <iosfwd>
#include <map>
#include <string>
#include <vector>

namespace qz::bench {

using Case = void (*)(benchmark::State& state);

/// What a row says beside its figures.
struct Row {
  std::string operation;
  std::string reference;
  double target =
      0;  ///< The most that ours may cost, in references; 0 for a row that only informs.
  bool waits =
      false;  ///< Other threads do part of the work: elapsed time counts, not the thread's.
};

/// Enters a row. A case that does many operations in each iteration says so with
/// `SetItemsProcessed`, and its figure is the time of one.
void compare(const std::string& family, Row row, Case ours, Case reference);

/// Enters the same operation of a peer into a row; any order.
void comparePeer(const std::string& family, const std::string& peer, Case theirs);

/// The same where the row's `waits` is set.
void compareWaitingPeer(const std::string& family, const std::string& peer, Case theirs);

/// The same for what the processor's time says little of: files, other processes, several threads.
/// Each iteration of the cases tells what it took with `SetIterationTime`.
void compareElapsed(const std::string& family, Row row, Case ours, Case reference);
void compareElapsedPeer(const std::string& family, const std::string& peer, Case theirs);

/// Enters a row of memory: `build(count)` makes a collection of that many elements and leaves it
/// alive. `limit` is the most bytes that an element of ours may take.
using Build = void (*)(std::size_t count);
struct MemoryRow {
  std::string operation;
  std::string reference;
  std::size_t count;
  double limit;
};
void compareMemory(const std::string& family, MemoryRow row, Build ours, Build reference);
void compareMemoryPeer(const std::string& family, const std::string& peer, Build theirs);

/// Collects the times of all repetitions, and shows the median of each benchmark as it comes in.
class MedianReporter : public benchmark::ConsoleReporter {
 public:
  bool ReportContext(const Context& context) override;
  void ReportRuns(const std::vector<Run>& runs) override;

  /// Nanoseconds for one operation, the median of all repetitions; 0 when it was not measured.
  double median(const std::string& benchmark) const;

  /// Who was measured in a family: "ours", "reference", and the peers.
  std::vector<std::string> peersIn(const std::string& family) const;

 private:
  std::map<std::string, std::vector<double>> nanoseconds_;
};

/// Prints the rows that were measured, as Markdown.
void printTimes(std::ostream& out, const MedianReporter& reporter);

/// Builds each collection that the filter lets through in a process of its own and answers what it
/// takes, as Markdown. Comes before anything else: what other benchmarks have freed would be used
/// again, uncounted.
std::string memoryTable();

}  // namespace qz::bench
