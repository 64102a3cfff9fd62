#include <algorithm>
#include <string>
#include <utility>
#include <vector>

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
#include "Platform/Text/NSKeyedArchiver.h"
#include "Platform/Text/detail/KeyedArchive.h"
#include "Platform/Values/NSError.h"
#include "Platform/Values/NSMutableData.h"
#include "Platform/Values/NSMutableString.h"
#include "Platform/Values/NSNull.h"
#include "Platform/Values/NSNumber.h"

namespace qz {

using namespace detail::archive;

namespace {

/// Thrown from where it goes wrong to where an answer is due.
struct Corrupt {
  std::string reason;
};

Ref<NSError> errorOf(const std::string& reason) {
  return make<NSError>(NSCocoaErrorDomain, NSCoderReadCorruptError,
                       NSDictionary::dictionaryWithObject_forKey(
                           NSString::stringWithUTF8String(reason), NSLocalizedDescriptionKey));
}

template <class T>
Ref<T> required(NSDictionary* dictionary, NSString* key) {
  auto value = as<T>(dictionary->objectForKey(key));
  if (!value)
    throw Corrupt{"there is no " + std::string(classOf<T>()->name()) + " under " + to_string(key)};
  return value;
}

}  // namespace

class NSKeyedUnarchiver::Contents {
 public:
  Contents(NSData* data, NSArray* classes) : allowed_(NSArray::arrayWithArray(classes)) {
    Ref<NSString> problem;
    const auto list =
        NSPropertyListSerialization::propertyListFromData_mutabilityOption_format_errorDescription(
            data, NSPropertyListImmutable, nullptr, &problem);
    if (!list) throw Corrupt{problem->UTF8String()};
    const auto archive = as<NSDictionary>(list);
    if (!archive) throw Corrupt{"this is no archive"};
    if (required<NSNumber>(archive, versionKey)->longLongValue() != version)
      throw Corrupt{"this is no archive of version " + std::to_string(version)};
    objects_ = required<NSArray>(archive, objectsKey);
    current_ = required<NSDictionary>(archive, topKey);
    states_.resize(objects_->count(), State::Unread);
    decoded_.resize(objects_->count());
    weights_.resize(objects_->count());
  }

  bool contains(NSString* key) const { return current_->objectForKey(key) != nullptr; }

  Ref<NSObject> decode(NSKeyedUnarchiver* unarchiver, NSString* key) {
    if (error_) return nullptr;  // what comes of the rest would be wrong
    const Ref<NSObject> reference = current_->objectForKey(key);
    if (!reference) return nullptr;
    try {
      return object(unarchiver, reference);
    } catch (const Corrupt& corrupt) {
      error_ = errorOf(corrupt.reason);
    } catch (const Raised& raised) {  // by what is decoded, hashed, compared or copied
      error_ = errorOf(raised.what());
    }
    return nullptr;
  }

  Ref<NSError> error() const { return error_; }

 private:
  enum class State : std::uint8_t { Unread, BeingRead, Read };

  std::size_t indexOf(NSObject* reference) const {
    const auto* uid = as<NSPropertyListUID>(reference);
    if (uid == nullptr) throw Corrupt{"a reference is of the class " + nameOf(reference)};
    if (uid->unsignedLongLongValue() >= states_.size())
      throw Corrupt{"there is no object " + std::to_string(uid->unsignedLongLongValue())};
    return static_cast<std::size_t>(uid->unsignedLongLongValue());
  }

  static std::string nameOf(NSObject* object) { return std::string(object->classObject()->name()); }

