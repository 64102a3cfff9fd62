#include "Platform/Values/NSError.h"

#include <string.h>

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/NSDictionary.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Values/detail/PosixError.h"

namespace qz {
namespace {

Ref<NSDictionary> kept(NSDictionary* userInfo) {
  if (userInfo == nullptr) return NSDictionary::dictionary();
  return as<NSDictionary>(userInfo->copy());
}

}  // namespace

NSError::NSError(NSString* domain, std::int32_t code, NSDictionary* userInfo)
    : domain_(domain == nullptr ? nullptr : NSString::stringWithString(domain)),
      userInfo_(kept(userInfo)),
      code_(code) {}

NSError::~NSError() = default;

Ref<NSError> NSError::errorWithDomain_code_userInfo(NSString* domain, std::int32_t code,
                                                    NSDictionary* userInfo) {
  return make<NSError>(domain, code, userInfo);
}

Ref<NSError> NSError::initWithDomain_code_userInfo(NSString* domain, std::int32_t code,
                                                   NSDictionary* userInfo) {
  return make<NSError>(domain, code, userInfo);
}

Ref<NSDictionary> NSError::userInfo() const { return userInfo_; }

Ref<NSObject> NSError::infoForKey(NSString* key) const { return userInfo_->objectForKey(key); }

Ref<NSString> NSError::localizedDescription() const {
  if (auto text = as<NSString>(infoForKey(NSLocalizedDescriptionKey))) return text;
  if (equal(domain_, NSPOSIXErrorDomain))
    return NSString::stringWithUTF8String(detail::posixErrorText(code_));
  return NSString::stringWithFormat("The operation could not be completed. (%@ error %d.)"_ns,
                                    domain_, code_);
}

Ref<NSString> NSError::localizedFailureReason() const {
  return as<NSString>(infoForKey(NSLocalizedFailureReasonErrorKey));
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
         equal(userInfo_, error->userInfo_);
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
