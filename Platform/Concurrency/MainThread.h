/// @file
/// Functions on the main thread, from any thread.
///
///     int pages = callOnMainThread([&] { return document->pages(); });
///     postToMainThread([document] { document->show(); });
///     Ref<NSString> title = onMainThread(document).call(&Document::title);
///     onMainThread(document).post(&Document::setTitle, "New"_ns);
#pragma once

#include <functional>
#include <tuple>
#include <type_traits>
#include <utility>

#include "Platform/Concurrency/NSRunLoop.h"

#pragma GCC visibility push(default)

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

namespace detail {

/// How an argument waits for its call: Objects are kept alive, anything else is copied.
template <class A, bool isObject = isObjectPointer<std::decay_t<A>>>
struct KeptArgument {
  using type = std::decay_t<A>;
};
template <class A>
struct KeptArgument<A, true> {
  using type = Ref<std::remove_pointer_t<std::decay_t<A>>>;
};

}  // namespace detail

/// An Object whose members are to be called on the main thread; made by `onMainThread`.
template <class T>
class MainThreadCaller {
 public:
  /// Keeps `target` alive.
  explicit MainThreadCaller(T* target) noexcept : target_(target) {}

  /// Calls a member function, or a function that takes the Object first, and answers what it
  /// answers; see `callOnMainThread`. Nothing is copied.
  template <class F, class... A>
  auto call(F&& function, A&&... arguments) const -> std::invoke_result_t<F, T*, A...> {
    return callOnMainThread([&]() -> std::invoke_result_t<F, T*, A...> {
      return std::invoke(std::forward<F>(function), target_.get(), std::forward<A>(arguments)...);
    });
  }

  /// The same without waiting; see `postToMainThread`. The Object and arguments that are Objects
  /// are kept alive until then, other arguments are copied, and the answer is dropped.
  template <class F, class... A>
  bool post(F&& function, A&&... arguments) const {
    return postToMainThread([target = target_,
                             function = std::decay_t<F>(std::forward<F>(function)),
                             kept = std::tuple<typename detail::KeptArgument<A>::type...>(
                                 std::forward<A>(arguments)...)]() mutable {
      std::apply([&](auto&... each) { std::invoke(function, target.get(), each...); }, kept);
    });
  }

 private:
  Ref<T> target_;
};

/// `target`, not nil, for calls on the main thread.
template <class T>
MainThreadCaller<T> onMainThread(T* target) noexcept {
  return MainThreadCaller<T>(target);
}
template <class T>
MainThreadCaller<T> onMainThread(const Ref<T>& target) noexcept {
  return MainThreadCaller<T>(target.get());
}

}  // namespace qz

#pragma GCC visibility pop
