#include "QZFoundation/QZTreeWatcher.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>

#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Concurrency/MainThread.h"
#include "Platform/Concurrency/NSThread.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/Send.h"
#include "Platform/Runtime/WeakRef.h"
#include "Platform/System/Diagnostics.h"
#include "Platform/System/detail/PathBytes.h"
#include "Platform/System/detail/TreeEvents.h"
#include "QZFoundation/NSError-QZFoundation.h"
#include "QZFoundation/detail/FileMessages.h"

namespace qz {

using Clock = std::chrono::steady_clock;

/// Shared by a watcher and its thread, so that the thread does not keep the watcher.
struct detail::TreeWatcherState {
  TreeWatcherState(std::string path, TreeEvents::Options of, const QZTreeWatcherOptions& options,
                   QZTreeWatcher::Listener function)
      : events(std::move(path), std::move(of)),
        latency(inTicks(std::max(0.0, options.latency))),
        pollInterval(inTicks(std::max(0.01, options.pollInterval))),
        listener(std::make_shared<const QZTreeWatcher::Listener>(std::move(function))) {}

  static Clock::duration inTicks(NSTimeInterval seconds) {
    const std::chrono::duration<double> longest = std::chrono::hours(24);
    return std::chrono::duration_cast<Clock::duration>(
        std::min(std::chrono::duration<double>(seconds), longest));
  }

  TreeEvents events;  // of the thread, but for waking it
  const Clock::duration latency;
  const Clock::duration pollInterval;
  WeakRef<QZTreeWatcher> watcher;  // written before the thread starts
  std::atomic<bool> isOver{false};

  std::mutex mutex;  // guards what follows
  TreeChanges untold;
  bool isToBeTold = false;  // a function on the main thread will see to it
  std::shared_ptr<const QZTreeWatcher::Listener> listener;  // goes with the watcher
  WeakRef<NSObject> delegate;
  std::size_t polledFolders = 0;
  int refusal = 0;
};

namespace {

using detail::TreeChanges;
using detail::TreeWatcherState;

Ref<NSString> text(const std::string& path) {
  return NSString::stringWithCharacters(detail::pathOfBytes(path));
}

Ref<NSArray> arrayOf(std::vector<TreeChanges::Change> changes, NSString* top) {
  auto array = make<NSMutableArray>();
  for (const TreeChanges::Change& each : changes) {
    const Ref<NSString> other = each.other.empty() ? nullptr : text(each.other);
    array->addObject(make<QZTreeChange>(top, text(each.path), each.kinds, each.isFolder, other));
  }
  return array;
}

/// On the main thread: what has come together until now.
void tell(TreeWatcherState& state) {
  const Ref<QZTreeWatcher> watcher = state.watcher.load();
  if (!watcher) return;
  std::vector<TreeChanges::Change> changes;
  std::shared_ptr<const QZTreeWatcher::Listener> listener;
  Ref<NSObject> delegate;
  {
    std::lock_guard lock(state.mutex);
    state.isToBeTold = false;
    changes = state.untold.take();
    listener = state.listener;
    delegate = state.delegate.load();
  }
  if (changes.empty()) return;
  const Ref<NSArray> array = arrayOf(std::move(changes), watcher->path());
  try {
    if (*listener) (*listener)(array);
    if (delegate) send<void>(delegate, "treeWatcher:didDetectChanges:"_sel, watcher.get(), array);
  } catch (const Raised& raised) {
    // A listener that fails must not end the main thread's loop.
    detail::diagnose("A listener to changes in " + watcher->path()->UTF8String() +
                     " failed: " + raised.what());
  }
}

void settle(const std::shared_ptr<TreeWatcherState>& state) {
  TreeChanges news;
  state->events.settle(news);
  {
    std::lock_guard lock(state->mutex);
    state->untold.merge(std::move(news));
    state->polledFolders = state->events.polledFolders();
    state->refusal = state->events.refusal();
    if (state->untold.isEmpty() || std::exchange(state->isToBeTold, true)) return;
  }
  postToMainThread([state] { tell(*state); });
}

int millisecondsUntil(Clock::time_point when) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(when - Clock::now());
  return std::max(0, static_cast<int>(left.count()));
}

void watch(const std::shared_ptr<TreeWatcherState>& state) {
  detail::TreeEvents& events = state->events;
  auto poll = Clock::now() + state->pollInterval;
  std::optional<Clock::time_point> due;
  while (!state->isOver) {
    std::optional<Clock::time_point> until = due;
    if (events.needsPolling()) until = until ? std::min(*until, poll) : poll;
    if (events.wait(until ? millisecondsUntil(*until) : -1) && !due)
      due = Clock::now() + state->latency;
    const auto now = Clock::now();
    if (now >= poll) {
      if (events.needsPolling()) {
        events.poll();
        due = now;
      }
      poll = now + state->pollInterval;
    }
    if (state->isOver || !due || now < *due) continue;
    due.reset();
    settle(state);
    if (events.isUnsettled()) due = Clock::now() + std::max(state->latency, state->pollInterval);
  }
}

detail::TreeEvents::Options optionsOf(const QZTreeWatcherOptions& options) {
  detail::TreeEvents::Options answer{options.deep, {}};
  if (options.namesToLeaveOut)
    for (NSObject* name : *options.namesToLeaveOut) {
      const detail::PathBytes bytes(as<NSString>(name));
      if (bytes.error() == 0) answer.leaveOut.emplace_back(bytes.view());
    }
  return answer;
}

}  // namespace

