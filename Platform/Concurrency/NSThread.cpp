#include "Platform/Concurrency/NSThread.h"

#include <pthread.h>

#include <cerrno>
#include <cstring>
#include <thread>

#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/Concurrency/NSNotificationCenter.h"
#include "Platform/Concurrency/NSRunLoop.h"
#include "Platform/Concurrency/detail/Deadline.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/Send.h"

namespace qz {
namespace {

// The calling thread's Object, owned; null before it was asked for, and once the thread has ended.
// Without a destructor, so that the destructors of other thread-locals may still look.
constinit thread_local NSThread* current = nullptr;
constinit thread_local bool ended = false;

// Both owned, for ever: others may hold what they once were.
constinit std::atomic<NSThread*> theMainThread{nullptr};
constinit std::atomic<NSRunLoop*> theMainLoop{nullptr};

Ref<NSString> systemName() {
  char name[16] = "";
  ::pthread_getname_np(::pthread_self(), name, sizeof name);
  return NSString::stringWithUTF8String(name);
}

void tellSystem(pthread_t thread, const std::string& name) {
  // What is cut must not end within a character.
  std::size_t length = std::min<std::size_t>(name.size(), 15);
  while (length > 0 && length < name.size() &&
         (static_cast<unsigned char>(name[length]) & 0xC0) == 0x80)
    --length;
  ::pthread_setname_np(thread, name.substr(0, length).c_str());
}

}  // namespace

/// What happens to a thread's Object on its thread.
struct detail::ThreadAccess {
  /// Gives the calling thread an Object until it ends.
  static void enter(NSThread* thread) {
    {
      std::lock_guard lock(thread->mutex_);
      thread->handle_ = static_cast<std::uintptr_t>(::pthread_self());
      if (thread->name_)
        tellSystem(::pthread_self(), thread->name_->UTF8String());
      else
        thread->name_ = systemName();
    }
    thread->state_.store(NSThread::executing);
    retain(thread);
    current = thread;
    struct Leaver {
      ~Leaver() { leave(); }
    };
    static thread_local Leaver leaver;
    static_cast<void>(leaver);
  }

  static void leave() noexcept {
    ended = true;
    NSThread* thread = current;
    if (thread == nullptr) return;
    thread->finish();
    current = nullptr;
    release(thread);
  }

  static void claimMain(NSThread* thread) {
    NSThread* expected = nullptr;
    if (theMainThread.load(std::memory_order_acquire) == nullptr &&
        theMainThread.compare_exchange_strong(expected, thread))
      keepMain(thread);
  }

  static void keepMain(NSThread* thread) {
    retain(thread);
    theMainLoop.store(thread->runLoop().leak(), std::memory_order_release);
  }

  static NSThread* here() {
    if (current != nullptr) return current;
    // What a thread does after its end has no Object to belong to.
    static NSThread* const afterwards = [] {
      auto thread = make<NSThread>();
      thread->state_.store(NSThread::finished);
      return thread.leak();
    }();
    if (ended) return afterwards;
    enter(make<NSThread>());
    claimMain(current);
    return current;
  }

