/// @file
/// Private: a function on its way to a run loop.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#pragma GCC visibility push(default)

namespace qz::detail {

/// A set of run-loop modes: one bit for each name; see LoopModes.h.
using ModeMask = std::uint64_t;

/// The common modes, whatever these are in the loop in question.
inline constexpr ModeMask commonModes = ModeMask{1} << 63;
/// NSDefaultRunLoopMode.
inline constexpr ModeMask defaultMode = 1;

/// A function without parameters, called once or never; small ones need no memory of their own.
/// Destroying it without a call is how a caller that waits for it learns that it never will be.
class LoopTask {
 public:
  LoopTask() noexcept = default;

  template <class F>
  LoopTask(F&& function, ModeMask modes) : modes_(modes) {
    using Function = std::decay_t<F>;
    if constexpr (sizeof(Function) <= room && alignof(Function) <= alignof(void*) &&
                  std::is_nothrow_move_constructible_v<Function>) {
      ::new (static_cast<void*>(storage_)) Function(std::forward<F>(function));
      kind_ = &kindOf<Function>;
    } else {
      using Boxed = Box<Function>;
      ::new (static_cast<void*>(storage_))
          Boxed{std::make_unique<Function>(std::forward<F>(function))};
      kind_ = &kindOf<Boxed>;
    }
  }

  LoopTask(LoopTask&& other) noexcept { take(other); }
  LoopTask& operator=(LoopTask&& other) noexcept {
    if (this != &other) {
      drop();
      take(other);
    }
    return *this;
  }
  ~LoopTask() { drop(); }

  void operator()() { kind_->call(storage_); }

  ModeMask modes() const noexcept { return modes_; }

 private:
  static constexpr std::size_t room = 40;

  struct Kind {
    void (*call)(void* function);
    void (*move)(void* to, void* from) noexcept;  // leaves nothing behind
    void (*destroy)(void* function) noexcept;
  };

  template <class Function>
  struct Box {
    std::unique_ptr<Function> function;
    void operator()() { (*function)(); }
  };

  template <class Function>
  static constexpr Kind kindOf{
      [](void* function) { (*static_cast<Function*>(function))(); },
      [](void* to, void* from) noexcept {
        auto* source = static_cast<Function*>(from);
        ::new (to) Function(std::move(*source));
        source->~Function();
      },
      [](void* function) noexcept { static_cast<Function*>(function)->~Function(); }};

  void take(LoopTask& other) noexcept {
    modes_ = other.modes_;
    kind_ = std::exchange(other.kind_, nullptr);
    if (kind_ != nullptr) kind_->move(storage_, other.storage_);
  }
  void drop() noexcept {
    if (const Kind* kind = std::exchange(kind_, nullptr)) kind->destroy(storage_);
  }

  const Kind* kind_ = nullptr;
  ModeMask modes_ = 0;
  alignas(void*) std::byte storage_[room];
};

}  // namespace qz::detail

#pragma GCC visibility pop
