#include "QZFoundation/detail/KeyPathReader.h"

#include "Platform/Runtime/detail/VirtualFunction.h"

namespace qz::detail {

void KeyPathReader::meet(NSObject* object) {
  seen_ = vptrOf(object);
  key_ = nullptr;
  if (!keyPath_ || keyPath_->view().find(u'.') != std::u16string_view::npos) return;
  if (!isAsInRoot<&NSObject::valueForKey>(object) ||
      !isAsInRoot<&NSObject::valueForKeyPath>(object))
    return;
  object->classObject();  // enters the names of a class that nobody has mentioned yet
  key_ = findKey(keyPath_);
}

}  // namespace qz::detail
