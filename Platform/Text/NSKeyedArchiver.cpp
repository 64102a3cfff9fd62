#include "Platform/Text/NSKeyedArchiver.h"

#include <string>
#include <unordered_map>

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/NSCountedSet.h"
#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/Collections/NSMutableSet.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/Send.h"
#include "Platform/System/NSPropertyListSerialization.h"
#include "Platform/System/NSPropertyListUID.h"
#include "Platform/Text/detail/KeyedArchive.h"
#include "Platform/Values/NSDate.h"
#include "Platform/Values/NSMutableData.h"
#include "Platform/Values/NSMutableString.h"
#include "Platform/Values/NSNull.h"
#include "Platform/Values/NSNumber.h"

namespace qz {

using namespace detail::archive;

void detail::archive::requireKey(NSString* key, const char* operation) {
  if (key == nullptr || key->view().starts_with(u'$'))
    raise(NSInvalidArgumentException,
          std::string(operation) + ": no key can be " + (key == nullptr ? "nil" : to_string(key)));
}

class NSKeyedArchiver::Contents {
 public:
  Contents() { objects_->addObject(nullObject); }

  void encode(NSKeyedArchiver* archiver, NSObject* object, NSString* key) {
    if (object == nullptr) return current_->removeObjectForKey(key);
    current_->setObject_forKey(reference(archiver, object), key);
  }

  bool contains(NSString* key) const { return current_->objectForKey(key) != nullptr; }

  Ref<NSObject> archive() const {
    return NSDictionary::of(
        {{versionKey, NSNumber::of(version)}, {topKey, top_}, {objectsKey, objects_}});
  }

 private:
  Ref<NSObject> uid(std::uint32_t index) {
    return NSPropertyListUID::UIDWithUnsignedLongLong(index);
  }

  Ref<NSObject> reference(NSKeyedArchiver* archiver, NSObject* object) {
    const auto known = indices_.find(object);
    if (known != indices_.end()) return uid(known->second.index);
    if (depth_ == deepest)
      detail::raise(NSInvalidArgumentException, "encodeObject:forKey: nested too deep");
    const std::uint32_t index = objects_->count();
    indices_.emplace(object, Known{index, object});
    objects_->addObject(nullObject);  // keeps the place while the contents are numbered
    const Ref<NSMutableDictionary> outer = current_;
    ++depth_;
    try {
      objects_->replaceObjectAtIndex_withObject(index, form(archiver, object));
    } catch (...) {  // whoever catches it may go on without this Object
      current_ = outer;
      --depth_;
      indices_.erase(object);
      throw;
    }
    --depth_;
    return uid(index);
  }

  // What stands for the Object in the archive.
  Ref<NSObject> form(NSKeyedArchiver* archiver, NSObject* object) {
    if (isKind<NSMutableString>(object)) return contents("NSMutableString", object->copy());
    if (isKind<NSMutableData>(object)) return contents("NSMutableData", object->copy());
    if (isKind<NSString>(object) || isKind<NSNumber>(object) || isKind<NSData>(object) ||
        isKind<NSDate>(object))
      return object;
    if (isKind<NSNull>(object)) return ofClass("NSNull");
    if (auto* array = as<NSArray>(object)) {
      auto made = ofClass(isKind<NSMutableArray>(object) ? "NSMutableArray" : "NSArray");
      made->setObject_forKey(references(archiver, array), elementsKey);
      return made;
    }
    if (auto* counted = as<NSCountedSet>(object)) {
      auto made = ofClass("NSCountedSet");
      made->setObject_forKey(references(archiver, repeated(counted)), elementsKey);
      return made;
    }
    if (auto* set = as<NSSet>(object)) {
      auto made = ofClass(isKind<NSMutableSet>(object) ? "NSMutableSet" : "NSSet");
      made->setObject_forKey(references(archiver, set->allObjects()), elementsKey);
      return made;
    }
    if (auto* dictionary = as<NSDictionary>(object)) {
      auto made =
          ofClass(isKind<NSMutableDictionary>(object) ? "NSMutableDictionary" : "NSDictionary");
      made->setObject_forKey(references(archiver, dictionary->allKeys()), keysKey);
      made->setObject_forKey(references(archiver, dictionary->allValues()), elementsKey);
      return made;
    }
    return own(archiver, object);
  }

