#include "QZFoundation/NSError-QZFoundation.h"

#include <cerrno>

#include "Platform/Collections/NSDictionary.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/System/NSBundle.h"

namespace qz {
namespace {

constexpr std::int32_t cancelledStatus = -128;
constexpr std::int32_t cancelledCode = 3072;

Ref<NSError> error(NSString* domain, std::int32_t code, NSString* description) {
  return make<NSError>(domain, code, description);
}

Ref<NSError> errorUnlessZero(NSString* domain, std::int32_t code, NSString* description) {
  return code == 0 ? nullptr : error(domain, code, description);
}

}  // namespace

Ref<NSError> POSIXError_description(std::int32_t code, NSString* description) {
  return errorUnlessZero(NSPOSIXErrorDomain, code, description);
}

Ref<NSError> errnoError_description(std::int32_t status, NSString* description) {
  return status == -1 ? POSIXError_description(errno, description) : nullptr;
}

Ref<NSError> carbonError_description(std::int32_t status, NSString* description) {
  return errorUnlessZero(NSOSStatusErrorDomain, status, description);
}

Ref<NSError> cocoaError_description(std::int32_t code, NSString* description) {
  return errorUnlessZero(NSCocoaErrorDomain, code, description);
}

Ref<NSError> appError_description(std::int32_t code, NSString* description) {
  return error(NSBundle::mainBundle()->bundleIdentifier(), code, description);
}

Ref<NSError> errorWithDescription(NSString* description) {
  return appError_description(-1, description);
}

Ref<NSError> errorWithDomain_code_description_recoverySuggestion(NSString* domain,
                                                                 std::int32_t code,
                                                                 NSString* description,
                                                                 NSString* suggestion) {
  return make<NSError>(
      domain, code,
      NSDictionary::dictionaryWithObjectsAndKeys(description, NSLocalizedDescriptionKey, suggestion,
                                                 NSLocalizedRecoverySuggestionErrorKey));
}

bool isUserCancelledError(NSError* self) {
  if (self == nullptr) return false;
  const Ref<NSString> domain = self->domain();
  return (self->code() == cancelledStatus && equal(domain, NSOSStatusErrorDomain)) ||
         (self->code() == cancelledCode && equal(domain, NSCocoaErrorDomain));
}

Ref<NSError> underlyingError(NSError* self) {
  if (self == nullptr) return nullptr;
  return as<NSError>(self->userInfo()->objectForKey(NSUnderlyingErrorKey));
}

Ref<NSObject> underlyingAttempter(NSError* self) {
  Ref<NSError> underlying = underlyingError(self);
  return underlying ? underlying->recoveryAttempter() : nullptr;
}

bool canRecover(NSError* self) { return self != nullptr && self->recoveryAttempter() != nullptr; }

void detail::registerNSErrorQZFoundation() {
  extend<NSError>("QZFoundation")
      .classMethod<&POSIXError_description>("POSIXError:description:")
      .classMethod<&errnoError_description>("errnoError:description:")
      .classMethod<&carbonError_description>("carbonError:description:")
      .classMethod<&cocoaError_description>("cocoaError:description:")
      .classMethod<&appError_description>("appError:description:")
      .classMethod<&errorWithDescription>("errorWithDescription:")
      .classMethod<&errorWithDomain_code_description_recoverySuggestion>(
          "errorWithDomain:code:description:recoverySuggestion:")
      .method<&isUserCancelledError>("isUserCancelledError")
      .method<&underlyingError>("underlyingError")
      .method<&underlyingAttempter>("underlyingAttempter")
      .method<&canRecover>("canRecover");
}

}  // namespace qz
