/// @file
/// Private: failed system calls as Errors.
#pragma once

#include <string>
#include <string_view>

#include "Platform/Runtime/Ref.h"

#pragma GCC visibility push(default)
namespace qz {
class NSError;
class NSString;
}  // namespace qz
#pragma GCC visibility pop

namespace qz::detail {

/// What the system says of an `errno`, in the language of the environment (`LANG`, `LC_MESSAGES`)
/// where strerror(3) has it.
std::string posixErrorText(int number);

/// The Error of a failed call, in NSPOSIXErrorDomain: "open /etc/x: Permission denied", with the
/// path under NSFilePathErrorKey. `path` may be nil. Pass `errno` as it was right after the call:
///
///     if (::unlink(bytes) != 0) return posixError(errno, "remove", path);
Ref<NSError> posixError(int number, std::string_view operation, NSString* path);

}  // namespace qz::detail
