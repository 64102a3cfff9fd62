/// @file
/// Short makers of Errors, and what callers ask an Error.
///
///     if (auto error = errnoError_description(::unlink(path), message)) return error;
#pragma once

#include <cstdint>

#include "Platform/Values/NSError.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

// Each keeps the description under NSLocalizedDescriptionKey; a nil description leaves the user
// information empty. None raises. Any thread.

/// In NSPOSIXErrorDomain; nil for code 0, which means success.
Ref<NSError> POSIXError_description(std::int32_t code, NSString* description);

/// Wraps a system call: for the status -1 the POSIX Error of the calling thread's `errno` (nil when
/// that is 0), nil for any other status.
Ref<NSError> errnoError_description(std::int32_t status, NSString* description);

/// In NSOSStatusErrorDomain; nil for status 0.
Ref<NSError> carbonError_description(std::int32_t status, NSString* description);

/// In NSCocoaErrorDomain; nil for code 0.
Ref<NSError> cocoaError_description(std::int32_t code, NSString* description);

/// In the domain named like the main bundle's identifier, which may be nil. Never nil.
Ref<NSError> appError_description(std::int32_t code, NSString* description);

/// The application's Error with code -1. Never nil.
Ref<NSError> errorWithDescription(NSString* description);

/// Also keeps the suggestion, under NSLocalizedRecoverySuggestionErrorKey; a nil description drops
/// it too. Never nil; the domain may be.
Ref<NSError> errorWithDomain_code_description_recoverySuggestion(NSString* domain,
                                                                 std::int32_t code,
                                                                 NSString* description,
                                                                 NSString* suggestion);

/// Whether the user stopped the work: status -128, or code 3072 in NSCocoaErrorDomain. False for
/// nil.
bool isUserCancelledError(NSError* self);

/// The Error that caused this one; nil when there is none.
Ref<NSError> underlyingError(NSError* self);

/// The recovery attempter of the Error that caused this one; nil when there is none.
Ref<NSObject> underlyingAttempter(NSError* self);

/// Whether the Error itself has a recovery attempter. False for nil.
bool canRecover(NSError* self);

}  // namespace qz

#pragma GCC visibility pop
