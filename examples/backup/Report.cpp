#include "Report.h"

#include <sys/resource.h>

#include <cstdio>

#include "Platform/Collections/NSMutableArray.h"
#include "Texts.h"

namespace backup {

using namespace qz;

void printSteps(const std::vector<Step>& steps) {
  constexpr auto format = "%-10s %10s %12s %13s %14s %8s\n";
  std::printf("\n");
  std::printf(format, "", "entries", "bytes", "time", "rate", "failed");
  for (const Step& each : steps) {
    if (!each.result) continue;
    const StepResult& result = *each.result;
    // Counting reads no bytes.
    const std::string rate = each.kind == BackupTask::Kind::Count
                                 ? ""
                                 : rateText(static_cast<double>(result.done.bytes), result.seconds);
    std::printf(format, each.title.c_str(), countText(result.done.entries).c_str(),
                sizeText(result.done.bytes).c_str(), exactTimeText(result.seconds).c_str(),
                rate.c_str(), countText(result.failures).c_str());
  }
  ::rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  const auto kibibytes = static_cast<std::uint64_t>(usage.ru_maxrss);
  std::printf("\nmemory at most: %s\n", sizeText(1024 * kibibytes).c_str());
}

void printLargest(NSArray* files) {
  if (files->count() == 0) return;
  auto indexer = make<QZPathIndexer>();
  for (File* each : elements<File>(files)) indexer->addPath(each->path);
  const Ref<QZIndexMap> bySize = sortMapUsingKeyPath(files, "size"_ns);
  std::printf("\nlargest files:\n");
  for (File* each : elements<File>(reversedArray(arrayUsingMap(files, bySize)))) {
    const std::string folder = printable(indexer->prefixForPath(each->path));
    std::printf("%12s  %s%s\n", sizeText(each->size).c_str(),
                printable(each->path->lastPathComponent()).c_str(),
                folder.empty() ? "" : ("  (" + folder + ")").c_str());
  }
}

}  // namespace backup
