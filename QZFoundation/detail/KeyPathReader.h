/// @file
/// Private: reading one key path from many Objects.
#pragma once

#include <cstdint>

#include "Platform/Runtime/NSObject.h"
#include "Platform/Runtime/detail/KeyValue.h"
#include "Platform/Values/NSString.h"

namespace qz::detail {

/// Answers what `valueForKeyPath:` does. A path of one key is looked up once, and then read without
/// asking the Objects for it, of classes that have no way of their own to read keys.
class KeyPathReader {
 public:
  explicit KeyPathReader(NSString* keyPath)
      : keyPath_(keyPath == nullptr ? nullptr : NSString::stringWithString(keyPath)) {}

  Ref<NSObject> read(NSObject* object) {
    if (const DispatchEntry* getter = getterOf(object))
      return boxWord(call(*getter, object), shapeAnswer(getter->shape));
    return object->valueForKeyPath(keyPath_);
  }

  /// The operation that reads the value, if it is all that reading means; else null.
  const DispatchEntry* getterOf(NSObject* object) {
    if (vptrOf(object) != seen_) [[unlikely]]
      meet(object);
    return key_ == nullptr ? nullptr : findGetter(object, key_);
  }

  /// The answer of that operation.
  Word call(const DispatchEntry& getter, NSObject* object) const {
    return getter.imp(object, key_->getter, 0, 0, 0, nullptr);
  }

 private:
  /// Decides how Objects of this class are read.
  void meet(NSObject* object);

  Ref<NSString> keyPath_;
  const Key* key_ = nullptr;  // null when the class seen last is asked itself
  std::uintptr_t seen_ = 0;
};

}  // namespace qz::detail