  Ref<NSObject> object(NSKeyedUnarchiver* unarchiver, NSObject* reference) {
    const std::size_t index = indexOf(reference);
    if (index == 0) return nullptr;
    if (states_[index] == State::Read) {
      addWeight(weights_[index]);
      return decoded_[index];
    }
    if (states_[index] == State::BeingRead)
      throw Corrupt{"object " + std::to_string(index) + " refers to itself"};
    if (depth_ == deepest) throw Corrupt{"nested too deep"};
    ++depth_;
    states_[index] = State::BeingRead;
    const std::uint32_t outer = std::exchange(weight_, 1);
    decoded_[index] = made(unarchiver, objects_->objectAtIndex(static_cast<std::uint32_t>(index)));
    states_[index] = State::Read;
    --depth_;
    weights_[index] = std::exchange(weight_, outer);
    addWeight(weights_[index]);
    return decoded_[index];
  }

  Ref<NSObject> made(NSKeyedUnarchiver* unarchiver, NSObject* form) {
    auto* const values = as<NSDictionary>(form);
    if (values == nullptr) {
      if (isKind<NSArray>(form) || isKind<NSPropertyListUID>(form))
        throw Corrupt{"an object is of the class " + nameOf(form)};
      return form;
    }
    const std::size_t name = indexOf(required<NSObject>(values, classKey));
    const auto className = as<NSString>(objects_->objectAtIndex(static_cast<std::uint32_t>(name)));
    if (!className) throw Corrupt{"a class has no name"};
    if (Ref<NSObject> known = platformObject(unarchiver, className->UTF8String(), values))
      return known;
    return own(unarchiver, className, values);
  }

  // Nil for other classes.
  Ref<NSObject> platformObject(NSKeyedUnarchiver* unarchiver, const std::string& name,
                               NSDictionary* values) {
    if (name == "NSNull") return NSNull::null();
    if (name == "NSMutableString") return required<NSString>(values, contentsKey)->mutableCopy();
    if (name == "NSMutableData") return required<NSData>(values, contentsKey)->mutableCopy();
    if (name == "NSArray") return elements(unarchiver, values, elementsKey);
    if (name == "NSMutableArray") return elements(unarchiver, values, elementsKey)->mutableCopy();
    if (name == "NSSet" || name == "NSMutableSet" || name == "NSCountedSet") {
      const auto all = comparable(unarchiver, values, elementsKey);
      if (name == "NSSet") return NSSet::setWithArray(all);
      if (name == "NSMutableSet") return NSMutableSet::setWithArray(all);
      return NSCountedSet::setWithArray(all);
    }
    if (name == "NSDictionary" || name == "NSMutableDictionary") {
      const auto keys = comparable(unarchiver, values, keysKey);
      const auto objects = elements(unarchiver, values, elementsKey);
      if (keys->count() != objects->count())
        throw Corrupt{"a dictionary has not as many keys as objects"};
      if (name == "NSDictionary") return NSDictionary::dictionaryWithObjects_forKeys(objects, keys);
      return NSMutableDictionary::dictionaryWithObjects_forKeys(objects, keys);
    }
    return nullptr;
  }

  Ref<NSArray> elements(NSKeyedUnarchiver* unarchiver, NSDictionary* values, NSString* key) {
    auto all = NSMutableArray::array();
    const Ref<NSArray> references = required<NSArray>(values, key);
    for (NSObject* reference : *references) {
      const Ref<NSObject> element = object(unarchiver, reference);
      if (!element) throw Corrupt{"an element is nil"};
      all->addObject(element);
    }
    return as<NSArray>(all->copy());
  }

  // Elements that will be compared with each other. Arrays that share their elements over many
  // levels are small in the archive, but take the time of all that they spell out.
  Ref<NSArray> comparable(NSKeyedUnarchiver* unarchiver, NSDictionary* values, NSString* key) {
    auto all = elements(unarchiver, values, key);
    if (weight_ > heaviest) throw Corrupt{"the members or keys of a collection are too large"};
    return all;
  }

  void addWeight(std::uint32_t weight) { weight_ = std::min(weight_ + weight, heaviest + 1); }

