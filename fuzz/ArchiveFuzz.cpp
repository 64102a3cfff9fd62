// Archives from outside: an Object or an Error, and what was read is written and read again as the
// same. Either the bytes of an archive behind "bplist", or its Objects as text, from number 1 on,
// each on a line of tab-separated fields:
//
//     "text            a String
//     #2.5             a Number
//     NSURL text=2     a Dictionary of the class with a reference
//     NSSet NS.objects=2,3,3,     of references: the last comma makes it a list
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/Collections/NSSortDescriptor.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/System/NSPropertyListSerialization.h"
#include "Platform/System/NSPropertyListUID.h"
#include "Platform/Text/NSKeyedArchiver.h"
#include "Platform/Text/NSNumberFormatter.h"
#include "Platform/Values/NSError.h"
#include "Platform/Values/NSIndexPath.h"
#include "Platform/Values/NSNumber.h"
#include "Platform/Values/NSURL.h"
#include "Platform/Values/NSUUID.h"
#include "QZFoundation/QZFoundation.h"
#include "fuzz/support/Require.h"

using namespace qz;
using fuzz::require;

namespace {

std::string_view take(std::string_view& text, char end) {
  const std::size_t at = std::min(text.find(end), text.size());
  const std::string_view piece = text.substr(0, at);
  text.remove_prefix(std::min(at + 1, text.size()));
  return piece;
}

Ref<NSString> string(std::string_view text) { return NSString::stringWithUTF8String(text); }

Ref<NSObject> uid(std::string_view number) {
  return NSPropertyListUID::UIDWithUnsignedLongLong(
      static_cast<std::uint64_t>(string(number)->longLongValue()));
}

Ref<NSObject> references(std::string_view value) {
  if (value.find(',') == std::string_view::npos) return uid(value);
  auto all = NSMutableArray::array();
  while (!value.empty()) all->addObject(uid(take(value, ',')));
  return all;
}

Ref<NSData> archiveOf(std::string_view text) {
  auto objects = NSMutableArray::arrayWithObject("$null"_ns);
  std::vector<std::pair<Ref<NSMutableDictionary>, Ref<NSString>>> classes;
  while (!text.empty()) {
    std::string_view line = take(text, '\n');
    const std::string_view first = take(line, '\t');
    if (first.starts_with('"')) {
      objects->addObject(string(first.substr(1)));
    } else if (first.starts_with('#')) {
      objects->addObject(NSNumber::of(string(first.substr(1))->doubleValue()));
    } else {
      auto values = NSMutableDictionary::dictionary();
      while (!line.empty()) {
        std::string_view field = take(line, '\t');
        const auto key = string(take(field, '='));
        values->setObject_forKey(references(field), key);
      }
      objects->addObject(values);
      classes.emplace_back(values, string(first));
    }
  }
  for (const auto& [values, name] : classes) {
    values->setObject_forKey(NSPropertyListUID::UIDWithUnsignedLongLong(objects->count()),
                             "$class"_ns);
    objects->addObject(name);
  }
  return NSPropertyListSerialization::dataFromPropertyList_format_errorDescription(
      NSDictionary::of({{"$version"_ns, NSNumber::of(1)},
                        {"$top"_ns, NSDictionary::of({{"root"_ns, uid("1")}})},
                        {"$objects"_ns, objects}}),
      NSPropertyListBinaryFormat, nullptr);
}

Ref<NSObject> unarchived(NSData* data, Ref<NSError>* error) {
  static NSArray* const classes =
      NSArray::arrayWithObjects({classOf<NSSortDescriptor>(), classOf<NSURL>(), classOf<NSUUID>(),
                                 classOf<NSIndexPath>(), classOf<NSNumberFormatter>()})
          .leak();
  return NSKeyedUnarchiver::unarchivedObjectOfClasses_fromData_error(classes, data, error);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(bytes), size);
  const Ref<NSData> data =
      input.starts_with("bplist") ? NSData::dataWithBytes(input) : archiveOf(input);
  if (!data) return 0;
  Ref<NSError> error;
  const Ref<NSObject> object = unarchived(data, &error);
  require(!error || !object);
  if (!object) return 0;

  const Ref<NSData> written = NSKeyedArchiver::archivedDataWithRootObject(object);
  const Ref<NSObject> again = unarchived(written, &error);
  require(again != nullptr && again->classObject() == object->classObject());
  if (auto* const formatter = as<NSNumberFormatter>(again.get()))
    formatter->numberFromString(formatter->stringFromNumber(NSNumber::of(-1234.5)));
  // In a long text, elements may be shared over so many levels that comparing takes for ever.
  const bool isComparable = !input.starts_with("bplist") && size < 200 &&
                            input.find("NSNumberFormatter") == std::string_view::npos;
  if (isComparable) require(equal(again, object));
  return 0;
}
