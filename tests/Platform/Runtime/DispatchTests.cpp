#include "Platform/Runtime/NSInvocation.h"
#include "tests/support/Person.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

/// Answers for operations that it forwards to another Object.
class Stand : public Derives<Stand, NSObject> {
 public:
  static void describe(ClassDescription<Stand>& is) { is.named("Stand"); }
  explicit Stand(NSObject* behind) : behind_(behind) {}
  Ref<NSMethodSignature> methodSignatureForSelector(Selector selector) const override {
    auto own = NSObject::methodSignatureForSelector(selector);
    return own ? own : behind_->methodSignatureForSelector(selector);
  }
  void forwardInvocation(NSInvocation* invocation) override {
    ++forwarded;
    if (invocation->selector() == "title"_sel) return invocation->setReturnValue("stand"_ns);
    invocation->invokeWithTarget(behind_);
  }
  int forwarded = 0;

 private:
  Ref<NSObject> behind_;
};

int initialized = 0;
class Lazy : public Derives<Lazy, NSObject> {
 public:
  static void describe(ClassDescription<Lazy>& is) {
    is.named("Lazy").initialize([] { ++initialized; }).method<&Lazy::ready>("ready");
  }
  bool ready() const { return initialized == 1; }
};
class LazyBelow : public Derives<LazyBelow, Lazy> {
 public:
  static void describe(ClassDescription<LazyBelow>& is) {
    is.named("LazyBelow").initialize([] { initialized += 10; });
  }
};

/// Invokes once more what invoked it.
class Nested : public Derives<Nested, NSObject> {
 public:
  static void describe(ClassDescription<Nested>& is) {
    is.named("NestedInvocation").method<&Nested::run>("run");
  }
  Ref<Nested> run() {
    if (NSInvocation* outer = std::exchange(invocation, nullptr)) outer->invoke();
    return Ref<Nested>(this);
  }
  NSInvocation* invocation = nullptr;
};

Ref<NSString> shout(Person* person, NSString* text) {
  return NSString::stringWithFormat("%@: %@!"_ns, person->name(), text);
}

TEST(Dispatch, ConvertsArgumentsAndAnswers) {
  auto ann = make<Person>("Ann"_ns, 30);
  EXPECT_EQ(send<int>(ann, "sum:b:c:d:e:"_sel, 1, 2, 3, 4, 5), 45);
  // Other scalar types on both sides, negative numbers included.
  EXPECT_EQ(send<std::int64_t>(ann, "sum:b:c:d:e:"_sel, std::int8_t{-1}, -2L, short{-3}, 4u, 5.9),
            33);
  EXPECT_EQ(send<double>(ann, "half:"_sel, 3), 1.5);
  EXPECT_EQ(send<bool>(ann, "half:"_sel, 0.5), true);
  EXPECT_EQ(send<std::string>(ann, "join:with:"_sel, std::string("a"), std::string("b")), "ab");
  EXPECT_EQ(to_string(send<Ref<NSString>>(ann, "greet:"_sel, "Hi"_ns)), "Hi, Ann");
  send<void>(ann, "setAge:"_sel, 31);
  EXPECT_EQ(ann->age, 31);
  send<void>(ann, "setName:"_sel, nullptr);
  EXPECT_EQ(ann->name(), nullptr);
}

TEST(Dispatch, MessagesToNilAnswerZero) {
  EXPECT_EQ(send<int>(nullptr, "sum:b:c:d:e:"_sel, 1, 2, 3, 4, 5), 0);
  EXPECT_EQ(send<double>(nullptr, "half:"_sel, 2.0), 0.0);
}

TEST(Dispatch, RefusesWhatDoesNotFit) {
  auto ann = make<Person>("Ann"_ns, 30);
  auto number = NSNumber::numberWithInt(5);
  const struct {
    std::function<void()> code;
    const char *part, *other = "", *third = "";
  } cases[] = {
      {[&] { send<int>(ann, "compareByAge:"_sel, number); }, "[Person compareByAge:]", "argument 1",
       "NSNumber"},
      {[&] { send<int>(ann, "setAge:"_sel, number); }, "[Person setAge:]", "NSNumber", "int"},
      {[&] { send<int>(ann, "compareByAge:"_sel, 7); }, "compareByAge:", "int", "Person"},
      {[&] { send<int>(ann, "sum:b:c:d:e:"_sel, 1, 2); }, "takes 5", "2 given"},
      {[&] { send<int>(ann, "name"_sel); }, "answers NSString", "int"},
      {[&] { send<Ref<Person>>(ann, "name"_sel); }, "name", "NSString", "Person"},
      {[&] { send<std::string>(ann, "join:with:"_sel, std::string("a"), 5); }, "argument 2"},
      {[&] { ann->performSelector("unknown:thing:"_sel); }, "Person", "unknown:thing:"},
      {[&] { ann->performSelector(Selector()); }, "Person"},
      {[&] { classOf<NSNumber>()->performSelector("intValue"_sel); }, "+[NSNumber intValue]"},
      {[&] { ann->performSelector("greet:"_sel); }, "takes 1", "0 given"},
  };
  for (const auto& each : cases)
    EXPECT_TRUE(refuses(each.code, {each.part, each.other, each.third}));
}

