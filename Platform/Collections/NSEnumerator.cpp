#include "Platform/Collections/NSEnumerator.h"

#include <utility>

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/detail/ArrayBuilder.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"

namespace qz {
namespace {

class BlockEnumerator final : public NSEnumerator {
 public:
  explicit BlockEnumerator(std::function<Ref<NSObject>()> next) : next_(std::move(next)) {}

  Ref<NSObject> nextObject() override {
    if (!next_) return nullptr;
    Ref<NSObject> object = next_();
    if (!object) next_ = nullptr;
    return object;
  }

 private:
  std::function<Ref<NSObject>()> next_;
};

}  // namespace

void NSEnumerator::describe(ClassDescription<NSEnumerator>& is) {
  is.named("NSEnumerator")
      .method<&NSEnumerator::nextObject>("nextObject")
      .method<&NSEnumerator::allObjects>("allObjects");
}

Ref<NSEnumerator> NSEnumerator::enumeratorWithBlock(std::function<Ref<NSObject>()> next) {
  detail::requireArgument("+[NSEnumerator enumeratorWithBlock]", "the function",
                          next ? &next : nullptr);
  return make<BlockEnumerator>(std::move(next));
}

Ref<NSArray> NSEnumerator::allObjects() {
  detail::ArrayBuilder builder;
  while (Ref<NSObject> object = nextObject()) builder.take(std::move(object));
  return builder.finish();
}

}  // namespace qz
