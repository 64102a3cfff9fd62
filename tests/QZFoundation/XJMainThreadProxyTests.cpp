#include "QZFoundation/XJMainThreadProxy.h"

#include "Platform/Runtime/NSMethodSignature.h"
#include "QZFoundation/NSObject-QZFoundation.h"
#include "tests/support/Serving.h"

namespace qz::test {
namespace {

class Document : public Derives<Document, NSObject> {
 public:
  static void describe(ClassDescription<Document>& is) {
    is.named("Document")
        .property<&Document::title, &Document::setTitle>("title")
        .method<&Document::sum>("sum:and:")
        .method<&Document::both>("both:with:")
        .method<&Document::fail>("fail")
        .classMethod<&Document::kind>("kind");
  }
  Ref<NSString> title() { return noting(title_); }
  void setTitle(NSString* title) { title_ = noting(Ref<NSString>(title)); }
  int sum(int a, double b) { return noting(a + static_cast<int>(b)); }
  Ref<NSArray> both(NSObject* a, NSObject* b) { return noting(arrayOf({a, b})); }
  void fail() { throw std::runtime_error("failed"); }
  static Ref<NSString> kind() { return NSThread::isMainThread() ? "main"_ns : "other"_ns; }

  int calls = 0;

 private:
  template <class Value>
  Value noting(Value value) {
    EXPECT_TRUE(NSThread::isMainThread());
    ++calls;
    return value;
  }
  Ref<NSString> title_ = "Untitled"_ns;
};

class XJMainThreadProxyTest : public ::testing::Test {
 protected:
  /// Runs `work` on another thread while this one, the main thread, runs its loop.
  void elsewhere(const std::function<void()>& work) {
    ASSERT_TRUE(NSThread::isMainThread());
    auto thread = NSThread::detachNewThread(work);
    EXPECT_TRUE(serveUntil([&] { return thread->isFinished(); }));
    servePending();
  }
  Ref<Document> document = make<Document>();
  Ref<XJMainThreadProxy> proxy = mainThreadProxy(document);
  Ref<XJMainThreadProxy> async = mainThreadProxyAsync(document);
};

TEST_F(XJMainThreadProxyTest, ForwardsAndAnswers) {
  elsewhere([&] {
    send<void>(proxy, "setTitle:"_sel, ns("New"));
    EXPECT_EQ(to_string(send<Ref<NSString>>(proxy, "title"_sel)), "New");
    EXPECT_EQ(send<int>(proxy, "sum:and:"_sel, 2, 3.5), 5);
    EXPECT_THROW(send<void>(proxy, "fail"_sel), std::runtime_error);
    const auto ofClass = mainThreadProxy(classOf<Document>());
    EXPECT_EQ(to_string(send<Ref<NSString>>(ofClass, "kind"_sel)), "main");
  });
  EXPECT_EQ(document->calls, 3);
  EXPECT_EQ(send<int>(proxy, "sum:and:"_sel, 1, 1), 2);  // on the main thread, at once
}

TEST_F(XJMainThreadProxyTest, AsynchronousOnesKeepWhatTheySend) {
  elsewhere([&] {
    EXPECT_EQ(send<int>(async, "sum:and:"_sel, 2, 3), 0);
    for (int i = 0; i < 100; ++i)
      send<void>(async, "setTitle:"_sel, NSString::stringWithFormat("%d"_ns, i));
    proxy->setSynchronous(false);
    EXPECT_EQ(send<Ref<NSString>>(proxy, "title"_sel), nullptr);
  });
  EXPECT_EQ(document->calls, 102);
  EXPECT_EQ(to_string(document->title()), "99");
  // Nothing is kept once it has been performed.
  EXPECT_EQ(document->retainCount(), 1u);
}

TEST_F(XJMainThreadProxyTest, PerformingDropsTheTargetsAnswer) {
  elsewhere([&] {
    EXPECT_EQ(proxy->performSelector("title"_sel).object(), nullptr);
    EXPECT_EQ(send<Ref<NSObject>>(proxy, "performSelector:"_sel, "title"_sel), nullptr);
    EXPECT_EQ(document->calls, 2);
    // Its own operations it performs by itself.
    EXPECT_TRUE(proxy->performSelector("synchronous"_sel).boolValue());
    EXPECT_EQ(send<Ref<NSObject>>(proxy, "performSelector:"_sel, "mainThreadProxy"_sel), proxy);
  });
}

TEST_F(XJMainThreadProxyTest, RefusesOnTheCallingThreadWhatTheTargetHasNot) {
  elsewhere([&] {
    EXPECT_TRUE(
        refuses([&] { send<void>(async, "nonsense"_sel); }, {"XJMainThreadProxy", "nonsense"}));
    EXPECT_TRUE(refuses([&] { async->performSelector("nonsense"_sel); }));
  });
  EXPECT_TRUE(proxy->respondsToSelector("sum:and:"_sel));
  EXPECT_FALSE(proxy->respondsToSelector("nonsense"_sel));
  EXPECT_EQ(proxy->methodSignatureForSelector("nonsense"_sel), nullptr);
}

TEST_F(XJMainThreadProxyTest, DoesNotKeepItsTarget) {
  EXPECT_EQ(document->retainCount(), 1u);
  document = nullptr;
  EXPECT_EQ(send<int>(proxy, "sum:and:"_sel, 2, 3), 0);
  EXPECT_EQ(send<Ref<NSString>>(async, "title"_sel), nullptr);
  EXPECT_FALSE(proxy->respondsToSelector("title"_sel));
}

TEST_F(XJMainThreadProxyTest, HasNoProxyOfItsOwn) {
  EXPECT_EQ(mainThreadProxy(proxy), proxy);
  EXPECT_EQ(copyMainThreadProxy(proxy), proxy);
  auto other = mainThreadProxyAsync(proxy);
  EXPECT_FALSE(other->synchronous());
  EXPECT_TRUE(other->respondsToSelector("sum:and:"_sel));
  EXPECT_TRUE(copyMainThreadProxy(document)->synchronous());
  EXPECT_EQ(mainThreadProxy(nullptr), nullptr);
}

TEST_F(XJMainThreadProxyTest, ReturnsValuesFromTheMainThread) {
  elsewhere([&] {
    auto both = performSelectorOnMainThreadReturningValue_withObject_withObject(
        document, "both:with:"_sel, "a"_ns, "b"_ns);
    EXPECT_EQ(as<NSArray>(both)->count(), 2u);
    const auto titleOf = [](Document* one) {
      return to_string(
          performSelectorOnMainThreadReturningValue_withObject(one, "title"_sel, nullptr));
    };
    EXPECT_EQ(titleOf(document) + titleOf(nullptr), "Untitled(null)");
    setValueOnMainThread_forKey(document, "New"_ns, "title"_ns);
    EXPECT_EQ(document->calls, 3);
    setValueOnMainThread_forKey(document, nullptr, "title"_ns);
    EXPECT_EQ(onMainThread(document).call(&Document::title), nullptr);
    EXPECT_TRUE(refuses([&] { setValueOnMainThread_forKey(document, "x"_ns, nullptr); }));
    setValueOnMainThread_forKey_waitUntilDone(document, "Last"_ns, "title"_ns, false);
  });
  EXPECT_EQ(to_string(document->title()), "Last");
}

TEST_F(XJMainThreadProxyTest, TypedCalls) {
  elsewhere([&] {
    EXPECT_EQ(onMainThread(document).call(&Document::sum, 2, 3), 5);
    const auto more = [](Document* it, int by) { return it->calls + by; };
    EXPECT_EQ(onMainThread(document).call(more, 10), 11);
    EXPECT_THROW(onMainThread(document).call(&Document::fail), std::runtime_error);
    onMainThread(document).post(&Document::setTitle, ns("Posted"));
    onMainThread(document).post([](Document* it) { it->calls += 100; });
  });
  EXPECT_EQ(document->calls, 102);
  EXPECT_EQ(to_string(document->title()), "Posted");
}

}  // namespace
}  // namespace qz::test