  static void* run(void* started) {
    Ref<NSThread> thread(static_cast<NSThread*>(started), adopt);
    enter(thread);
    try {
      thread->main();
      NSNotificationCenter::defaultCenter()->postNotificationName_object(
          NSThreadWillExitNotification, thread);
    } catch (const RunLoopEnded&) {
      // Nobody is left to report to.
    }
    return nullptr;
  }
};

bool detail::isCurrentThread(const NSThread* thread) noexcept { return thread == current; }

NSRunLoop* detail::mainLoop() {
  NSRunLoop* loop = theMainLoop.load(std::memory_order_acquire);
  // Kept by its thread, which is kept for ever.
  if (loop == nullptr) loop = NSThread::mainThread()->runLoop().get();
  return loop;
}

NSThread::NSThread() = default;

NSThread::NSThread(NSObject* target, Selector selector, NSObject* argument)
    : target_(target), selector_(selector), argument_(argument) {
  if (target == nullptr || !selector)
    detail::raise(NSInvalidArgumentException, "a thread needs a target and a Selector");
}

NSThread::NSThread(std::function<void()> function) : function_(std::move(function)) {
  if (!function_) detail::raise(NSInvalidArgumentException, "a thread needs a function");
}

NSThread::~NSThread() = default;

Ref<NSThread> NSThread::initWithTarget_selector_object(NSObject* target, Selector selector,
                                                       NSObject* argument) {
  return make<NSThread>(target, selector, argument);
}

void NSThread::detachNewThreadSelector_toTarget_withObject(Selector selector, NSObject* target,
                                                           NSObject* argument) {
  make<NSThread>(target, selector, argument)->start();
}

Ref<NSThread> NSThread::detachNewThread(std::function<void()> function) {
  auto thread = make<NSThread>(std::move(function));
  thread->start();
  return thread;
}

Ref<NSThread> NSThread::currentThread() { return Ref<NSThread>(detail::ThreadAccess::here()); }

Ref<NSThread> NSThread::mainThread() {
  if (theMainThread.load(std::memory_order_acquire) == nullptr) detail::ThreadAccess::here();
  return Ref<NSThread>(theMainThread.load(std::memory_order_acquire));
}

bool NSThread::isMainThread() { return detail::ThreadAccess::here()->isMain(); }

void NSThread::becomeMainThread() {
  NSThread* self = detail::ThreadAccess::here();
  if (self->isMain()) return;
  NSThread* other = theMainThread.load();
  if (!other->isFinished() || !theMainThread.compare_exchange_strong(other, self))
    detail::raise(NSInternalInconsistencyException,
                  to_string(other) + " is the main thread already");
  detail::ThreadAccess::keepMain(self);
}

void NSThread::sleepForTimeInterval(NSTimeInterval seconds) {
  std::this_thread::sleep_until(detail::steadyIn(seconds));
}

void NSThread::sleepUntilDate(NSDate* date) {
  std::this_thread::sleep_until(detail::steadyTime(date));
}

void NSThread::start() {
  detail::ThreadAccess::here();  // so that the new thread cannot be taken for the main one
  int expected = ready;
  if (!state_.compare_exchange_strong(expected, executing))
    detail::raise(NSInternalInconsistencyException, to_string(this) + " was started before");
  pthread_attr_t attributes;
  ::pthread_attr_init(&attributes);
  ::pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
  int error = stackSize_ == 0 ? 0 : ::pthread_attr_setstacksize(&attributes, stackSize_);
  retain(this);  // for the thread
  pthread_t made{};
  if (error == 0) error = ::pthread_create(&made, &attributes, &detail::ThreadAccess::run, this);
  ::pthread_attr_destroy(&attributes);
  if (error == 0) return;
  release(this);
  state_.store(ready);
  detail::raise(NSGenericException,
                std::string("the system gives no thread: ") + std::strerror(error));
}

void NSThread::main() {
  if (function_)
    function_();
  else if (target_)
    target_->performSelector_withObject(selector_, argument_);
}

bool NSThread::isMain() const { return theMainThread.load(std::memory_order_acquire) == this; }

void NSThread::waitUntilFinished() { waitUntilFinishedBeforeDate(NSDate::distantFuture()); }

bool NSThread::waitUntilFinishedBeforeDate(NSDate* limit) {
  if (current == this)
    detail::raise(NSInternalInconsistencyException, to_string(this) + " cannot wait for itself");
  std::unique_lock lock(mutex_);
  return end_.wait_until(lock, detail::steadyTime(limit), [this] { return isFinished(); });
}

// On the thread itself, when it ends. What it held goes before others hear of the end.
void NSThread::finish() noexcept {
  target_ = nullptr;
  argument_ = nullptr;
  function_ = nullptr;
  dictionary_ = nullptr;
  Ref<NSRunLoop> loop;
  {
    std::lock_guard lock(mutex_);
    handle_ = 0;
    loop = runLoop_;
  }
  if (loop) loop->end();
  {
    std::lock_guard lock(mutex_);
    state_.store(finished);
  }
  end_.notify_all();
}

Ref<NSString> NSThread::name() const {
  std::lock_guard lock(mutex_);
  return name_ ? name_ : NSString::string();
}

void NSThread::setName(NSString* name) {
  Ref<NSString> kept = name == nullptr ? NSString::string() : NSString::stringWithString(name);
  std::lock_guard lock(mutex_);
  kept.swap(name_);
  if (handle_ != 0) tellSystem(static_cast<pthread_t>(handle_), name_->UTF8String());
}

Ref<NSMutableDictionary> NSThread::threadDictionary() {
  if (!dictionary_) dictionary_ = make<NSMutableDictionary>();
  return dictionary_;
}

Ref<NSRunLoop> NSThread::runLoop() {
  std::lock_guard lock(mutex_);
  if (!runLoop_) {
    runLoop_ = make<NSRunLoop>(this);
    if (isFinished()) runLoop_->end();
  }
  return runLoop_;
}

Ref<NSString> NSThread::description() const {
  return NSString::stringWithFormat("%@{name = %@}"_ns, NSObject::description(), name());
}

void NSThread::describe(ClassDescription<NSThread>& is) {
  using Self = NSThread;
  is.named("NSThread")
      .classMethod<&Self::currentThread>("currentThread")
      .classMethod<&Self::mainThread>("mainThread")
      .classMethod<&Self::isMainThread>("isMainThread")
      .classMethod<&Self::detachNewThreadSelector_toTarget_withObject>(
          "detachNewThreadSelector:toTarget:withObject:")
      .classMethod<&Self::sleepForTimeInterval>("sleepForTimeInterval:")
      .classMethod<&Self::sleepUntilDate>("sleepUntilDate:")
      .initializer<&Self::initWithTarget_selector_object>("initWithTarget:selector:object:")
      .method<&Self::start>("start")
      .method<&Self::main>("main")
      .method<&Self::cancel>("cancel")
      .method<&Self::isCancelled>("isCancelled")
      .method<&Self::isExecuting>("isExecuting")
      .method<&Self::isFinished>("isFinished")
      .method<&Self::isMain>("isMainThread")
      .method<&Self::waitUntilFinished>("waitUntilFinished")
      .property<&Self::name, &Self::setName>("name")
      .property<&Self::stackSize, &Self::setStackSize>("stackSize")
      .method<&Self::threadDictionary>("threadDictionary")
      .method<&Self::runLoop>("runLoop");
}

}  // namespace qz
