// mutableArrayValueForKey: a view of a to-many property that can be changed.
//
// What the property consists of is read through `valueForKey:`. It is changed, for a key "parts",
// - by `insertObject:inPartsAtIndex:` and `removeObjectFromPartsAtIndex:`, and
//   `replaceObjectInPartsAtIndex:withObject:` where there is one, if the Object has them;
// - else, when what stands there is a MutableArray and there is no `setParts:`, in that Array;
// - else by `setValue:forKey:`, with a changed copy of the Array.
// Each call of the view is one change, announced with its kind and indices.
#include <algorithm>
#include <string>
#include <vector>

#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/NSKeyValueObserving.h"
#include "Platform/Runtime/Send.h"
#include "Platform/Runtime/detail/KeyValue.h"
#include "Platform/Values/NSIndexSet.h"

namespace qz {
namespace {

/// The operations by which an Object changes one of its Arrays; null where it has none.
struct ArrayAccessors {
  ArrayAccessors(NSObject* object, NSString* key) {
    object->classObject();  // a class that nobody has mentioned has not entered its names yet
    std::string name = key->UTF8String();
    const auto find = [object](const std::string& text) {
      const Selector selector(detail::findSelector(text));
      return selector && object->respondsToSelector(selector) ? selector : Selector();
    };
    canSet = static_cast<bool>(find(detail::setterName(name)));
    if (name[0] >= 'a' && name[0] <= 'z') name[0] = static_cast<char>(name[0] - 'a' + 'A');
    insert = find("insertObject:in" + name + "AtIndex:");
    remove = find("removeObjectFrom" + name + "AtIndex:");
    replace = find("replaceObjectIn" + name + "AtIndex:withObject:");
    if (!insert || !remove) insert = remove = replace = Selector();
  }

  Selector insert;
  Selector remove;
  Selector replace;
  bool canSet = false;
};

class KeyValueArray final : public NSMutableArray {
 public:
  KeyValueArray(NSObject* owner, NSString* key)
      : owner_(owner), key_(as<NSString>(key->copy())), accessors_(owner, key_) {}

  std::uint32_t count() const override {
    const Ref<NSArray> now = elements();
    return now ? now->count() : 0;
  }

  Ref<NSObject> objectAtIndex(std::uint32_t index) const override {
    const Ref<NSArray> now = elements();
    if (!now) detail::raiseIndex("objectAtIndex:", index, 0);
    return now->objectAtIndex(index);
  }

  void insertObject_atIndex(NSObject* object, std::uint32_t index) override {
    detail::requireArgument("insertObject:atIndex:", "the object", object);
    if (const std::uint32_t size = count(); index > size)
      detail::raiseIndex("insertObject:atIndex:", index, size);
    replaceElementsInRange({index, 0}, {&object, 1});
  }

  void removeObjectAtIndex(std::uint32_t index) override {
    requireIndex("removeObjectAtIndex:", index);
    removeElementsAtIndexes({&index, 1});
  }

  void replaceObjectAtIndex_withObject(std::uint32_t index, NSObject* object) override {
    detail::requireArgument("replaceObjectAtIndex:withObject:", "the object", object);
    requireIndex("replaceObjectAtIndex:withObject:", index);
    replaceElementsAtIndexes({&index, 1}, {&object, 1});
  }

 protected:
  // What is put in the place of as many elements is a replacement; of what goes and comes beyond
  // that, the former is a removal and the latter an insertion.
  void replaceElementsInRange(NSRange range, std::span<NSObject* const> objects) override {
    const auto length = static_cast<std::uint32_t>(objects.size());
    const std::uint32_t common = std::min(range.length, length);
    if (common > 0) {
      const auto places = NSIndexSet::indexSetWithIndexesInRange({range.location, common});
      replaceElementsAtIndexes(places->indexes(), objects.first(common));
    }
    const std::uint32_t next = range.location + common;
    if (range.length > common) {
      const auto places = NSIndexSet::indexSetWithIndexesInRange({next, range.length - common});
      removeElementsAtIndexes(places->indexes());
    }
    if (length > common) insert(next, objects.subspan(common));
  }

  void removeElementsAtIndexes(std::span<const std::uint32_t> indexes) override {
    const Changing changing(this, NSKeyValueChangeRemoval, indexes);
    if (accessors_.remove) {
      for (auto each = indexes.rbegin(); each != indexes.rend(); ++each)
        send<void>(owner_, accessors_.remove, *each);
      return;
    }
    change([&](NSMutableArray* array) {
      for (auto each = indexes.rbegin(); each != indexes.rend(); ++each)
        array->removeObjectAtIndex(*each);
    });
  }

