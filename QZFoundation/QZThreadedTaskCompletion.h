/// @file
/// The end of a threaded task, to be awaited by a coroutine. Offers nothing where the compiler has
/// no coroutines; see Async.h.
#pragma once

#include "Platform/Concurrency/Coroutines.h"

#if defined(__cpp_impl_coroutine) && __has_include(<coroutine>)

#include "QZFoundation/QZThreadedTask.h"

#pragma GCC visibility push(default)

namespace qz {

// These are templates, always of QZThreadedTask, for the sake of who does not call them: a
// coroutine that is a plain inline function is compiled in every file that includes it.

namespace detail {
inline NextNotification nextCompletion(QZThreadedTask* task) {
  if (task == nullptr) raise(NSInvalidArgumentException, "nil is no task to wait for");
  return nextNotification(QZThreadedTaskDidCompleteNotification, task);
}
}  // namespace detail

///     Ref<NSObject> result = co_await runToCompletion(make<QZThreadedTask>(work));
///
/// Starts the task when it is awaited, waits until its run is complete, and answers its result; its
/// `taskError` says whether it failed. Goes on on the same thread, in its run loop, once the main
/// thread, whose loop has to run, has been told of the end. Throws what `start` throws,
/// RunLoopEnded when this thread's loop ends before, and NSInvalidArgumentException for nil.
template <class Task = QZThreadedTask>
Async<Ref<NSObject>> runToCompletion(Ref<std::type_identity_t<Task>> task) {
  const std::function<void()> begin = [&task] { task->start(); };
  co_await detail::nextCompletion(task).onceWaiting(begin);
  co_return task->taskResult();
}

/// The same for a run that was started elsewhere: the first that completes from now on. On the main
/// thread, in the turn that starts the task, none is missed; another thread may come too late, and
/// then waits for the next run.
template <class Task = QZThreadedTask>
Async<Ref<NSObject>> completionOf(Ref<std::type_identity_t<Task>> task) {
  co_await detail::nextCompletion(task);
  co_return task->taskResult();
}

}  // namespace qz

#pragma GCC visibility pop

#endif
