/// @file
/// Tasks: other programs, started, watched and waited for.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSString.h"

#pragma GCC visibility push(default)

namespace qz {

class NSArray;
class NSDictionary;
class NSError;
namespace detail {
class ChildProcess;
struct ChildRequest;
}  // namespace detail

/// How a task ended.
enum NSTaskTerminationReason : std::int32_t {
  NSTaskTerminationReasonExit = 1,
  NSTaskTerminationReasonUncaughtSignal = 2,
};

/// Runs a program, once.
///
///     auto task = make<NSTask>();
///     task->setLaunchPath("/bin/ls"_ns);
///     task->setArguments(NSArray::arrayWithObject("-l"_ns));
///     task->launch();
///     task->waitUntilExit();
///     if (task->terminationStatus() != 0) …
///
/// The program gets the three standard streams and no other descriptor, no signal blocked, and
/// SIGPIPE at its default. It stays in the process group of this process, so that Ctrl-C reaches
/// both. A program whose task is let go of runs on; when it ends it is collected all the same and
/// leaves no zombie. This needs no handler for SIGCHLD and disturbs none.
///
/// What is set after the launch, a second launch, and asking how a task ended before it has, raise
/// NSInvalidArgumentException. One thread at a time sets up and launches; afterwards any thread may
/// wait, ask and send signals.
class NSTask : public Derives<NSTask, NSObject> {
 public:
  static void describe(ClassDescription<NSTask>& is);

  NSTask();
  ~NSTask() override;

  /// A task that runs already.
  static Ref<NSTask> launchedTaskWithLaunchPath_arguments(NSString* path, NSArray* arguments);

  // What to run -----------------------------------------------------------------------------------

  /// The program's file. A relative path counts from this process's folder, and $PATH is not
  /// searched.
  Ref<NSString> launchPath() const { return launchPath_; }
  void setLaunchPath(NSString* path);

  /// Strings, handed over as they are, with no shell in between. Nil for none.
  Ref<NSArray> arguments() const;
  void setArguments(NSArray* arguments);

  /// Strings by name. Nil for those of this process at the time of the launch.
  Ref<NSDictionary> environment() const;
  void setEnvironment(NSDictionary* environment);

  /// Nil for this process's folder.
  Ref<NSString> currentDirectoryPath() const { return currentDirectoryPath_; }
  void setCurrentDirectoryPath(NSString* path);

  /// An NSPipe or an NSFileHandle; nil for the one of this process. Two may be the same. Anything
  /// else raises NSInvalidArgumentException. Once the task is launched, this process's copy of a
  /// pipe's far end is closed: a reader then sees the end when the program, and whatever it started
  /// that still has the pipe, is done with it.
  Ref<NSObject> standardInput() const { return streams_[0]; }
  Ref<NSObject> standardOutput() const { return streams_[1]; }
  Ref<NSObject> standardError() const { return streams_[2]; }
  void setStandardInput(NSObject* stream);
  void setStandardOutput(NSObject* stream);
  void setStandardError(NSObject* stream);

  /// Called once the program has ended, by a thread of this library's; the task is kept alive until
  /// then. Must not block. What it throws is told to the diagnostic stream.
  void setTerminationHandler(std::function<void(NSTask*)> handler);

  // Running ---------------------------------------------------------------------------------------

  /// Starts the program and returns when it runs. Raises NSInvalidArgumentException with the path
  /// and the reason when there is no such program, it may not be run, or the system has no room for
  /// it; the task may then be changed and launched again.
  void launch();

  /// The same with the reason as an Error.
  bool launchAndReturnError(Ref<NSError>* error);

  /// 0 before the launch.
  std::int32_t processIdentifier() const noexcept;

  /// Launched and not yet ended.
  bool isRunning() const;

  /// Sends SIGINT, SIGTERM, SIGSTOP and SIGCONT to the program, not to what it started. Nothing
  /// when it has ended.
  void interrupt();
  void terminate();
  void suspend();
  void resume();

  /// Sleeps until the program has ended. Output that goes to a pipe nobody reads can keep that from
  /// ever happening: read first, then wait.
  void waitUntilExit();

  /// Calls `function` once the program has ended: by a thread of this library's, as the termination
  /// handler, or at once by this one when it has ended already. Any number of them. The function
  /// must not block; what it throws is told to the diagnostic stream. See also NSTaskExit.h.
  void callWhenEnded(std::function<void()> function) const;

  /// What the program exited with, or the number of the signal that ended it; -1 when other code in
  /// this process collected it first.
  std::int32_t terminationStatus() const;
  NSTaskTerminationReason terminationReason() const;

 private:
  void requireNotLaunched(const char* operation) const;
  detail::ChildProcess& requireLaunched(const char* operation) const;
  const detail::ChildProcess& requireEnded(const char* operation) const;
  void setStream(std::size_t index, NSObject* stream, const char* operation);
  detail::ChildRequest request() const;
  std::function<void()> callAtEnd();
  void closeFarEnds() const;

  Ref<NSString> launchPath_;
  Ref<NSArray> arguments_;
  Ref<NSDictionary> environment_;
  Ref<NSString> currentDirectoryPath_;
  Ref<NSObject> streams_[3];
  std::function<void(NSTask*)> terminationHandler_;
  std::shared_ptr<detail::ChildProcess> child_;
};

}  // namespace qz

#pragma GCC visibility pop
