#include "Platform/System/detail/FileErrors.h"

#include <cerrno>

#include "Platform/Collections/NSDictionary.h"
#include "Platform/Values/detail/PosixError.h"

namespace qz::detail {

Ref<NSString> failureText(NSString* path, int number) {
  Ref<NSString> reason = NSString::stringWithUTF8String(posixErrorText(number));
  return NSString::stringWithFormat("%@: %@"_ns, path == nullptr ? ""_ns : path, reason);
}

Ref<NSError> fileError(NSString* path, int number) {
  return make<NSError>(
      NSPOSIXErrorDomain, number,
      NSDictionary::dictionaryWithObjectsAndKeys(
          failureText(path, number), NSLocalizedDescriptionKey, path, NSFilePathErrorKey));
}

void putError(Ref<NSError>* place, NSString* path, int number) {
  if (place != nullptr) *place = fileError(path, number);
  errno = number;
}

}  // namespace qz::detail
