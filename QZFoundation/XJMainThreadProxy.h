/// @file
/// A stand-in that has an Object's operations run on the main thread.
///
///     Ref<XJMainThreadProxy> proxy = mainThreadProxy(document);
///     auto title = send<Ref<NSString>>(proxy, "title"_sel);           // waits
///     send<void>(mainThreadProxyAsync(document), "save"_sel);         // does not
///
/// Where the class is known at compile time, `onMainThread` does the same without Selectors:
///
///     Ref<NSString> title = onMainThread(document).call(&Document::title);
///     onMainThread(document).post(&Document::save);
#pragma once

#include <atomic>

#include "Platform/Concurrency/MainThread.h"
#include "Platform/Runtime/Send.h"
#include "Platform/Runtime/WeakRef.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

/// Sends every message that it has no operation for to its target, on the main thread; waits for
/// the answer, or not when it is asynchronous.
///
/// The target is not kept alive while no message is on its way. To a target that is gone, messages
/// do nothing and answer zero, like those to nil. A message that the target does not implement
/// raises NSInvalidArgumentException on the calling thread. What every Object can do
/// (`description`, `isEqual:`, `valueForKey:` …) the proxy does itself, where it is asked.
///
/// A message that waits passes what the operation throws on to the sender, is sent at once on the
/// main thread, and raises NSRunLoopEndedException when the main thread's loop ends first. One that
/// does not wait answers zero.
///
/// Any thread may send; `setSynchronous` counts from the next message on.
class XJMainThreadProxy final : public Derives<XJMainThreadProxy, NSObject> {
 public:
  static void describe(ClassDescription<XJMainThreadProxy>& is);

  /// Synchronous. `target` may be nil, and is not retained.
  explicit XJMainThreadProxy(NSObject* target) : target_(target) {}
  static Ref<XJMainThreadProxy> initWithTarget(NSObject* target);

  /// Whether messages wait until they have been answered.
  bool synchronous() const noexcept { return synchronous_.load(std::memory_order_relaxed); }
  void setSynchronous(bool synchronous) noexcept;

  /// Whether this Object or else its target has the operation, and its types.
  bool respondsToSelector(Selector selector) const override;
  Ref<NSMethodSignature> methodSignatureForSelector(Selector selector) const override;

  /// Has the message run on the main thread.
  void forwardInvocation(NSInvocation* invocation) override;

  /// An operation of the proxy's own is performed here and now, and answered. Any other is
  /// performed by the target on the main thread, and the answer is nil whether this waits or not:
  /// that differs from sending the Selector itself, on purpose. Use
  /// `performSelectorOnMainThreadReturningValue_withObject` where the answer matters.
  Reply performSelector(Selector selector);
  Reply performSelector_withObject(Selector selector, NSObject* object);

  /// This very proxy: there is no proxy of a proxy.
  Ref<XJMainThreadProxy> mainThreadProxy() { return Ref<XJMainThreadProxy>(this); }
  Ref<XJMainThreadProxy> copyMainThreadProxy() { return Ref<XJMainThreadProxy>(this); }

  /// An asynchronous proxy of this one's target.
  Ref<XJMainThreadProxy> mainThreadProxyAsync();

 private:
  Reply performByTarget(Selector selector, NSObject* object);

  WeakRef<NSObject> target_;
  std::atomic<bool> synchronous_{true};
};

/// A synchronous proxy for an Object or a Class; a proxy answers itself. Sends the Selector; nil
/// for nil.
Ref<XJMainThreadProxy> mainThreadProxy(NSObject* self);
Ref<XJMainThreadProxy> copyMainThreadProxy(NSObject* self);

/// An asynchronous proxy.
Ref<XJMainThreadProxy> mainThreadProxyAsync(NSObject* self);

}  // namespace qz

#pragma GCC visibility pop