  Ref<NSObject> own(NSKeyedUnarchiver* unarchiver, NSString* className, NSDictionary* values) {
    Class* const aClass = NSClassFromString(className);
    const std::string name = to_string(className);
    if (aClass == nullptr) throw Corrupt{"there is no class " + name};
    bool isAllowed = false;
    for (NSObject* each : *allowed_)
      isAllowed = isAllowed || aClass->isSubclassOfClass(as<Class>(each));
    if (!isAllowed) throw Corrupt{"the class " + name + " is not expected"};
    if (aClass->classMethod("initWithCoder:"_sel) == nullptr)
      throw Corrupt{"the class " + name + " has no initWithCoder:"};
    const Ref<NSDictionary> outer = std::exchange(current_, Ref<NSDictionary>(values));
    auto object =
        send<Ref<NSObject>>(aClass, "initWithCoder:"_sel, static_cast<NSCoder*>(unarchiver));
    current_ = outer;
    if (error_) throw Corrupt{error_->localizedDescription()->UTF8String()};
    return object;
  }

  const Ref<NSArray> allowed_;
  Ref<NSArray> objects_;
  Ref<NSDictionary> current_;  // of the Object that is decoded at the moment
  std::vector<State> states_;
  std::vector<Ref<NSObject>> decoded_;
  // How many Objects one is with all that it holds, each as often as it is referred to.
  static constexpr std::uint32_t heaviest = 1'000'000;
  std::vector<std::uint32_t> weights_;
  std::uint32_t weight_ = 0;  // of the Object that is read at the moment, so far
  Ref<NSError> error_;
  unsigned depth_ = 0;
};

void NSKeyedUnarchiver::describe(ClassDescription<NSKeyedUnarchiver>& is) {
  is.named("NSKeyedUnarchiver")
      .classMethod<&NSKeyedUnarchiver::unarchivedObjectOfClasses_fromData_error>(
          "unarchivedObjectOfClasses:fromData:error:")
      .initializer<&NSKeyedUnarchiver::initForReadingFromData_classes_error>(
          "initForReadingFromData:classes:error:")
      .property<&NSKeyedUnarchiver::error>("error");
}

NSKeyedUnarchiver::NSKeyedUnarchiver(std::unique_ptr<Contents> contents)
    : contents_(std::move(contents)) {}
NSKeyedUnarchiver::~NSKeyedUnarchiver() = default;

Ref<NSObject> NSKeyedUnarchiver::unarchivedObjectOfClasses_fromData_error(NSArray* classes,
                                                                          NSData* data,
                                                                          Ref<NSError>* error) {
  auto unarchiver = initForReadingFromData_classes_error(data, classes, error);
  if (!unarchiver) return nullptr;
  Ref<NSObject> root = unarchiver->decodeObjectForKey(rootKey);
  const Ref<NSError> failure = unarchiver->error();
  if (!failure) return root;
  if (error != nullptr) *error = failure;
  return nullptr;
}

Ref<NSKeyedUnarchiver> NSKeyedUnarchiver::initForReadingFromData_classes_error(
    NSData* data, NSArray* classes, Ref<NSError>* error) {
  try {
    auto contents = std::make_unique<Contents>(data, classes);
    return Ref<NSKeyedUnarchiver>(new NSKeyedUnarchiver(std::move(contents)), adopt);
  } catch (const Corrupt& corrupt) {
    if (error != nullptr) *error = errorOf(corrupt.reason);
    return nullptr;
  }
}

Ref<NSObject> NSKeyedUnarchiver::decodeObjectForKey(NSString* key) {
  requireKey(key, "decodeObjectForKey:");
  return contents_->decode(this, key);
}

bool NSKeyedUnarchiver::containsValueForKey(NSString* key) {
  requireKey(key, "containsValueForKey:");
  return contents_->contains(key);
}

Ref<NSError> NSKeyedUnarchiver::error() const { return contents_->error(); }

}  // namespace qz
