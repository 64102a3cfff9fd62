#include "Platform/Collections/NSPredicate.h"

#include <utility>
#include <vector>

#include "Platform/Collections/NSArray.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/Send.h"
#include "Platform/Values/NSString.h"

namespace qz {
namespace {

using Parts = std::vector<Ref<NSPredicate>>;

class BlockPredicate final : public NSPredicate {
 public:
  explicit BlockPredicate(std::function<bool(NSObject*)> block) : block_(std::move(block)) {}
  bool evaluateWithObject(NSObject* object) const override { return block_(object); }

 private:
  std::function<bool(NSObject*)> block_;
};

class ValuePredicate final : public NSPredicate {
 public:
  explicit ValuePredicate(bool value) : value_(value) {}
  bool evaluateWithObject(NSObject*) const override { return value_; }

 private:
  bool value_;
};

class KeyPathPredicate final : public NSPredicate {
 public:
  KeyPathPredicate(NSString* keyPath, Selector selector, NSObject* value)
      : keyPath_(keyPath == nullptr ? nullptr : NSString::stringWithString(keyPath)),
        selector_(selector),
        value_(value) {}

  bool evaluateWithObject(NSObject* object) const override {
    Ref<NSObject> found = object;
    if (object != nullptr && keyPath_) found = object->valueForKeyPath(keyPath_);
    return found && found->performSelector_withObject(selector_, value_).boolValue();
  }

 private:
  Ref<NSString> keyPath_;
  Selector selector_;
  Ref<NSObject> value_;
};

/// Answers `decisive` when any part does, and the opposite when none does.
class CompoundPredicate final : public NSPredicate {
 public:
  CompoundPredicate(Parts parts, bool decisive) : parts_(std::move(parts)), decisive_(decisive) {}

  bool evaluateWithObject(NSObject* object) const override {
    for (const Ref<NSPredicate>& part : parts_)
      if (part->evaluateWithObject(object) == decisive_) return decisive_;
    return !decisive_;
  }

 private:
  Parts parts_;
  bool decisive_;
};

class NotPredicate final : public NSPredicate {
 public:
  explicit NotPredicate(NSPredicate* part) : part_(part) {}
  bool evaluateWithObject(NSObject* object) const override {
    return !part_->evaluateWithObject(object);
  }

 private:
  Ref<NSPredicate> part_;
};

Ref<NSPredicate> compound(std::initializer_list<NSPredicate*> parts, bool decisive) {
  for (NSPredicate* part : parts)
    detail::requireArgument(decisive ? "+[NSPredicate orPredicateWithSubpredicates:]"
                                     : "+[NSPredicate andPredicateWithSubpredicates:]",
                            "a predicate", part);
  return make<CompoundPredicate>(Parts(parts.begin(), parts.end()), decisive);
}

Ref<NSPredicate> compound(NSArray* array, bool decisive) {
  Parts parts;
  for (NSPredicate* part : elements<NSPredicate>(array)) parts.emplace_back(part);
  return make<CompoundPredicate>(std::move(parts), decisive);
}

}  // namespace

void NSPredicate::describe(ClassDescription<NSPredicate>& is) {
  is.named("NSPredicate")
      .classMethod<&NSPredicate::predicateWithValue>("predicateWithValue:")
      .classMethod<&NSPredicate::predicateWithKeyPath_selector_value>(
          "predicateWithKeyPath:selector:value:")
      .classMethod<overload<Ref<NSPredicate>(NSArray*)>(
          &NSPredicate::andPredicateWithSubpredicates)>("andPredicateWithSubpredicates:")
      .classMethod<overload<Ref<NSPredicate>(NSArray*)>(
          &NSPredicate::orPredicateWithSubpredicates)>("orPredicateWithSubpredicates:")
      .classMethod<&NSPredicate::notPredicateWithSubpredicate>("notPredicateWithSubpredicate:")
      .method<&NSPredicate::evaluateWithObject>("evaluateWithObject:");
}

Ref<NSPredicate> NSPredicate::predicateWithBlock(std::function<bool(NSObject*)> block) {
  detail::requireArgument("+[NSPredicate predicateWithBlock]", "the function",
                          block ? &block : nullptr);
  return make<BlockPredicate>(std::move(block));
}

Ref<NSPredicate> NSPredicate::predicateWithValue(bool value) { return make<ValuePredicate>(value); }

Ref<NSPredicate> NSPredicate::predicateWithKeyPath_selector_value(NSString* keyPath,
                                                                  Selector selector,
                                                                  NSObject* value) {
  return make<KeyPathPredicate>(keyPath, selector, value);
}

Ref<NSPredicate> NSPredicate::andPredicateWithSubpredicates(NSArray* parts) {
  return compound(parts, false);
}
Ref<NSPredicate> NSPredicate::andPredicateWithSubpredicates(
    std::initializer_list<NSPredicate*> parts) {
  return compound(parts, false);
}
Ref<NSPredicate> NSPredicate::orPredicateWithSubpredicates(NSArray* parts) {
  return compound(parts, true);
}
Ref<NSPredicate> NSPredicate::orPredicateWithSubpredicates(
    std::initializer_list<NSPredicate*> parts) {
  return compound(parts, true);
}
Ref<NSPredicate> NSPredicate::notPredicateWithSubpredicate(NSPredicate* part) {
  detail::requireArgument("+[NSPredicate notPredicateWithSubpredicate:]", "the predicate", part);
  return make<NotPredicate>(part);
}

Ref<NSObject> NSPredicate::copy() const { return const_cast<NSPredicate*>(this); }

}  // namespace qz
