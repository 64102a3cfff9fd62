#include "bench/support/Comparison.h"

#include <algorithm>
#include <cstdio>
#include <ostream>
#include <regex>
#include <sstream>
#include <utility>

#include "bench/support/ResidentMemory.h"

namespace qz::bench {
namespace {

const std::vector<std::string> peers{"Qt", "GLib"};

template <class R>
struct Entered {
  std::string family;
  R row;
};

struct MemoryCases {
  MemoryRow row;
  std::map<std::string, Build> builds;
};

std::vector<Entered<Row>>& rows() {
  static std::vector<Entered<Row>> all;
  return all;
}

std::map<std::string, MemoryCases>& memoryRows() {
  static std::map<std::string, MemoryCases> all;
  return all;
}

std::string number(const char* format, double value) {
  char text[32];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

std::string duration(double nanoseconds) {
  if (nanoseconds < 100) return number("%.2f ns", nanoseconds);
  if (nanoseconds < 10'000) return number("%.0f ns", nanoseconds);
  if (nanoseconds < 1'000'000) return number("%.1f µs", nanoseconds / 1'000);
  return number("%.1f ms", nanoseconds / 1'000'000);
}

std::string ratio(double value, double reference) {
  if (value == 0 || reference == 0) return "";
  const double quotient = value / reference;
  return number(quotient < 10 ? "%.2f" : "%.0f", quotient);
}

bool hasColumn(const std::string& name) {
  return name == "ours" || name == "reference" || std::ranges::count(peers, name) != 0;
}

std::string missed(bool isMissed) { return isMissed ? " (missed)" : ""; }

}  // namespace

void compare(const std::string& family, Row row, Case ours, Case reference) {
  for (const auto& [name, measured] : {std::pair("/ours", ours), {"/reference", reference}}) {
    auto* registered = benchmark::RegisterBenchmark((family + name).c_str(), measured);
    if (row.waits) registered->UseRealTime();
  }
  rows().push_back({family, std::move(row)});
}

void comparePeer(const std::string& family, const std::string& peer, Case theirs) {
  benchmark::RegisterBenchmark((family + "/" + peer).c_str(), theirs);
}

void compareWaitingPeer(const std::string& family, const std::string& peer, Case theirs) {
  benchmark::RegisterBenchmark((family + "/" + peer).c_str(), theirs)->UseRealTime();
}

void compareElapsed(const std::string& family, Row row, Case ours, Case reference) {
  compareElapsedPeer(family, "ours", ours);
  compareElapsedPeer(family, "reference", reference);
  rows().push_back({family, std::move(row)});
}

void compareElapsedPeer(const std::string& family, const std::string& peer, Case theirs) {
  benchmark::RegisterBenchmark((family + "/" + peer).c_str(), theirs)->UseManualTime();
}

void compareMemory(const std::string& family, MemoryRow row, Build ours, Build reference) {
  MemoryCases& cases = memoryRows()[family];
  cases.row = std::move(row);
  cases.builds["ours"] = ours;
  cases.builds["reference"] = reference;
}

void compareMemoryPeer(const std::string& family, const std::string& peer, Build theirs) {
  memoryRows()[family].builds[peer] = theirs;
}

bool MedianReporter::ReportContext(const Context& context) {
  PrintBasicContext(&GetErrorStream(), context);
  return ConsoleReporter::ReportContext(context);
}

void MedianReporter::ReportRuns(const std::vector<Run>& runs) {
  std::vector<Run> shown;
  for (const Run& run : runs) {
    if (run.run_type == Run::RT_Aggregate) {
      if (run.aggregate_name == "median" || run.aggregate_name == "cv") shown.push_back(run);
      continue;
    }
    if (run.repetitions <= 1) shown.push_back(run);
    if (run.error_occurred) continue;
    const auto rate = run.counters.find("items_per_second");
    const double seconds = rate != run.counters.end()
                               ? 1 / rate->second.value
                               : (run.run_name.time_type.empty() ? run.cpu_accumulated_time
                                                                 : run.real_accumulated_time) /
                                     static_cast<double>(run.iterations);
    nanoseconds_[run.run_name.function_name].push_back(seconds * 1e9);
  }
  if (!shown.empty()) ConsoleReporter::ReportRuns(shown);
}

std::vector<std::string> MedianReporter::peersIn(const std::string& family) const {
  std::vector<std::string> found;
  for (auto each = nanoseconds_.lower_bound(family + "/");
       each != nanoseconds_.end() && each->first.starts_with(family + "/"); ++each)
    found.push_back(each->first.substr(family.size() + 1));
  return found;
}

double MedianReporter::median(const std::string& benchmark) const {
  const auto found = nanoseconds_.find(benchmark);
  if (found == nanoseconds_.end()) return 0;
  std::vector<double> sorted = found->second;
  std::sort(sorted.begin(), sorted.end());
  return sorted[sorted.size() / 2];
}

namespace {

/// "ICU 5.4, fmt 1.6": the peers that have no column of their own.
std::string others(const MedianReporter& reporter, const std::string& family, double reference) {
  std::string text;
  for (const std::string& peer : reporter.peersIn(family)) {
    if (hasColumn(peer)) continue;
    text += (text.empty() ? "" : ", ") + peer + " " +
            ratio(reporter.median(family + "/" + peer), reference);
  }
  return text;
}

}  // namespace

void printTimes(std::ostream& out, const MedianReporter& reporter) {
  bool first = true;
  for (const auto& [family, row] : rows()) {
    const double ours = reporter.median(family + "/ours");
    const double reference = reporter.median(family + "/reference");
    if (ours == 0 || reference == 0) continue;
    if (std::exchange(first, false))
      out << "\n| operation | reference | ours | reference takes | ratio | target | Qt | GLib | "
             "others |\n"
          << "|---|---|--:|--:|--:|--:|--:|--:|---|\n";
    const bool isMissed = row.target != 0 && ours / reference > row.target;
    out << "| " << row.operation << " | " << row.reference << " | " << duration(ours) << " | "
        << duration(reference) << " | " << ratio(ours, reference) << missed(isMissed) << " | "
        << (row.target == 0 ? "" : number("%g", row.target)) << " |";
    for (const std::string& peer : peers)
      out << " " << ratio(reporter.median(family + "/" + peer), reference) << " |";
    out << " " << others(reporter, family, reference) << " |\n";
  }
}

std::string memoryTable() {
  const std::regex wanted(benchmark::GetBenchmarkFilter());
  std::ostringstream out;
  for (const auto& [family, cases] : memoryRows()) {
    if (!std::regex_search(family + "/ours", wanted)) continue;
    if (out.view().empty())
      out << "\n| memory | reference | ours | reference takes | at most | Qt | GLib | others |\n"
          << "|---|---|--:|--:|--:|--:|--:|---|\n";
    const auto bytes = [&cases = cases](const std::string& name) {
      const auto build = cases.builds.find(name);
      if (build == cases.builds.end()) return 0.0;
      return residentBytes(build->second, cases.row.count) / static_cast<double>(cases.row.count);
    };
    const double ours = bytes("ours");
    out << "| " << cases.row.operation << " | " << cases.row.reference << " | "
        << number("%.1f", ours) << missed(ours > cases.row.limit) << " | "
        << number("%.1f", bytes("reference")) << " | " << number("%g", cases.row.limit) << " |";
    for (const std::string& peer : peers) {
      const double theirs = bytes(peer);
      out << " " << (theirs == 0 ? "" : number("%.1f", theirs)) << " |";
    }
    std::string others;
    for (const auto& [peer, build] : cases.builds)
      if (!hasColumn(peer))
        others += (others.empty() ? "" : ", ") + peer + " " + number("%.1f", bytes(peer));
    out << " " << others << " |\n";
  }
  return out.str();
}

}  // namespace qz::bench
