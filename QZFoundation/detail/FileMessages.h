/// @file
/// Private: texts of file operations, and Errors that are told in other words.
#pragma once

#include <cerrno>

#include "Platform/Collections/NSDictionary.h"
#include "Platform/Values/NSError.h"
#include "QZFoundation/NSError-QZFoundation.h"
#include "QZFoundation/QZFunctions.h"
#include "QZFoundation/detail/LibraryBundle.h"

namespace qz::detail {

/// A message of the library, in the user's language. Leaves `errno` alone.
template <FormatValue... Args>
Ref<NSString> message(NSString* key, NSString* comment, const Args&... arguments) {
  const int kept = errno;
  auto text =
      QZLocalizedStringFromTableInBundle(key, nullptr, libraryBundle(), comment, arguments...);
  errno = kept;
  return text;
}

/// The Error of a directory that could not be listed, for the reason `number`.
inline Ref<NSError> unreadableDirectory(NSString* path, int number) {
  return POSIXError_description(number,
                                message("The directory %@ could not be read"_ns,
                                        "Error string given when iterating a directory"_ns, path));
}

/// What the Error has under NSLocalizedDescriptionKey.
inline Ref<NSObject> descriptionOf(const NSError* error) {
  return error->userInfo()->objectForKey(NSLocalizedDescriptionKey);
}

/// An Error of the same domain and code, with nothing but the text.
inline Ref<NSError> reworded(const NSError* error, NSString* text) {
  return make<NSError>(error->domain(), error->code(),
                       NSDictionary::dictionaryWithObject_forKey(text, NSLocalizedDescriptionKey));
}

}  // namespace qz::detail
