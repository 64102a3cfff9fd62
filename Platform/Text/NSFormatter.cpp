#include "Platform/Text/NSFormatter.h"

#include <string>
#include <utility>

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"

namespace qz {

void NSFormatter::describe(ClassDescription<NSFormatter>& is) {
  is.named("NSFormatter")
      .method<&NSFormatter::stringForObjectValue>("stringForObjectValue:")
      .method<&NSFormatter::editingStringForObjectValue>("editingStringForObjectValue:")
      .method<&NSFormatter::getObjectValue_forString_errorDescription>(
          "getObjectValue:forString:errorDescription:");
}

Ref<NSFormatter> NSFormatter::init() { return make<NSFormatter>(); }

namespace {
[[noreturn]] void raiseAbstract(const NSFormatter& formatter, const char* operation) {
  detail::raise(NSInvalidArgumentException,
                std::string(formatter.classObject()->name()) + " does not override " + operation);
}
}  // namespace

Ref<NSString> NSFormatter::stringForObjectValue(NSObject*) const {
  raiseAbstract(*this, "stringForObjectValue:");
}

Ref<NSString> NSFormatter::editingStringForObjectValue(NSObject* object) const {
  return stringForObjectValue(object);
}

bool NSFormatter::getObjectValue_forString_errorDescription(Ref<NSObject>*, NSString*,
                                                            Ref<NSString>*) const {
  raiseAbstract(*this, "getObjectValue:forString:errorDescription:");
}

bool NSFormatter::deliver(Ref<NSObject>* object, Ref<NSString>* error, Ref<NSObject> value,
                          Ref<NSString> message) {
  const bool isRight = !message;
  if (object != nullptr) *object = std::move(value);
  if (error != nullptr) *error = std::move(message);
  return isRight;
}

Ref<NSString> NSFormatter::excerpt(NSString* text) {
  constexpr std::uint32_t longest = 100;
  if (text->length() <= longest) return text;
  return text->substringToIndex(longest)->stringByAppendingString("…"_ns);
}

}  // namespace qz
