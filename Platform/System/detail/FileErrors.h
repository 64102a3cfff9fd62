/// @file
/// Private: what failed, for people.
#pragma once

#include "Platform/Values/NSError.h"
#include "Platform/Values/NSString.h"

namespace qz::detail {

/// "/etc/x: Permission denied"
Ref<NSString> failureText(NSString* path, int number);

/// An Error with this text in NSPOSIXErrorDomain, with the path under NSFilePathErrorKey. Neither
/// changes `errno`.
Ref<NSError> fileError(NSString* path, int number);

/// Puts it in the place given, which may be null, and sets `errno`.
void putError(Ref<NSError>* place, NSString* path, int number);

}  // namespace qz::detail
