/// @file
/// Private: waking the thread of a run loop, wherever it waits.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

#include "Platform/Concurrency/detail/AdaptiveSpin.h"
#include "Platform/Concurrency/detail/Deadline.h"

namespace qz::detail {

/// A flag that many threads raise and one waits for: actively at first, then asleep in the kernel,
/// or in an event loop of another library, which polls a descriptor or is called.
class LoopSignal {
 public:
  LoopSignal() noexcept = default;
  ~LoopSignal();

  /// Any thread. Costs one exchange while it is raised.
  void raise() noexcept;

  /// Waits until it is raised, at most until `limit`; may return early. The owner only, as all
  /// below.
  void wait(std::optional<SteadyTime> limit) noexcept;

  /// Lowers it; whether it was raised. What was done before it was raised is visible afterwards.
  bool lower() noexcept;

  /// A descriptor that reads as ready while the flag is raised or the time given to `arm` has come;
  /// made on first use. -1 and `errno` when there is none to be had.
  int descriptor();

  /// Called after the flag was raised, on the thread that did it; null for none.
  void setHost(std::function<void()> function);

  /// When the descriptor is to become ready by itself; none for never. Any thread.
  void arm(std::optional<SteadyTime> time) noexcept;

 private:
  bool hasHost() const noexcept { return hosted_.load(); }

  enum State : std::uint32_t { lowered, raised, asleep };

  void tellHost() noexcept;

  std::atomic<std::uint32_t> state_{lowered};
  std::atomic<bool> hosted_{false};
  std::atomic<int> event_{-1};
  std::atomic<int> timer_{-1};
  int poll_ = -1;
  std::mutex hostMutex_;
  std::shared_ptr<std::function<void()>> host_;
  AdaptiveSpin spin_;
};

}  // namespace qz::detail
