// The work of a backup, done on a thread of its own.
#pragma once

#include <atomic>
#include <functional>

#include "EntryCopy.h"
#include "LargestFiles.h"
#include "QZFoundation/QZThreadedTask.h"

namespace backup {

/// What a folder comes to, or as much of it as has been dealt with.
struct Amount {
  std::uint64_t entries = 0;
  std::uint64_t bytes = 0;

  /// For estimates: an entry takes about as long as so many bytes, whatever is in it.
  static constexpr std::uint64_t bytesOfEntry = 64 * 1024;
  double work() const noexcept {
    return static_cast<double>(bytes) + static_cast<double>(entries) * bytesOfEntry;
  }
};

/// How a step ended; the task's result.
class StepResult : public qz::Derives<StepResult, NSObject> {
 public:
  static void describe(qz::ClassDescription<StepResult>& is);

  Amount done;
  std::uint64_t failures = 0;
  double seconds = 0;
  Ref<qz::NSArray> largestFiles;  ///< Of Files; of a step that counts.
};

/// One way through the source that does something to each entry. An entry that fails is told to
/// whoever wants to know, and the work goes on; the task's error says why the work itself came to
/// an end early: it could not begin, or was aborted. Memory does not grow with the number of
/// entries.
class BackupTask : public qz::Derives<BackupTask, qz::QZThreadedTask> {
 public:
  static void describe(qz::ClassDescription<BackupTask>& is);

  enum class Kind { Count, Copy, Verify };

  struct Settings {
    Ref<NSString> source;
    Ref<NSString> destination;
    Ref<NSString> leftOut;  ///< An entry that is passed by with all that is in it; may be nil.
    /// Strings, a folder before what is in it: these entries alone, as far as they are there, and
    /// not what is in them. Nil for all.
    Ref<qz::NSArray> entries;
    bool update = false;
    std::uint32_t largest = 0;  ///< How many of the largest files are wanted.
  };

  /// `expected` is what the source comes to, as far as that is known.
  BackupTask(Kind kind, const Settings& settings, const Amount& expected);

  /// Called on the main thread, for each entry that failed. To be set before the task starts.
  std::function<void(NSString* entry, NSError* error)> onFailure;

  void performTask() override;

  /// Any thread.
  Amount done() const noexcept { return {entries_, bytes_}; }
  const Amount& expected() const noexcept { return expected_; }

 private:
  Ref<NSError> work();
  template <class Visit>
  Ref<NSError> walk(const Visit& visit, bool tellsUnread);
  template <class Visit>
  Ref<NSError> goThrough(qz::NSArray* entries, const Visit& visit);
  bool visit(NSString* entry, EntryCopy& copy);
  void tellProgress();
  void fail(NSString* entry, NSError* error);

  const Kind kind_;
  const Settings settings_;
  const Amount expected_;
  std::atomic<std::uint64_t> entries_{0};
  std::atomic<std::uint64_t> bytes_{0};
  std::uint64_t failures_ = 0;
  LargestFiles largest_;
};

}  // namespace backup
