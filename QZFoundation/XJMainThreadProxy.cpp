#include "QZFoundation/XJMainThreadProxy.h"

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSInvocation.h"
#include "Platform/Runtime/NSMethodSignature.h"
#include "Platform/Runtime/Send.h"

namespace qz {
namespace {

Ref<XJMainThreadProxy> proxyOf(NSObject* object) { return make<XJMainThreadProxy>(object); }
Ref<XJMainThreadProxy> proxyOfClass(Class* aClass) { return make<XJMainThreadProxy>(aClass); }

Ref<XJMainThreadProxy> asyncProxyOf(NSObject* object) {
  auto proxy = proxyOf(object);
  proxy->setSynchronous(false);
  return proxy;
}
Ref<XJMainThreadProxy> asyncProxyOfClass(Class* aClass) { return asyncProxyOf(aClass); }

// By Selector, an answer is an Object, as with the operations of the root class.
Ref<NSObject> perform(XJMainThreadProxy* proxy, Selector selector) {
  return proxy->performSelector(selector);
}
Ref<NSObject> performWith(XJMainThreadProxy* proxy, Selector selector, NSObject* object) {
  return proxy->performSelector_withObject(selector, object);
}

}  // namespace

Ref<XJMainThreadProxy> XJMainThreadProxy::initWithTarget(NSObject* target) {
  return make<XJMainThreadProxy>(target);
}

void XJMainThreadProxy::setSynchronous(bool synchronous) noexcept {
  synchronous_.store(synchronous, std::memory_order_relaxed);
}

bool XJMainThreadProxy::respondsToSelector(Selector selector) const {
  if (NSObject::respondsToSelector(selector)) return true;
  const Ref<NSObject> target = target_.load();
  return target && target->respondsToSelector(selector);
}

Ref<NSMethodSignature> XJMainThreadProxy::methodSignatureForSelector(Selector selector) const {
  if (auto own = NSObject::methodSignatureForSelector(selector)) return own;
  const Ref<NSObject> target = target_.load();
  if (target) return target->methodSignatureForSelector(selector);
  return NSMethodSignature::of<void()>();  // fits every message, and answers zero
}

void XJMainThreadProxy::forwardInvocation(NSInvocation* invocation) {
  const Ref<NSObject> target = target_.load();
  if (!target) return;
  if (!target->respondsToSelector(invocation->selector()))
    doesNotRecognizeSelector(invocation->selector());
  // The sender goes on to read the answer; one that does not wait must not meet the main thread
  // writing it.
  const bool wait = synchronous();
  const Ref<NSInvocation> sent =
      wait ? Ref<NSInvocation>(invocation) : as<NSInvocation>(invocation->copy());
  sent->retainArguments();
  sent->performSelectorOnMainThread_withObject_waitUntilDone("invokeWithTarget:"_sel, target, wait);
}

Reply XJMainThreadProxy::performSelector(Selector selector) {
  if (NSObject::respondsToSelector(selector)) return NSObject::performSelector(selector);
  return performByTarget(selector, nullptr);
}

Reply XJMainThreadProxy::performSelector_withObject(Selector selector, NSObject* object) {
  if (NSObject::respondsToSelector(selector))
    return NSObject::performSelector_withObject(selector, object);
  return performByTarget(selector, object);
}

// The answer is dropped on purpose, waited for or not.
Reply XJMainThreadProxy::performByTarget(Selector selector, NSObject* object) {
  const Ref<NSObject> target = target_.load();
  if (!target) return {};
  if (!target->respondsToSelector(selector)) doesNotRecognizeSelector(selector);
  target->performSelectorOnMainThread_withObject_waitUntilDone(selector, object, synchronous());
  return {};
}

Ref<XJMainThreadProxy> XJMainThreadProxy::mainThreadProxyAsync() {
  return asyncProxyOf(target_.load());
}

Ref<XJMainThreadProxy> mainThreadProxy(NSObject* self) {
  return send<Ref<XJMainThreadProxy>>(self, "mainThreadProxy"_sel);
}

Ref<XJMainThreadProxy> copyMainThreadProxy(NSObject* self) {
  return send<Ref<XJMainThreadProxy>>(self, "copyMainThreadProxy"_sel);
}

Ref<XJMainThreadProxy> mainThreadProxyAsync(NSObject* self) {
  return send<Ref<XJMainThreadProxy>>(self, "mainThreadProxyAsync"_sel);
}

void XJMainThreadProxy::describe(ClassDescription<XJMainThreadProxy>& is) {
  using Self = XJMainThreadProxy;
  is.named("XJMainThreadProxy")
      .initializer<&Self::initWithTarget>("initWithTarget:")
      .property<&Self::synchronous, &Self::setSynchronous>("synchronous")
      .method<&Self::respondsToSelector>("respondsToSelector:")
      .method<&Self::methodSignatureForSelector>("methodSignatureForSelector:")
      .method<&Self::forwardInvocation>("forwardInvocation:")
      .method<&perform>("performSelector:")
      .method<&performWith>("performSelector:withObject:")
      .method<&Self::mainThreadProxy>("mainThreadProxy")
      .method<&Self::copyMainThreadProxy>("copyMainThreadProxy")
      .method<&Self::mainThreadProxyAsync>("mainThreadProxyAsync");
}

void detail::registerXJMainThreadProxy() {
  extend<NSObject>("XJMainThreadProxy")
      .method<&proxyOf>("mainThreadProxy")
      .method<&proxyOf>("copyMainThreadProxy")
      .method<&asyncProxyOf>("mainThreadProxyAsync")
      .classMethod<&proxyOfClass>("mainThreadProxy")
      .classMethod<&proxyOfClass>("copyMainThreadProxy")
      .classMethod<&asyncProxyOfClass>("mainThreadProxyAsync");
  classOf<XJMainThreadProxy>();
}

}  // namespace qz