// QZTreeWatcher -----------------------------------------------------------------------------------

Ref<QZTreeWatcher> QZTreeWatcher::initWithPath(NSString* path, Listener listener,
                                               const QZTreeWatcherOptions& options,
                                               Ref<NSError>* error) {
  const detail::PathBytes bytes(path);
  std::string whole(bytes.view());
  int failure = bytes.error();
  if (failure == 0 && !whole.starts_with('/')) {
    std::error_code code;
    whole = (std::filesystem::current_path(code) / whole).string();
    failure = code.value();
  }
  std::shared_ptr<TreeWatcherState> state;
  if (failure == 0) {
    state =
        std::make_shared<TreeWatcherState>(whole, optionsOf(options), options, std::move(listener));
    failure = state->events.start();
  }
  if (failure != 0) {
    if (error != nullptr) *error = detail::unreadableDirectory(path, failure);
    return nullptr;
  }
  state->polledFolders = state->events.polledFolders();
  state->refusal = state->events.refusal();
  auto watcher = make<QZTreeWatcher>(text(whole), state);
  state->watcher = watcher;
  auto thread = make<NSThread>([state] { watch(state); });
  thread->setName("QZTreeWatcher"_ns);
  thread->start();
  return watcher;
}

Ref<QZTreeWatcher> QZTreeWatcher::initWithPath_error(NSString* path, Ref<NSError>* error) {
  return initWithPath(path, nullptr, {}, error);
}

QZTreeWatcher::QZTreeWatcher(NSString* path, std::shared_ptr<detail::TreeWatcherState> state)
    : path_(path), state_(std::move(state)) {}

QZTreeWatcher::~QZTreeWatcher() {
  state_->isOver = true;
  state_->events.wake();
  std::shared_ptr<const Listener> listener;  // ends here, after the lock
  std::lock_guard lock(state_->mutex);
  listener.swap(state_->listener);
}

Ref<NSObject> QZTreeWatcher::delegate() const {
  std::lock_guard lock(state_->mutex);
  return state_->delegate.load();
}

void QZTreeWatcher::setDelegate(NSObject* delegate) {
  std::lock_guard lock(state_->mutex);
  state_->delegate = WeakRef<NSObject>(delegate);
}

std::uint32_t QZTreeWatcher::polledFolders() const {
  std::lock_guard lock(state_->mutex);
  return static_cast<std::uint32_t>(state_->polledFolders);
}

Ref<NSError> QZTreeWatcher::error() const {
  int refusal = 0;
  {
    std::lock_guard lock(state_->mutex);
    if (state_->polledFolders != 0) refusal = state_->refusal;
  }
  if (refusal == 0) return nullptr;
  return POSIXError_description(
      refusal,
      detail::message("Some folders in %@ cannot be watched and are checked regularly instead"_ns,
                      "Why changes of a watched folder may be told late"_ns, path_));
}

void QZTreeWatcher::describe(ClassDescription<QZTreeWatcher>& is) {
  using Self = QZTreeWatcher;
  is.named("QZTreeWatcher")
      .initializer<&Self::initWithPath_error>("initWithPath:error:")
      .property<&Self::path>("path")
      .property<&Self::delegate, &Self::setDelegate>("delegate")
      .property<&Self::polledFolders>("polledFolders")
      .property<&Self::error>("error");
}

// QZTreeChange ------------------------------------------------------------------------------------

QZTreeChange::QZTreeChange(NSString* top, NSString* path, std::uint32_t kinds, bool isFolder,
                           NSString* otherPath)
    : path_(path),
      otherPath_(otherPath),
      topLength_(top->length() + (top->hasSuffix("/"_ns) ? 0 : 1)),
      kinds_(kinds),
      isFolder_(isFolder) {}

Ref<NSString> QZTreeChange::relativePath() const {
  if (topLength_ >= path_->length()) return ""_ns;
  return path_->substringFromIndex(topLength_);
}

Ref<NSString> QZTreeChange::description() const {
  constexpr const char* names[] = {"created", "changed",    "deleted",
                                   "renamed", "attributes", "rescan"};
  std::string kinds;
  for (std::size_t i = 0; i < std::size(names); ++i)
    if ((kinds_ >> i & 1) != 0) kinds.append(names[i]).append(1, ' ');
  const Ref<NSString> first = NSString::stringWithUTF8String(kinds);
  if (!otherPath_) return NSString::stringWithFormat("%@%@"_ns, first, path_);
  return NSString::stringWithFormat("%@%@ (%@)"_ns, first, path_, otherPath_);
}

void QZTreeChange::describe(ClassDescription<QZTreeChange>& is) {
  using Self = QZTreeChange;
  is.named("QZTreeChange")
      .property<&Self::path>("path")
      .property<&Self::relativePath>("relativePath")
      .property<&Self::kinds>("kinds")
      .property<&Self::isCreated>("isCreated")
      .property<&Self::isChanged>("isChanged")
      .property<&Self::isDeleted>("isDeleted")
      .property<&Self::isRenamed>("isRenamed")
      .property<&Self::isFolder>("isFolder")
      .property<&Self::otherPath>("otherPath");
}

}  // namespace qz
