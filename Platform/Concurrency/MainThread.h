/// @file
/// Functions on the main thread, from any thread.
///
///     int pages = callOnMainThread([&] { return document->pages(); });
///     postToMainThread([document] { document->show(); });
#pragma once

#include <type_traits>
#include <utility>

#include "Platform/Concurrency/NSRunLoop.h"

namespace qz {

/// Calls `function` on the main thread, waits, and answers what it answers; what it throws is
/// thrown here. On the main thread it is called at once. Raises NSRunLoopEndedException when the
/// main thread's loop ends without serving it.
template <class F>
auto callOnMainThread(F&& function) -> std::invoke_result_t<F&> {
  return detail::mainLoop()->performAndWait(std::forward<F>(function));
}

/// Has `function` called on the main thread in the loop's next turn, and does not wait. Functions
/// are called in the order in which they were posted. False when the main thread's loop has ended.
template <class F>
bool postToMainThread(F&& function) {
  return detail::mainLoop()->perform(std::forward<F>(function));
}

}  // namespace qz
