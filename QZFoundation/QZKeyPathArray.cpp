#include "QZFoundation/QZKeyPathArray.h"

#include "Platform/Runtime/Describe.h"

namespace qz {

QZKeyPathArray::QZKeyPathArray(NSArray* array, NSString* keyPath)
    : array_(array == nullptr ? NSArray::array() : Ref<NSArray>(array)),
      keyPath_(keyPath == nullptr ? nullptr : NSString::stringWithString(keyPath)) {}

Ref<QZKeyPathArray> QZKeyPathArray::initWithArray_keyPath(NSArray* array, NSString* keyPath) {
  return make<QZKeyPathArray>(array, keyPath);
}

std::uint32_t QZKeyPathArray::count() const { return array_->count(); }

Ref<NSObject> QZKeyPathArray::objectAtIndex(std::uint32_t index) const {
  Ref<NSObject> element = array_->objectAtIndex(index);
  return element ? element->valueForKeyPath(keyPath_) : nullptr;
}

Ref<QZKeyPathArray> arrayForKeyPath(NSArray* self, NSString* keyPath) {
  return make<QZKeyPathArray>(self, keyPath);
}

void QZKeyPathArray::describe(ClassDescription<QZKeyPathArray>& is) {
  is.named("QZKeyPathArray")
      .initializer<&QZKeyPathArray::initWithArray_keyPath>("initWithArray:keyPath:")
      .method<&QZKeyPathArray::count>("count")
      .method<&QZKeyPathArray::objectAtIndex>("objectAtIndex:");
}

void detail::registerQZKeyPathArray() {
  classOf<QZKeyPathArray>();
  extend<NSArray>("QZKeyPathArray").method<&arrayForKeyPath>("arrayForKeyPath:");
}

}  // namespace qz
