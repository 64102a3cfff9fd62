// spdlog: a file logger that hands each line to the kernel.
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>
#include <unistd.h>

#include <string>

#include "bench/support/Comparison.h"
#include "bench/support/Families.h"

namespace qz::bench {
namespace {

void logLine(benchmark::State& state) {
  const std::string path = "/tmp/qzbench-spdlog-" + std::to_string(::getpid());
  auto logger = std::make_shared<spdlog::logger>(
      "bench", std::make_shared<spdlog::sinks::basic_file_sink_st>(path));
  logger->set_pattern("%y-%m-%d %H:%M:%S.%e %v");
  logger->flush_on(spdlog::level::info);
  for (auto _ : state) logger->info("copied 1200 of 4711 files");
  ::unlink(path.c_str());
}

}  // namespace

void compareSpdlog() { comparePeer("LogLine", "spdlog", &logLine); }

}  // namespace qz::bench