  void replaceElementsAtIndexes(std::span<const std::uint32_t> indexes,
                                std::span<NSObject* const> objects) override {
    const Changing changing(this, NSKeyValueChangeReplacement, indexes);
    if (accessors_.insert) {
      for (std::size_t i = 0; i < indexes.size(); ++i) replaceThroughOwner(indexes[i], objects[i]);
      return;
    }
    change([&](NSMutableArray* array) {
      for (std::size_t i = 0; i < indexes.size(); ++i)
        array->replaceObjectAtIndex_withObject(indexes[i], objects[i]);
    });
  }

 private:
  /// One change: announced to observers of the property, and to walks over this view.
  struct Changing {
    Changing(KeyValueArray* self, NSKeyValueChange kind, std::span<const std::uint32_t> indexes)
        : change(self->owner_, self->key_, kind,
                 detail::isObserved(self->owner_) ? NSIndexSet::indexSetWithIndexes(indexes).get()
                                                  : nullptr) {
      self->didChange();
    }
    const KeyValueChange change;
  };

  void insert(std::uint32_t index, std::span<NSObject* const> objects) {
    const auto places =
        NSIndexSet::indexSetWithIndexesInRange({index, static_cast<std::uint32_t>(objects.size())});
    const Changing changing(this, NSKeyValueChangeInsertion, places->indexes());
    if (accessors_.insert) {
      for (NSObject* each : objects) send<void>(owner_, accessors_.insert, each, index++);
      return;
    }
    change([&](NSMutableArray* array) {
      array->replaceObjectsInRange_withObjectsFromArray({index, 0}, NSArray::fromSpan(objects));
    });
  }

  void replaceThroughOwner(std::uint32_t index, NSObject* object) {
    if (accessors_.replace) return send<void>(owner_, accessors_.replace, index, object);
    send<void>(owner_, accessors_.remove, index);
    send<void>(owner_, accessors_.insert, object, index);
  }

  /// Changes a copy that is then set, or what stands under the key itself.
  template <class Change>
  void change(const Change& change) {
    const Ref<NSArray> now = elements();
    auto* array = as<NSMutableArray>(now.get());
    if (array != nullptr && !accessors_.canSet) return change(array);
    const auto changed = NSMutableArray::arrayWithArray(now);
    change(changed.get());
    owner_->setValue_forKey(changed, key_);
  }

  Ref<NSArray> elements() const {
    const Ref<NSObject> value = owner_->valueForKey(key_);
    if (value && !isKind<NSArray>(value.get()))
      detail::raise(NSInvalidArgumentException,
                    "\"" + key_->UTF8String() + "\" of an Object of class " +
                        std::string(owner_->classObject()->name()) + " is no Array but of class " +
                        std::string(value->classObject()->name()));
    return as<NSArray>(value);
  }

  void requireIndex(const char* operation, std::uint32_t index) const {
    if (const std::uint32_t size = count(); index >= size)
      detail::raiseIndex(operation, index, size);
  }

  const Ref<NSObject> owner_;
  const Ref<NSString> key_;
  const ArrayAccessors accessors_;
};

}  // namespace

Ref<NSMutableArray> NSObject::mutableArrayValueForKey(NSString* key) {
  if (key == nullptr || key->length() == 0)
    detail::raise(NSInvalidArgumentException, "mutableArrayValueForKey: without a key");
  return make<KeyValueArray>(this, key);
}

Ref<NSMutableArray> NSObject::mutableArrayValueForKeyPath(NSString* keyPath) {
  if (keyPath == nullptr)
    detail::raise(NSInvalidArgumentException, "mutableArrayValueForKeyPath: without a path");
  const std::size_t dot = keyPath->view().rfind(u'.');
  if (dot == std::u16string_view::npos) return mutableArrayValueForKey(keyPath);
  auto before = NSString::stringWithCharacters(keyPath->view().substr(0, dot));
  auto last = NSString::stringWithCharacters(keyPath->view().substr(dot + 1));
  const Ref<NSObject> owner = valueForKeyPath(before);
  return owner ? owner->mutableArrayValueForKey(last) : nullptr;
}

}  // namespace qz