  // The Object says itself.
  Ref<NSObject> own(NSKeyedArchiver* archiver, NSObject* object) {
    const std::string name(object->classObject()->name());
    if (!object->respondsToSelector("encodeWithCoder:"_sel))
      detail::raise(NSInvalidArgumentException,
                    "encodeObject:forKey: the class " + name + " has no encodeWithCoder:");
    auto made = ofClass(name);
    const Ref<NSMutableDictionary> outer = std::exchange(current_, made);
    send<void>(object, "encodeWithCoder:"_sel, static_cast<NSCoder*>(archiver));
    current_ = outer;
    return made;
  }

  Ref<NSMutableDictionary> ofClass(const std::string& name) {
    auto [known, isNew] = classes_.try_emplace(name, objects_->count());
    if (isNew) objects_->addObject(NSString::stringWithUTF8String(name));
    return NSMutableDictionary::of({{classKey, uid(known->second)}});
  }

  Ref<NSObject> contents(const char* className, NSObject* leaf) {
    auto made = ofClass(className);
    made->setObject_forKey(leaf, contentsKey);
    return made;
  }

  // Each member as often as it counts: a number in its place could ask a reader for anything.
  static Ref<NSArray> repeated(NSCountedSet* set) {
    auto all = NSMutableArray::array();
    const Ref<NSArray> members = set->allObjects();
    for (NSObject* member : *members)
      for (std::uint32_t i = set->countForObject(member); i > 0; --i) all->addObject(member);
    return all;
  }

  Ref<NSArray> references(NSKeyedArchiver* archiver, NSArray* objects) {
    auto all = NSMutableArray::array();
    for (NSObject* each : *objects) all->addObject(reference(archiver, each));
    return all;
  }

  struct Known {
    std::uint32_t index;
    Ref<NSObject> object;  // its address must not become that of another
  };

  const Ref<NSMutableArray> objects_ = NSMutableArray::array();
  const Ref<NSMutableDictionary> top_ = NSMutableDictionary::dictionary();
  Ref<NSMutableDictionary> current_ = top_;  // of the Object that is encoded at the moment
  std::unordered_map<NSObject*, Known> indices_;
  std::unordered_map<std::string, std::uint32_t> classes_;
  unsigned depth_ = 0;
};

void NSKeyedArchiver::describe(ClassDescription<NSKeyedArchiver>& is) {
  is.named("NSKeyedArchiver")
      .classMethod<&NSKeyedArchiver::archivedDataWithRootObject>("archivedDataWithRootObject:")
      .method<&NSKeyedArchiver::encodedData>("encodedData");
}

NSKeyedArchiver::NSKeyedArchiver() : contents_(std::make_unique<Contents>()) {}
NSKeyedArchiver::~NSKeyedArchiver() = default;

Ref<NSData> NSKeyedArchiver::archivedDataWithRootObject(NSObject* root) {
  auto archiver = make<NSKeyedArchiver>();
  archiver->encodeObject_forKey(root, rootKey);
  return archiver->encodedData();
}

void NSKeyedArchiver::encodeObject_forKey(NSObject* object, NSString* key) {
  requireKey(key, "encodeObject:forKey:");
  contents_->encode(this, object, key);
}

bool NSKeyedArchiver::containsValueForKey(NSString* key) {
  requireKey(key, "containsValueForKey:");
  return contents_->contains(key);
}

Ref<NSData> NSKeyedArchiver::encodedData() const {
  Ref<NSString> problem;
  Ref<NSData> data = NSPropertyListSerialization::dataFromPropertyList_format_errorDescription(
      contents_->archive(), NSPropertyListBinaryFormat, &problem);
  if (!data) detail::raise(NSInvalidArgumentException, "encodedData: " + problem->UTF8String());
  return data;
}

}  // namespace qz
