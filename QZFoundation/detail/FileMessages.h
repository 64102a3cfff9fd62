/// @file
/// Private: Errors of file operations, and such as are told in other words.
#pragma once

#include "Platform/Collections/NSDictionary.h"
#include "Platform/Values/NSError.h"
#include "QZFoundation/NSError-QZFoundation.h"
#include "QZFoundation/detail/LibraryBundle.h"

namespace qz::detail {

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
