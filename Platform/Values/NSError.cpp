#include "Platform/Values/NSError.h"

#include <langinfo.h>
#include <locale.h>
#include <string.h>

#include <string_view>

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/NSDictionary.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Values/detail/PosixError.h"

namespace qz {
namespace {

Ref<NSString> copied(NSString* text) {
  return text == nullptr ? nullptr : NSString::stringWithString(text);
}

Ref<NSDictionary> kept(NSDictionary* userInfo) {
  if (userInfo == nullptr) return NSDictionary::dictionary();
  return as<NSDictionary>(userInfo->copy());
}

/// The locale that the environment names, whether or not the program has made it its own; null for
/// one that is not installed or does not write UTF-8.
locale_t userLocale() {
  static const locale_t locale = []() -> locale_t {
    const locale_t named = ::newlocale(LC_CTYPE_MASK | LC_MESSAGES_MASK, "", nullptr);
    if (named == nullptr || std::string_view(::nl_langinfo_l(CODESET, named)) == "UTF-8")
      return named;
    ::freelocale(named);
    return nullptr;
  }();
  return locale;
}

}  // namespace

NSError::NSError(NSString* domain, std::int32_t code, NSDictionary* userInfo)
    : domain_(copied(domain)), userInfo_(kept(userInfo).leak()), code_(code) {}

NSError::NSError(NSString* domain, std::int32_t code, NSString* description)
    : domain_(copied(domain)), description_(copied(description)), code_(code) {}

NSError::~NSError() { release(userInfo_.load(std::memory_order_acquire)); }

Ref<NSError> NSError::errorWithDomain_code_userInfo(NSString* domain, std::int32_t code,
                                                    NSDictionary* userInfo) {
  return make<NSError>(domain, code, userInfo);
}

Ref<NSError> NSError::initWithDomain_code_userInfo(NSString* domain, std::int32_t code,
                                                   NSDictionary* userInfo) {
  return make<NSError>(domain, code, userInfo);
}

Ref<NSError> NSError::errorWithDomain_code_description(NSString* domain, std::int32_t code,
                                                       NSString* description) {
  return make<NSError>(domain, code, description);
}

Ref<NSDictionary> NSError::userInfo() const {
  NSDictionary* info = userInfo_.load(std::memory_order_acquire);
  if (info != nullptr) return info;
  Ref<NSDictionary> made = description_ ? NSDictionary::dictionaryWithObject_forKey(
                                              description_, NSLocalizedDescriptionKey)
                                        : NSDictionary::dictionary();
  // Of several threads that ask first, one has its Dictionary kept.
  if (!userInfo_.compare_exchange_strong(info, made.get(), std::memory_order_acq_rel)) return info;
  return made.leak();
}

Ref<NSObject> NSError::infoForKey(NSString* key) const {
  if (NSDictionary* info = userInfo_.load(std::memory_order_acquire))
    return info->objectForKey(key);
  return key->isEqualToString(NSLocalizedDescriptionKey) ? description_ : nullptr;
}

Ref<NSString> NSError::localizedDescription() const {
  if (description_) return description_;
  if (auto text = as<NSString>(infoForKey(NSLocalizedDescriptionKey))) return text;
  if (equal(domain_, NSPOSIXErrorDomain))
    return NSString::stringWithUTF8String(detail::posixErrorText(code_));
  return NSString::stringWithFormat("The operation could not be completed. (%@ error %d.)"_ns,
                                    domain_, code_);
}

Ref<NSString> NSError::localizedFailureReason() const {
  if (auto reason = as<NSString>(infoForKey(NSLocalizedFailureReasonErrorKey))) return reason;
  if (!equal(domain_, NSPOSIXErrorDomain)) return nullptr;
  auto text = NSString::stringWithUTF8String(detail::posixErrorText(code_));
  if (localizedDescription()->containsString(text)) return nullptr;
  return text;
}

Ref<NSString> NSError::localizedRecoverySuggestion() const {
  return as<NSString>(infoForKey(NSLocalizedRecoverySuggestionErrorKey));
}

Ref<NSArray> NSError::localizedRecoveryOptions() const {
  return as<NSArray>(infoForKey(NSLocalizedRecoveryOptionsErrorKey));
}

Ref<NSObject> NSError::recoveryAttempter() const { return infoForKey(NSRecoveryAttempterErrorKey); }

Ref<NSString> NSError::description() const {
  return NSString::stringWithFormat("%@ error %d: %@"_ns, domain_, code_, localizedDescription());
}

bool NSError::isEqual(NSObject* other) const {
  auto* error = as<NSError>(other);
  return error != nullptr && code_ == error->code_ && equal(domain_, error->domain_) &&
         equal(userInfo(), error->userInfo());
}

std::size_t NSError::hash() const {
  const std::size_t ofDomain = domain_ ? domain_->hash() : 0;
  return ofDomain * 31 + static_cast<std::uint32_t>(code_);
}

Ref<NSObject> NSError::copy() const { return Ref<NSObject>(const_cast<NSError*>(this)); }

void NSError::describe(ClassDescription<NSError>& is) {
  using Self = NSError;
  is.named("NSError")
      .classMethod<&Self::errorWithDomain_code_userInfo>("errorWithDomain:code:userInfo:")
      .initializer<&Self::initWithDomain_code_userInfo>("initWithDomain:code:userInfo:")
      .method<&Self::domain>("domain")
      .method<&Self::code>("code")
      .method<&Self::userInfo>("userInfo")
      .method<&Self::localizedDescription>("localizedDescription")
      .method<&Self::localizedFailureReason>("localizedFailureReason")
      .method<&Self::localizedRecoverySuggestion>("localizedRecoverySuggestion")
      .method<&Self::localizedRecoveryOptions>("localizedRecoveryOptions")
      .method<&Self::recoveryAttempter>("recoveryAttempter");
}

namespace detail {

std::string posixErrorText(int number) {
  if (const locale_t locale = userLocale()) return ::strerror_l(number, locale);
  char buffer[256] = "";
  return ::strerror_r(number, buffer, sizeof buffer);
}

Ref<NSError> posixError(int number, std::string_view operation, NSString* path) {
  std::string text(operation);
  if (path != nullptr) text += " " + path->UTF8String();
  text += ": " + posixErrorText(number);
  Ref<NSString> message = NSString::stringWithUTF8String(text);
  return make<NSError>(NSPOSIXErrorDomain, number,
                       NSDictionary::dictionaryWithObjectsAndKeys(
                           message, NSLocalizedDescriptionKey, path, NSFilePathErrorKey));
}

}  // namespace detail
}  // namespace qz