TEST(Dispatch, PerformAnswersRawWords) {
  auto ann = make<Person>("Ann"_ns, 30);
  auto bob = make<Person>("Bob"_ns, 40);
  Reply order = ann->performSelector_withObject("compareByAge:"_sel, bob);
  EXPECT_EQ(order.integerValue(), -1);
  // Arguments that the operation does not take are ignored.
  EXPECT_EQ(
      ann->performSelector_withObject_withObject("compareByAge:"_sel, bob, "x"_ns).integerValue(),
      -1);
  Reply name = ann->performSelector("name"_sel);
  EXPECT_EQ(name.word(), reinterpret_cast<std::uintptr_t>(ann->name().get()));
  EXPECT_TRUE(refuses([&] { order.object(); }, {"not an Object"}));
  EXPECT_TRUE(refuses([&] { name.integerValue(); }, {"NSString"}));
  EXPECT_EQ(Ref<NSObject>(ann->performSelector("doNothing"_sel)), nullptr);
  ann->age = 256;  // the low byte is what a truth value is
  EXPECT_FALSE(ann->performSelector("age"_sel).boolValue());
}

TEST(Dispatch, RepliesOwnTheirObjects) {
  const int before = Person::alive;
  {
    auto ann = make<Person>("Ann"_ns);
    ann->partner = make<Person>("Bob"_ns);
    ann->performSelector("partner"_sel);  // an answer that nobody takes
    Reply kept = ann->performSelector("partner"_sel);
    ann->partner = nullptr;
    EXPECT_EQ(Person::alive, before + 2);
    Ref<NSObject> bob = std::move(kept);
    EXPECT_EQ(to_string(bob->valueForKey("name"_ns)), "Bob");
    EXPECT_EQ(bob->retainCount(), 1u);
  }
  EXPECT_EQ(Person::alive, before);
}

TEST(Dispatch, ImplementationsAreSafeForOtherClasses) {
  auto worker = make<Worker>("Wim"_ns, 20);
  auto person = make<Person>("Ann"_ns, 30);
  Implementation age = person->methodForSelector("age"_sel);
  EXPECT_EQ(age.call<int>(person), 30);
  EXPECT_EQ(age.call<int>(worker), 20);
  EXPECT_EQ(age.call<int>(nullptr), 0);
  EXPECT_TRUE(refuses([&] { age.call<int>("text"_ns); }, {"age"}));
  EXPECT_FALSE(person->methodForSelector("nothing"_sel));
}

TEST(Dispatch, ReplacingReachesSubclassesAndUsedCallSites) {
  using detail::InstanceMethod;
  auto worker = make<Worker>("Wim"_ns);
  auto ask = [&] { return to_string(send<Ref<NSString>>(worker, "greet:"_sel, "Hi"_ns)); };
  EXPECT_EQ(ask(), "Hi, Wim");
  auto old = classOf<Person>()->replaceInstanceMethod("greet:"_sel,
                                                      InstanceMethod<Person, &shout>::spec().imp);
  EXPECT_EQ(ask(), "Wim: Hi!");
  EXPECT_EQ(classOf<Person>()->replaceInstanceMethod("greet:"_sel, old),
            (InstanceMethod<Person, &shout>::spec().imp));
  EXPECT_EQ(ask(), "Hi, Wim");
  EXPECT_EQ(classOf<Person>()->replaceInstanceMethod("nothing"_sel, old), nullptr);
}

TEST(Dispatch, ExtensionsReachObjectsThatExistAndTheNearestOneAnswers) {
  auto worker = make<Worker>("Wim"_ns);
  EXPECT_FALSE(worker->respondsToSelector("shout:"_sel));
  extend<Person>("Loud").method<&shout>("shout:");
  EXPECT_TRUE(worker->respondsToSelector("shout:"_sel));
  EXPECT_EQ(to_string(send<Ref<NSString>>(worker, "shout:"_sel, "Hi"_ns)), "Wim: Hi!");
  EXPECT_EQ(to_string(send<Ref<NSString>>(worker, "title"_sel)), "worker");
  EXPECT_TRUE(raises(NSInternalInconsistencyException,
                     [] { extend<Person>("Again").method<&shout>("shout:"); },
                     {"Person shout:", "exists"}));
  EXPECT_TRUE(raises(NSInternalInconsistencyException,
                     [] { extend<Person>("Odd").method<&shout>("shout"); },
                     {"takes 1", "calls for 0"}));
}

