/// @file
/// Info dictionaries: Objects made from, and described as, plain Dictionaries.
///
///     auto info = NSDictionary::of({{"key"_ns, "age"_ns},
///                                   {"ascending"_ns, NSNumber::of(true)},
///                                   {"selector"_ns, "compare:"_ns}});
///     auto byAge = objectFromInfoDictionary(classOf<NSSortDescriptor>(), info);
///
/// An info dictionary is a property list, as configuration files hold it. Its "class" names the
/// class to make; classes read the other entries each in their own way, by
/// `initWithInfoDictionary:`:
///
/// - NSFormatter and below: "properties", a Dictionary of values to set by key, the keys of
///   `propertyOrder` first.
/// - NSDateFormatter: in "properties" also "formatterBehavior". With 1000, "formatKey" (a user
///   default with the format) or "format", and nothing else counts; otherwise "timeStyle" and
///   "dateStyle". Beside "properties", "timeZoneSelector" names a class-level operation of
///   NSTimeZone.
/// - NSSortDescriptor: "key", "ascending" and "selector". A derived class is made by what it has
///   described as "initWithKey:ascending:selector:", or else comes back as the base.
/// - Any other class: none.
///
/// What cannot be set (an unknown key, a value of the wrong kind) is passed over. Any thread, as
/// far as the classes allow it.
#pragma once

#include "Platform/Collections/NSSortDescriptor.h"
#include "Platform/Text/NSDateFormatter.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

class NSArray;
class NSDictionary;

/// An Object of the class that "class" names, or of `aClass` where that is missing or unknown. Nil
/// for nil. Raises NSInvalidArgumentException for a class that makes no Objects.
Ref<NSObject> objectFromInfoDictionary(Class* aClass, NSDictionary* info);

/// One for each Dictionary, in order, without those that give nil; elements that are none give nil.
Ref<NSArray> objectsFromInfoDictionaries(Class* aClass, NSArray* infos);

/// A new Object of the class, as the class makes it of the Dictionary (by Selector).
Ref<NSObject> initWithInfoDictionary(Class* aClass, NSDictionary* info);

/// What `objectFromInfoDictionary` would make the Object of, as its class tells it (by Selector):
/// empty unless it does. Sort descriptors do.
Ref<NSDictionary> infoDictionary(NSObject* self);

// Formatters --------------------------------------------------------------------------------------

/// The properties that have to be set first, in this order (by Selector). Date formatters have one,
/// "formattingBehavior", which is not the entry that their behaviour is read from: both names are
/// deliberate. Nil is no order.
Ref<NSArray> propertyOrder(NSFormatter* self);

/// Nil: the key is not kept.
Ref<NSString> formatKey(NSFormatter* self);

/// Sets the user default of that name as the format, by `setDateFormat:`. A formatter without that
/// operation raises NSInvalidArgumentException.
void setFormatKey(NSFormatter* self, NSString* key);

}  // namespace qz

#pragma GCC visibility pop
