#include "Platform/Text/NSValueTransformer.h"

#include <array>
#include <atomic>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Collections/NSArray.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/Send.h"
#include "Platform/Runtime/detail/KeptForEver.h"
#include "Platform/Values/NSNumber.h"

namespace qz {
namespace {

[[noreturn]] void refuseReverse(const NSValueTransformer* transformer) {
  detail::raise(NSInvalidArgumentException, std::string(transformer->classObject()->name()) +
                                                " does not allow reverse transformation");
}

class FunctionTransformer final : public Derives<FunctionTransformer, NSValueTransformer> {
 public:
  FunctionTransformer(Function forth, Function back)
      : forth_(std::move(forth)), back_(std::move(back)) {}

  static void describe(ClassDescription<FunctionTransformer>& is) {
    is.named("NSFunctionValueTransformer");
  }

  Ref<NSObject> transformedValue(NSObject* value) const override { return forth_(value); }
  Ref<NSObject> reverseTransformedValue(NSObject* value) const override {
    if (!back_) refuseReverse(this);
    return back_(value);
  }

 private:
  const Function forth_, back_;
};

/// Names and their transformers: chains that only grow, so that readers take no lock.
class Names {
 public:
  Names() {
    const auto truth = [](bool value) -> Ref<NSObject> { return NSNumber::numberWithBool(value); };
    const auto opposite = [truth](NSObject* value) {
      return truth(value == nullptr || !send<bool>(value, "boolValue"_sel));
    };
    set(made(opposite, opposite), NSNegateBooleanTransformerName);
    set(made([truth](NSObject* value) { return truth(value == nullptr); }), NSIsNilTransformerName);
    set(made([truth](NSObject* value) { return truth(value != nullptr); }),
        NSIsNotNilTransformerName);
  }

  NSValueTransformer* find(NSString* name) const {
    const Entry* entry = entryFor(name, name->hash());
    return entry != nullptr ? entry->transformer.load(std::memory_order_acquire) : nullptr;
  }

  void set(NSValueTransformer* transformer, NSString* name) {
    detail::keepForEver(transformer);
    const std::lock_guard lock(mutex_);
    const std::size_t hash = name->hash();
    if (Entry* entry = entryFor(name, hash))
      return entry->transformer.store(transformer, std::memory_order_release);
    std::atomic<Entry*>& chain = chains_[hash % chains_.size()];
    auto* const entry = new Entry{as<NSString>(name->copy()), hash, {transformer}, chain.load()};
    chain.store(entry, std::memory_order_release);
  }

  std::vector<Ref<NSString>> all() const {
    std::vector<Ref<NSString>> names;
    for (const auto& chain : chains_)
      for (const Entry* entry = chain.load(std::memory_order_acquire); entry != nullptr;
           entry = entry->next)
        if (entry->transformer.load(std::memory_order_relaxed) != nullptr)
          names.push_back(entry->name);
    return names;
  }

 private:
  struct Entry {
    Ref<NSString> name;
    std::size_t hash;
    std::atomic<NSValueTransformer*> transformer;
    Entry* next;
  };

  static Ref<NSValueTransformer> made(NSValueTransformer::Function forth,
                                      NSValueTransformer::Function back = {}) {
    return make<FunctionTransformer>(std::move(forth), std::move(back));
  }

  Entry* entryFor(NSString* name, std::size_t hash) const {
    Entry* entry = chains_[hash % chains_.size()].load(std::memory_order_acquire);
    while (entry != nullptr && (entry->hash != hash || !entry->name->isEqualToString(name)))
      entry = entry->next;
    return entry;
  }

  std::mutex mutex_;
  std::array<std::atomic<Entry*>, 1021> chains_{};
};

Names& names() {
  static auto* const common = new Names;
  return *common;
}

}  // namespace

void NSValueTransformer::describe(ClassDescription<NSValueTransformer>& is) {
  is.named("NSValueTransformer")
      .classMethod<&NSValueTransformer::valueTransformerForName>("valueTransformerForName:")
      .classMethod<&NSValueTransformer::setValueTransformer_forName>("setValueTransformer:forName:")
      .classMethod<&NSValueTransformer::valueTransformerNames>("valueTransformerNames")
      .classMethod<&NSValueTransformer::allowsReverseTransformation>("allowsReverseTransformation")
      .classMethod<&NSValueTransformer::transformedValueClass>("transformedValueClass")
      .method<&NSValueTransformer::transformedValue>("transformedValue:")
      .method<&NSValueTransformer::reverseTransformedValue>("reverseTransformedValue:");
}

Ref<NSValueTransformer> NSValueTransformer::transformerWithFunctions(Function forth,
                                                                     Function back) {
  if (!forth) detail::raise(NSInvalidArgumentException, "transformerWithFunctions: no function");
  return make<FunctionTransformer>(std::move(forth), std::move(back));
}

Ref<NSValueTransformer> NSValueTransformer::valueTransformerForName(NSString* name) {
  return name == nullptr ? nullptr : names().find(name);
}

void NSValueTransformer::setValueTransformer_forName(NSValueTransformer* transformer,
                                                     NSString* name) {
  if (name == nullptr)
    detail::raise(NSInvalidArgumentException, "setValueTransformer:forName: nil name");
  names().set(transformer, name);
}

Ref<NSArray> NSValueTransformer::valueTransformerNames() {
  return NSArray::fromRange(names().all());
}

Ref<NSObject> NSValueTransformer::transformedValue(NSObject* value) const { return value; }

Ref<NSObject> NSValueTransformer::reverseTransformedValue(NSObject* value) const {
  if (!send<bool>(classObject(), "allowsReverseTransformation"_sel)) refuseReverse(this);
  return transformedValue(value);
}

}  // namespace qz
