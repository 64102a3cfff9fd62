#include "Platform/Runtime/NSException.h"

#include "Platform/Collections/NSDictionary.h"
#include "Platform/Runtime/Describe.h"

namespace qz {

NSException::NSException(NSString* name, NSString* reason, NSDictionary* userInfo)
    : name_(name != nullptr ? name : NSGenericException), reason_(reason), userInfo_(userInfo) {}

NSException::~NSException() = default;

Ref<NSException> NSException::exceptionWithName_reason_userInfo(NSString* name, NSString* reason,
                                                                NSDictionary* userInfo) {
  return make<NSException>(name, reason, userInfo);
}

void NSException::raise_reason(NSString* name, NSString* reason) {
  make<NSException>(name, reason)->raise();
}

Ref<NSString> NSException::name() const { return name_; }
Ref<NSString> NSException::reason() const { return reason_; }
Ref<NSDictionary> NSException::userInfo() const { return userInfo_; }
Ref<NSString> NSException::description() const { return reason_ ? reason_ : name_; }

void NSException::raise() { throw Raised(this); }

bool NSException::isEqual(NSObject* other) const {
  auto* exception = as<NSException>(other);
  return exception != nullptr && equal(name_, exception->name_) &&
         equal(reason_, exception->reason_) && equal(userInfo_, exception->userInfo_);
}

std::size_t NSException::hash() const { return name_->hash(); }

void NSException::describe(ClassDescription<NSException>& is) {
  is.named("NSException")
      .classMethod<&NSException::exceptionWithName_reason_userInfo>(
          "exceptionWithName:reason:userInfo:")
      .method<&NSException::name>("name")
      .method<&NSException::reason>("reason")
      .method<&NSException::userInfo>("userInfo")
      .method<&NSException::raise>("raise");
}

Raised::Raised(NSException* exception)
    : exception_(exception),
      what_(std::make_shared<const std::string>(
          exception->name()->UTF8String() +
          (exception->reason() ? ": " + exception->reason()->UTF8String() : std::string()))) {}

Raised::~Raised() = default;
Raised::Raised(const Raised&) noexcept = default;
Raised& Raised::operator=(const Raised&) noexcept = default;

const char* Raised::what() const noexcept { return what_->c_str(); }

bool Raised::is(NSString* name) const { return exception_->name()->isEqualToString(name); }

namespace detail {

void raise(NSString* name, const std::string& reason) {
  NSException::raise_reason(name, NSString::stringWithUTF8String(reason));
}

void raiseIndex(const char* operation, std::uint64_t index, std::uint64_t count) {
  raise(NSRangeException, std::string(operation) + ": index " + std::to_string(index) +
                              " beyond count " + std::to_string(count));
}

void requireArgument(const char* operation, const char* what, const void* argument) {
  if (argument == nullptr)
    raise(NSInvalidArgumentException, std::string(operation) + ": " + what + " is nil");
}

}  // namespace detail
}  // namespace qz
