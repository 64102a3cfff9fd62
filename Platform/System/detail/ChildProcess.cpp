#include "Platform/System/detail/ChildProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/epoll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <thread>
#include <unordered_map>

#include "Platform/System/detail/SignalsHeldBack.h"
#include "Platform/Values/detail/Descriptor.h"

namespace qz::detail {
namespace {

class SpawnActions {
 public:
  SpawnActions() {
    ::posix_spawn_file_actions_init(&actions_);
    ::posix_spawnattr_init(&attributes_);
  }
  SpawnActions(const SpawnActions&) = delete;
  SpawnActions& operator=(const SpawnActions&) = delete;
  ~SpawnActions() {
    ::posix_spawn_file_actions_destroy(&actions_);
    ::posix_spawnattr_destroy(&attributes_);
  }

  /// Signals as a program expects them: none blocked, and those that this process may ignore for
  /// its own sake back at their default. What else is ignored (SIGHUP under nohup) stays so.
  int setSignals() {
    sigset_t set;
    ::sigemptyset(&set);
    if (const int problem = ::posix_spawnattr_setsigmask(&attributes_, &set)) return problem;
    ::sigaddset(&set, SIGPIPE);
    ::sigaddset(&set, SIGXFSZ);
    if (const int problem = ::posix_spawnattr_setsigdefault(&attributes_, &set)) return problem;
    return ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  }

  int setDirectory(const std::string& directory) {
    if (directory.empty()) return 0;
    return ::posix_spawn_file_actions_addchdir_np(&actions_, directory.c_str());
  }

  /// The streams, and nothing beyond them. A source that is itself a standard stream is moved out
  /// of the way first, or the streams could not be exchanged.
  int setStreams(const std::array<int, 3>& streams) {
    for (std::size_t i = 0; i < streams.size(); ++i) {
      int source = streams[i];
      if (source < 0) continue;
      if (source < 3) {
        moved_[i] = Descriptor(::fcntl(source, F_DUPFD_CLOEXEC, 3));
        if (!moved_[i]) return errno;
        source = moved_[i].number();
      }
      if (const int problem =
              ::posix_spawn_file_actions_adddup2(&actions_, source, static_cast<int>(i)))
        return problem;
    }
    return ::posix_spawn_file_actions_addclosefrom_np(&actions_, 3);
  }

  int spawn(const ChildRequest& request, pid_t* identifier) {
    std::vector<char*> arguments{const_cast<char*>(request.path.c_str())};
    for (const std::string& each : request.arguments)
      arguments.push_back(const_cast<char*>(each.c_str()));
    arguments.push_back(nullptr);
    std::vector<char*> environment;
    for (const std::string& each : request.environment)
      environment.push_back(const_cast<char*>(each.c_str()));
    environment.push_back(nullptr);
    return ::posix_spawn(identifier, request.path.c_str(), &actions_, &attributes_,
                         arguments.data(), environment.data());
  }

 private:
  posix_spawn_file_actions_t actions_;
  posix_spawnattr_t attributes_;
  std::array<Descriptor, 3> moved_;
};

/// Runs `work` in a thread of its own that takes no signals meant for the program.
template <class Work>
void startThread(Work work) {
  const SignalsHeldBack held;
  std::thread(std::move(work)).detach();
}

}  // namespace

/// One thread for all children: it sleeps until the kernel says that one of them has ended. Where
/// the kernel cannot say so, each child has a thread that waits for it.
class ChildProcess::Watcher {
 public:
  static Watcher& shared() {
    static Watcher* const watcher = new Watcher;
    return *watcher;
  }

  void watch(std::shared_ptr<ChildProcess> child) {
    Descriptor handle(static_cast<int>(::syscall(SYS_pidfd_open, child->identifier_, 0)));
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = handle.number();
    const std::lock_guard lock(mutex_);
    if (handle && ::epoll_ctl(queue_.number(), EPOLL_CTL_ADD, handle.number(), &event) == 0) {
      children_.emplace(handle.release(), std::move(child));
      return;
    }
    startThread([child = std::move(child)] { child->collect(); });
  }

 private:
  Watcher() : queue_(::epoll_create1(EPOLL_CLOEXEC)) {
    if (queue_) startThread([this] { run(); });
  }

  [[noreturn]] void run() {
    for (;;) {
      epoll_event event{};
      if (::epoll_wait(queue_.number(), &event, 1, -1) == 1) take(event.data.fd)->collect();
    }
  }

  std::shared_ptr<ChildProcess> take(int descriptor) {
    const std::lock_guard lock(mutex_);
    const Descriptor closing(descriptor);
    // Closing alone would not do: a program that is just being started has a copy for a moment.
    ::epoll_ctl(queue_.number(), EPOLL_CTL_DEL, descriptor, nullptr);
    return std::move(children_.extract(descriptor).mapped());
  }

  const Descriptor queue_;
  std::mutex mutex_;
  std::unordered_map<int, std::shared_ptr<ChildProcess>> children_;
};

int ChildProcess::start(const ChildRequest& request, std::function<void()> atEnd,
                        std::shared_ptr<ChildProcess>& child) {
  try {
    Watcher::shared();
  } catch (const std::system_error& noThread) {
    return noThread.code().value();
  }
  SpawnActions actions;
  int problem = actions.setSignals();
  if (problem == 0) problem = actions.setDirectory(request.directory);
  if (problem == 0) problem = actions.setStreams(request.streams);
  auto started = std::make_shared<ChildProcess>();
  if (atEnd) started->atEnd_.push_back(std::move(atEnd));
  if (problem == 0) problem = actions.spawn(request, &started->identifier_);
  if (problem != 0) return problem;
  child = started;
  Watcher::shared().watch(std::move(started));
  return 0;
}

void ChildProcess::collect() {
  siginfo_t about;
  // Looks without collecting: its number stays taken until nobody can send it a signal any more.
  while (::waitid(P_PID, static_cast<id_t>(identifier_), &about, WEXITED | WNOWAIT) != 0 &&
         errno == EINTR) {
  }
  std::vector<std::function<void()>> atEnd;
  {
    const std::lock_guard lock(mutex_);
    int status = 0;
    pid_t collected;
    do {
      collected = ::waitpid(identifier_, &status, 0);
    } while (collected < 0 && errno == EINTR);
    ending_.bySignal = collected > 0 && WIFSIGNALED(status);
    ending_.code = collected < 0         ? -1
                   : WIFSIGNALED(status) ? WTERMSIG(status)
                                         : WEXITSTATUS(status);
    hasEnded_ = true;
    atEnd.swap(atEnd_);
    ended_.notify_all();
  }
  for (const auto& function : atEnd) function();
}

void ChildProcess::whenEnded(std::function<void()> function) {
  {
    const std::lock_guard lock(mutex_);
    if (!hasEnded_) {
      atEnd_.push_back(std::move(function));
      return;
    }
  }
  function();
}

bool ChildProcess::isRunning() const {
  const std::lock_guard lock(mutex_);
  return !hasEnded_;
}

void ChildProcess::wait() const {
  std::unique_lock lock(mutex_);
  ended_.wait(lock, [this] { return hasEnded_; });
}

ChildProcess::Ending ChildProcess::ending() const {
  const std::lock_guard lock(mutex_);
  return ending_;
}

void ChildProcess::sendSignal(int signal) const {
  const std::lock_guard lock(mutex_);
  if (!hasEnded_) ::kill(identifier_, signal);
}

}  // namespace qz::detail
