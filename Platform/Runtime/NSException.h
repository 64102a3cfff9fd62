/// @file
/// Exceptions: breaches of a contract. What the outside world causes is an NSError instead.
#pragma once

#include <exception>
#include <memory>
#include <string>

#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSString.h"

#pragma GCC visibility push(default)

namespace qz {

class NSDictionary;

/// An exception as an Object: a name to test for, a reason to read, and user information.
///
///     try {
///       array->objectAtIndex(7);
///     } catch (const Raised& raised) {
///       if (raised->name()->isEqual(NSRangeException)) log(raised->reason());
///     }
///
/// What flies is a `Raised`, which keeps the NSException alive and is a `std::exception` too.
class NSException : public Derives<NSException, NSObject> {
 public:
  static void describe(ClassDescription<NSException>& is);

  /// `reason` and `userInfo` may be nil; a nil name reads as NSGenericException.
  NSException(NSString* name, NSString* reason, NSDictionary* userInfo = nullptr);
  ~NSException() override;
  static Ref<NSException> exceptionWithName_reason_userInfo(NSString* name, NSString* reason,
                                                            NSDictionary* userInfo);

  /// Makes one and raises it.
  [[noreturn]] static void raise_reason(NSString* name, NSString* reason);

  /// As it was made. The name is never nil, the others may be.
  Ref<NSString> name() const;
  Ref<NSString> reason() const;
  Ref<NSDictionary> userInfo() const;

  /// The reason, or the name when there is none.
  Ref<NSString> description() const override;

  /// Throws a `Raised` holding this exception.
  [[noreturn]] void raise();

  bool isEqual(NSObject* other) const override;
  std::size_t hash() const override;

 private:
  Ref<NSString> name_;
  Ref<NSString> reason_;
  Ref<NSDictionary> userInfo_;
};

/// What `NSException::raise` throws.
class Raised : public std::exception {
 public:
  /// Keeps `exception`; so does each copy.
  explicit Raised(NSException* exception);
  ~Raised() override;
  Raised(const Raised&) noexcept;
  Raised& operator=(const Raised&) noexcept;

  /// "NSRangeException: reason", UTF-8.
  const char* what() const noexcept override;

  /// The exception, never nil: borrowed from this Object, and with an owner more.
  NSException* operator->() const noexcept { return exception_.get(); }
  Ref<NSException> exception() const noexcept { return exception_; }

  /// Whether the exception's name is `name`.
  bool is(NSString* name) const;

 private:
  Ref<NSException> exception_;
  std::shared_ptr<const std::string> what_;
};

// The standard names; each one's value is its name.

/// Unspecific.
inline NSString* const NSGenericException = detail::literal<"NSGenericException">();
/// An index or a Range out of bounds.
inline NSString* const NSRangeException = detail::literal<"NSRangeException">();
/// An argument that the operation cannot take, and a message that the receiver does not know.
inline NSString* const NSInvalidArgumentException = detail::literal<"NSInvalidArgumentException">();
/// A failed assertion.
inline NSString* const NSInternalInconsistencyException =
    detail::literal<"NSInternalInconsistencyException">();
/// A key that the Object does not have.
inline NSString* const NSUndefinedKeyException = detail::literal<"NSUndefinedKeyException">();
/// More memory asked for than there can be.
inline NSString* const NSMallocException = detail::literal<"NSMallocException">();

namespace detail {

/// Raises `name` with a reason written in UTF-8.
[[noreturn]] void raise(NSString* name, const std::string& reason);

/// Raises NSRangeException: "<operation>: index 7 beyond count 3".
[[noreturn]] void raiseIndex(const char* operation, std::uint64_t index, std::uint64_t count);

/// Raises NSInvalidArgumentException, "<operation>: <what> is nil", when `argument` is nil.
void requireArgument(const char* operation, const char* what, const void* argument);

}  // namespace detail

}  // namespace qz

#pragma GCC visibility pop
