/// @file
/// Errors: failures that the outside world causes, as values.
#pragma once

#include <atomic>
#include <cstdint>
#include <system_error>

#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSString.h"

#pragma GCC visibility push(default)

namespace qz {

class NSArray;
class NSDictionary;

/// What went wrong: a domain, a code that means something within it, and a Dictionary with texts
/// for people and whatever else helps. Breaches of a contract are an NSException instead.
///
///     auto error = NSError::errorWithDomain_code_userInfo(
///         NSPOSIXErrorDomain, ENOENT,
///         NSDictionary::dictionaryWithObject_forKey(text, NSLocalizedDescriptionKey));
///     log(error->localizedDescription());
///
/// Immutable; may be read from any number of threads.
class NSError : public Derives<NSError, NSObject> {
 public:
  static void describe(ClassDescription<NSError>& is);

  /// `domain` may be nil, which an application without an identifier has; it reads as nil. Keeps a
  /// copy of `userInfo`; nil counts as empty.
  NSError(NSString* domain, std::int32_t code, NSDictionary* userInfo);

  /// The user information is a description alone, or nothing where it is nil.
  NSError(NSString* domain, std::int32_t code, NSString* description);
  NSError(NSString* domain, std::int32_t code, std::nullptr_t)
      : NSError(domain, code, static_cast<NSString*>(nullptr)) {}
  ~NSError() override;

  /// New ones, as the constructors make them.
  static Ref<NSError> errorWithDomain_code_userInfo(NSString* domain, std::int32_t code,
                                                    NSDictionary* userInfo);
  static Ref<NSError> initWithDomain_code_userInfo(NSString* domain, std::int32_t code,
                                                   NSDictionary* userInfo);
  static Ref<NSError> errorWithDomain_code_description(NSString* domain, std::int32_t code,
                                                       NSString* description);

  /// What a function of the C++ library reports: in the POSIX domain for the generic and the
  /// system's category, else in a domain with the category's name, described by its message. Nil
  /// for a code that is no error.
  static Ref<NSError> errorWithErrorCode(const std::error_code& error);

  /// For the C++ library: in the system's category for the POSIX domain, so that it compares with
  /// `std::errc`; else in a category with the domain's name, always the same one.
  /// `errorWithErrorCode` leads back to domain and code.
  std::error_code errorCode() const;

  /// The domain, nil when it was made without one; and the code, which means something there only.
  Ref<NSString> domain() const { return domain_; }
  std::int32_t code() const noexcept { return code_; }

  /// Never nil.
  Ref<NSDictionary> userInfo() const;

  /// The String under NSLocalizedDescriptionKey. Without one: in the POSIX domain what the system
  /// says of the code, in the language of the environment (`LANG`), else "The operation could not
  /// be completed. (DOMAIN error CODE.)". Never nil.
  virtual Ref<NSString> localizedDescription() const;

  /// What stands under NSLocalizedFailureReasonErrorKey. Without it: in the POSIX domain what the
  /// system says of the code, unless the description says so already; else nil.
  Ref<NSString> localizedFailureReason() const;

  /// What stands under NSLocalizedRecoverySuggestionErrorKey and NSLocalizedRecoveryOptionsErrorKey
  /// (an Array of Strings); nil when there is none, or an Object of another class.
  Ref<NSString> localizedRecoverySuggestion() const;
  Ref<NSArray> localizedRecoveryOptions() const;

  /// What stands under NSRecoveryAttempterErrorKey: the Object that can try to mend what went
  /// wrong. Nil when there is none.
  virtual Ref<NSObject> recoveryAttempter() const;

  /// "NSPOSIXErrorDomain error 2: No such file or directory"
  Ref<NSString> description() const override;

  /// The same domain, code and user information.
  bool isEqual(NSObject* other) const override;
  std::size_t hash() const override;

  /// This very Error.
  Ref<NSObject> copy() const override;

 private:
  Ref<NSObject> infoForKey(NSString* key) const;

  Ref<NSString> domain_;
  // Most Errors are made of a description, read, and thrown away. Their Dictionary is made, and
  // owned, when somebody asks for it.
  Ref<NSString> description_;
  mutable std::atomic<NSDictionary*> userInfo_{nullptr};
  std::int32_t code_;
};

// Domains; each one's value is its name.

/// Codes are those of `errno`.
inline NSString* const NSPOSIXErrorDomain = detail::literal<"NSPOSIXErrorDomain">();
/// Codes are 32-bit status values.
inline NSString* const NSOSStatusErrorDomain = detail::literal<"NSOSStatusErrorDomain">();
/// Codes of this library.
inline NSString* const NSCocoaErrorDomain = detail::literal<"NSCocoaErrorDomain">();

// Keys of the user information; each one's value is its name.

/// A sentence that says what went wrong.
inline NSString* const NSLocalizedDescriptionKey = detail::literal<"NSLocalizedDescriptionKey">();
/// A sentence that says why.
inline NSString* const NSLocalizedFailureReasonErrorKey =
    detail::literal<"NSLocalizedFailureReasonErrorKey">();
/// A sentence that says what the user may do about it.
inline NSString* const NSLocalizedRecoverySuggestionErrorKey =
    detail::literal<"NSLocalizedRecoverySuggestionErrorKey">();
/// An Array with the titles of the buttons to offer.
inline NSString* const NSLocalizedRecoveryOptionsErrorKey =
    detail::literal<"NSLocalizedRecoveryOptionsErrorKey">();
/// The Object that carries out what the user chose.
inline NSString* const NSRecoveryAttempterErrorKey =
    detail::literal<"NSRecoveryAttempterErrorKey">();
/// The Error that caused this one.
inline NSString* const NSUnderlyingErrorKey = detail::literal<"NSUnderlyingErrorKey">();
/// The path, URL or text encoding (a Number) concerned.
inline NSString* const NSFilePathErrorKey = detail::literal<"NSFilePathErrorKey">();
inline NSString* const NSURLErrorKey = detail::literal<"NSURLErrorKey">();
inline NSString* const NSStringEncodingErrorKey = detail::literal<"NSStringEncodingErrorKey">();

}  // namespace qz

#pragma GCC visibility pop