TEST(Dispatch, ForwardsWhatAnotherObjectAnswers) {
  auto bob = make<Person>("Bob"_ns, 41);
  auto stand = make<Stand>(bob);
  EXPECT_FALSE(stand->respondsToSelector("sum:b:c:d:e:"_sel));
  EXPECT_EQ(send<int>(stand, "sum:b:c:d:e:"_sel, 1, 2, 3, 4, 5.0), 56);
  EXPECT_EQ(to_string(send<Ref<NSString>>(stand, "greet:"_sel, "Hi"_ns)), "Hi, Bob");
  EXPECT_EQ(send<std::string>(stand, "join:with:"_sel, std::string("a"), std::string("b")), "ab");
  EXPECT_EQ(to_string(send<Ref<NSString>>(stand, "title"_sel)), "stand");
  EXPECT_EQ(stand->forwarded, 4);
  EXPECT_TRUE(refuses([&] { send<void>(stand, "gone"_sel); }, {"Stand", "gone"}));
  EXPECT_TRUE(refuses([&] { send<int>(stand, "compareByAge:"_sel, "text"_ns); }, {"Person"}));
}

TEST(Dispatch, InitializeRunsOnceAndTheClassAboveFirst) {
  auto below = make<LazyBelow>();
  EXPECT_EQ(initialized, 0);
  below->respondsToSelector("nothing"_sel);
  EXPECT_EQ(initialized, 11);
  classOf<LazyBelow>()->newObject();
  send<bool>(make<Lazy>(), "ready"_sel);
  EXPECT_EQ(initialized, 11);
}

TEST(Dispatch, InvocationsKeepTheirArgumentsWhenAsked) {
  auto bob = make<Person>("Bob"_ns, 41);
  auto invocation =
      NSInvocation::invocationWithMethodSignature(bob->methodSignatureForSelector("greet:"_sel));
  invocation->setTarget(bob);
  invocation->setSelector("greet:"_sel);
  {
    auto text = ns("A greeting of its own");
    invocation->setArgument_atIndex(text, 2);
    invocation->retainArguments();
  }
  invocation->invoke();
  EXPECT_EQ(to_string(invocation->returnValue<Ref<NSString>>()), "A greeting of its own, Bob");
  EXPECT_EQ(bob->retainCount(), 2u);
  invocation->invokeWithTarget(make<Worker>("Wim"_ns));
  EXPECT_EQ(to_string(invocation->returnValue<Ref<NSObject>>()), "A greeting of its own, Wim");
  EXPECT_TRUE(refusesRange([&] { invocation->setArgument_atIndex("x"_ns, 3); }));
  EXPECT_TRUE(refuses([&] { invocation->setArgument_atIndex(5, 2); }, {"NSString", "int"}));
  EXPECT_TRUE(refuses([&] { invocation->returnValue<int>(); }));

  auto sum = NSInvocation::invocationWithMethodSignature(
      bob->methodSignatureForSelector("sum:b:c:d:e:"_sel));
  sum->setSelector("sum:b:c:d:e:"_sel);
  for (std::uint32_t i = 0; i < 5; ++i) sum->setArgument_atIndex(double(i), i + 2);
  sum->invokeWithTarget(bob);
  EXPECT_EQ(sum->returnValue<std::int64_t>(), 51);
}

TEST(Dispatch, InvocationsRefuseValuesThatAreMissing) {
  auto stand = make<Stand>(make<Person>("Bob"_ns, 41));
  auto join = NSInvocation::invocationWithMethodSignature(
      stand->methodSignatureForSelector("join:with:"_sel));
  join->setSelector("join:with:"_sel);
  join->setArgument_atIndex(std::string("a"), 2);
  EXPECT_TRUE(refuses([&] { join->argumentAtIndex<std::string>(3); }, {"not been set"}));
  EXPECT_TRUE(refuses([&] { join->invokeWithTarget(stand); }, {"not been set"}));
  join->setArgument_atIndex(std::string("b"), 3);
  join->invokeWithTarget(stand);
  EXPECT_EQ(join->returnValue<std::string>(), "ab");
}

TEST(Dispatch, AnInvocationInsideItselfLosesNoAnswer) {
  auto nested = make<Nested>();
  {
    auto invocation =
        NSInvocation::invocationWithMethodSignature(nested->methodSignatureForSelector("run"_sel));
    invocation->setTarget(nested);
    invocation->setSelector("run"_sel);
    nested->invocation = invocation;
    invocation->invoke();
    EXPECT_EQ(invocation->returnValue<Ref<NSObject>>(), nested);
  }
  EXPECT_EQ(nested->retainCount(), 1u);
}

}  // namespace
}  // namespace qz::test
