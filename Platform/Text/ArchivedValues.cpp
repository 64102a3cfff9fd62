#include <string>
#include <vector>

#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Collections/NSSortDescriptor.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Text/NSCoder.h"
#include "Platform/Text/detail/ArchivedValues.h"
#include "Platform/Values/NSIndexPath.h"
#include "Platform/Values/NSNumber.h"
#include "Platform/Values/NSURL.h"
#include "Platform/Values/NSUUID.h"

namespace qz {
namespace {

// Raised while decoding, it becomes the unarchiver's Error.
[[noreturn]] void refuse(const std::string& reason) {
  detail::raise(NSInvalidArgumentException, reason);
}

Ref<NSString> stringForKey(NSCoder* coder, NSString* key) {
  return as<NSString>(coder->decodeObjectForKey(key));
}

// Sort descriptors --------------------------------------------------------------------------------

void encodeSortDescriptor(NSSortDescriptor* self, NSCoder* coder) {
  // A class below compares in its own way, which would be lost in silence.
  if (!self->isMemberOfClass(classOf<NSSortDescriptor>()))
    refuse(std::string(self->classObject()->name()) + " has no encodeWithCoder: of its own");
  coder->encodeObject_forKey(self->key(), "key"_ns);
  coder->encodeBool_forKey(self->ascending(), "ascending"_ns);
  coder->encodeObject_forKey(NSStringFromSelector(self->selector()), "selector"_ns);
}

Ref<NSSortDescriptor> decodeSortDescriptor(NSCoder* coder) {
  const std::string selector = to_string(stringForKey(coder, "selector"_ns));
  // What is no comparison is not to be sent to anything that is sorted.
  if (selector.size() < 2 || selector.find(':') != selector.size() - 1)
    refuse("\"" + selector + "\" does not compare with another object");
  return NSSortDescriptor::initWithKey_ascending_selector(stringForKey(coder, "key"_ns),
                                                          coder->decodeBoolForKey("ascending"_ns),
                                                          Selector::named(selector));
}

// Values ------------------------------------------------------------------------------------------

void encodeURL(NSURL* self, NSCoder* coder) {
  coder->encodeObject_forKey(self->relativeString(), "text"_ns);
  coder->encodeObject_forKey(self->baseURL(), "base"_ns);
}

Ref<NSURL> decodeURL(NSCoder* coder) {
  const auto base = coder->decodeObjectForKey("base"_ns);
  const auto text = stringForKey(coder, "text"_ns);
  auto url = NSURL::URLWithString_relativeToURL(text, as<NSURL>(base.get()));
  if (!url) refuse("\"" + to_string(text) + "\" is no URL");
  return url;
}

void encodeUUID(NSUUID* self, NSCoder* coder) {
  coder->encodeObject_forKey(self->UUIDString(), "text"_ns);
}

Ref<NSUUID> decodeUUID(NSCoder* coder) {
  const auto text = stringForKey(coder, "text"_ns);
  auto uuid = NSUUID::initWithUUIDString(text);
  if (!uuid) refuse("\"" + to_string(text) + "\" is no UUID");
  return uuid;
}

void encodeIndexPath(NSIndexPath* self, NSCoder* coder) {
  auto numbers = NSMutableArray::array();
  for (const std::uint32_t index : self->indexes()) numbers->addObject(NSNumber::of(index));
  coder->encodeObject_forKey(numbers, "indexes"_ns);
}

Ref<NSIndexPath> decodeIndexPath(NSCoder* coder) {
  const auto numbers = as<NSArray>(coder->decodeObjectForKey("indexes"_ns));
  std::vector<std::uint32_t> indexes;
  for (NSObject* each : numbers) {
    auto* const number = as<NSNumber>(each);
    if (number == nullptr || number->compare(NSNumber::of(number->unsignedIntValue())) != 0)
      refuse("an index path has no index " + to_string(each));
    indexes.push_back(number->unsignedIntValue());
  }
  return NSIndexPath::indexPathWithIndexes(indexes);
}

template <class T, auto Encode, auto Decode>
void describeCoding() {
  extend<T>("Archives")
      .template method<Encode>("encodeWithCoder:")
      .template initializer<Decode>("initWithCoder:");
}

}  // namespace

void detail::describeArchivedValues() {
  describeCoding<NSSortDescriptor, &encodeSortDescriptor, &decodeSortDescriptor>();
  describeCoding<NSURL, &encodeURL, &decodeURL>();
  describeCoding<NSUUID, &encodeUUID, &decodeUUID>();
  describeCoding<NSIndexPath, &encodeIndexPath, &decodeIndexPath>();
}

}  // namespace qz
