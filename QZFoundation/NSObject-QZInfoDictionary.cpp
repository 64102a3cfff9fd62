#include "QZFoundation/NSObject-QZInfoDictionary.h"

#include <utility>

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/Collections/detail/ArrayBuilder.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/Send.h"
#include "Platform/System/NSUserDefaults.h"
#include "Platform/Text/NSTimeZone.h"
#include "Platform/Values/NSNumber.h"

namespace qz {
namespace {

Ref<NSObject> entry(NSDictionary* info, NSString* key) {
  return info != nullptr ? info->objectForKey(key) : nullptr;
}

// As they are now: what a setter does must not disturb a walk.
Ref<NSDictionary> propertiesOf(NSDictionary* info) {
  const auto properties = as<NSDictionary>(entry(info, "properties"_ns));
  return properties ? as<NSDictionary>(properties->copy()) : NSDictionary::dictionary();
}

/// Runs `work`; what configuration files have wrong is passed over.
template <class Work>
void tolerantly(Work work) {
  try {
    work();
  } catch (const Raised&) {
  }
}

// Any Object --------------------------------------------------------------------------------------

Ref<NSObject> plainObject(Class* aClass, NSDictionary* /*info*/) { return aClass->newObject(); }

// Sent to what `alloc` answered, whose class is what counts.
Ref<NSObject> initialized(NSObject* self, NSDictionary* info) {
  return initWithInfoDictionary(self->classObject(), info);
}

Ref<NSDictionary> emptyInfo(NSObject*) { return NSDictionary::dictionary(); }

// Formatters --------------------------------------------------------------------------------------

Ref<NSArray> noOrder(NSFormatter*) { return NSArray::array(); }
Ref<NSArray> dateOrder(NSDateFormatter*) {
  static NSArray* const order = NSArray::arrayWithObject("formattingBehavior"_ns).leak();
  return order;
}

Ref<NSObject> formatterOfInfo(Class* aClass, NSDictionary* info) {
  auto formatter = as<NSFormatter>(aClass->newObject());
  if (!formatter) return nullptr;
  const Ref<NSDictionary> properties = propertiesOf(info);
  const auto set = [&](NSObject* name, NSObject* value) {
    auto* const key = as<NSString>(name);
    if (key != nullptr && value != nullptr)
      tolerantly([&] { formatter->setValue_forKey(value, key); });
  };
  const Ref<NSArray> first = propertyOrder(formatter);
  for (NSObject* key : first) set(key, properties->objectForKey(key));
  for (const auto& [key, value] : *properties)
    if (!first || !first->containsObject(key)) set(key, value);
  return formatter;
}

Ref<NSString> formatOf(NSDictionary* properties) {
  const Ref<NSObject> key = properties->objectForKey("formatKey"_ns);
  if (!key) return as<NSString>(properties->objectForKey("format"_ns));
  const auto name = as<NSString>(key);
  return name ? NSUserDefaults::standardUserDefaults()->stringForKey(name) : nullptr;
}

Ref<NSObject> percentFormatter(Class* aClass, NSString* format) {
  if (aClass == classOf<NSDateFormatter>())
    return NSDateFormatter::initWithDateFormat_allowNaturalLanguage(format, true);
  auto formatter = as<NSDateFormatter>(aClass->newObject());
  formatter->setFormatterBehavior(NSDateFormatterBehavior::PercentFormat);
  formatter->setDateFormat(format);
  formatter->setAllowsNaturalLanguage(true);
  return formatter;
}

void setTimeZone(NSDateFormatter* formatter, NSObject* operation) {
  auto* const name = as<NSString>(operation);
  if (name == nullptr) return;
  tolerantly([&] {
    const Ref<NSObject> zone =
        classOf<NSTimeZone>()->performSelector(NSSelectorFromString(name)).object();
    formatter->setTimeZone(as<NSTimeZone>(zone));
  });
}

Ref<NSObject> dateFormatterOfInfo(Class* aClass, NSDictionary* info) {
  const Ref<NSDictionary> properties = propertiesOf(info);
  const auto number = [&](NSString* key) { return as<NSNumber>(properties->objectForKey(key)); };
  const auto behavior = number("formatterBehavior"_ns);
  const auto code = behavior
                        ? behavior->intValue()
                        : static_cast<std::int32_t>(NSDateFormatter::defaultFormatterBehavior());
  if (code == static_cast<std::int32_t>(NSDateFormatterBehavior::PercentFormat))
    return percentFormatter(aClass, formatOf(properties));

  auto formatter = as<NSDateFormatter>(formatterOfInfo(aClass, info));
  const auto style = [](NSNumber* value) {
    return static_cast<NSDateFormatterStyle>(value->intValue());
  };
  if (const auto time = number("timeStyle"_ns)) formatter->setTimeStyle(style(time));
  if (const auto date = number("dateStyle"_ns)) formatter->setDateStyle(style(date));
  setTimeZone(formatter, entry(info, "timeZoneSelector"_ns));
  return formatter;
}

// Sort descriptors --------------------------------------------------------------------------------

Ref<NSObject> sortDescriptorOfInfo(Class* aClass, NSDictionary* info) {
  const Ref<NSObject> ascending = entry(info, "ascending"_ns);
  bool isAscending = false;
  if (auto* const number = as<NSNumber>(ascending.get()))
    isAscending = number->boolValue();
  else if (ascending)
    tolerantly([&] { isAscending = send<bool>(ascending, "boolValue"_sel); });
  const auto key = as<NSString>(entry(info, "key"_ns));
  const Selector selector = NSSelectorFromString(as<NSString>(entry(info, "selector"_ns)));
  if (aClass == classOf<NSSortDescriptor>())
    return NSSortDescriptor::initWithKey_ascending_selector(key, isAscending, selector);
  return send<Ref<NSObject>>(aClass, "initWithKey:ascending:selector:"_sel, key, isAscending,
                             selector);
}

Ref<NSDictionary> sortDescriptorInfo(NSSortDescriptor* self) {
  auto info = NSMutableDictionary::dictionary();
  if (const Ref<NSString> key = self->key()) info->setObject_forKey(key, "key"_ns);
  info->setObject_forKey(NSNumber::of(self->ascending()), "ascending"_ns);
  if (const Ref<NSString> selector = NSStringFromSelector(self->selector()))
    info->setObject_forKey(selector, "selector"_ns);
  info->setObject_forKey(NSStringFromClass(self->classObject()), "class"_ns);
  return as<NSDictionary>(info->copy());
}

}  // namespace

Ref<NSObject> objectFromInfoDictionary(Class* aClass, NSDictionary* info) {
  if (info == nullptr) return nullptr;
  Class* const named = NSClassFromString(as<NSString>(entry(info, "class"_ns)));
  return initWithInfoDictionary(named != nullptr ? named : aClass, info);
}

Ref<NSArray> objectsFromInfoDictionaries(Class* aClass, NSArray* infos) {
  detail::ArrayBuilder objects(infos == nullptr ? 0 : infos->count());
  for (NSObject* info : infos)
    if (Ref<NSObject> object = objectFromInfoDictionary(aClass, as<NSDictionary>(info)))
      objects.take(std::move(object));
  return objects.finish();
}

Ref<NSObject> initWithInfoDictionary(Class* aClass, NSDictionary* info) {
  return send<Ref<NSObject>>(aClass, "initWithInfoDictionary:"_sel, info);
}

Ref<NSDictionary> infoDictionary(NSObject* self) {
  return send<Ref<NSDictionary>>(self, "infoDictionary"_sel);
}

Ref<NSArray> propertyOrder(NSFormatter* self) {
  return send<Ref<NSArray>>(self, "propertyOrder"_sel);
}

Ref<NSString> formatKey(NSFormatter*) { return nullptr; }

void setFormatKey(NSFormatter* self, NSString* key) {
  const Ref<NSObject> format = NSUserDefaults::standardUserDefaults()->objectForKey(key);
  send<void>(self, "setDateFormat:"_sel, format);
}

void detail::registerNSObjectQZInfoDictionary() {
  extend<NSObject>("QZInfoDictionary")
      .classMethod<&objectFromInfoDictionary>("objectFromInfoDictionary:")
      .classMethod<&objectsFromInfoDictionaries>("objectsFromInfoDictionaries:")
      .classMethod<&plainObject>("initWithInfoDictionary:")
      .method<&initialized>("initWithInfoDictionary:")
      .method<&emptyInfo>("infoDictionary");
  extend<NSFormatter>("QZInfoDictionary")
      .classMethod<&formatterOfInfo>("initWithInfoDictionary:")
      .method<&noOrder>("propertyOrder")
      .property<&formatKey, &setFormatKey>("formatKey");
  extend<NSDateFormatter>("QZInfoDictionary")
      .classMethod<&dateFormatterOfInfo>("initWithInfoDictionary:")
      .method<&dateOrder>("propertyOrder");
  extend<NSSortDescriptor>("QZInfoDictionary")
      .classMethod<&sortDescriptorOfInfo>("initWithInfoDictionary:")
      .method<&sortDescriptorInfo>("infoDictionary");
}

}  // namespace qz
