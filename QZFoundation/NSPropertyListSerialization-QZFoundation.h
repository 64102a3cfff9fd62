/// @file
/// Property lists in files, with Errors.
#pragma once

#include <cstdint>

#include "Platform/System/NSPropertyListSerialization.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

class NSDictionary;
class NSError;

// None of these raises. Errors of reading and writing the file are the platform's, as they are;
// those of the list itself are the application's (code -1), their texts looked up in the main
// bundle's table. Any thread.

/// The property list in a file, in whatever format; nil when it cannot be read. `error`, which may
/// be null, becomes nil on success. `mutability` of NSPropertyListMutabilityOptions; `format`,
/// which may be null too, says what was found.
Ref<NSObject> propertyListFromFile_mutabilityOptions_format_error(NSString* path,
                                                                  std::uint32_t mutability,
                                                                  NSPropertyListFormat* format,
                                                                  Ref<NSError>* error);

/// Writes the list, all or nothing. Nil on success.
[[nodiscard]] Ref<NSError> writePropertyList_toFile_format(NSObject* propertyList, NSString* path,
                                                           NSPropertyListFormat format);

/// Writes the Dictionary, which must not be nil, in XML, all or nothing if `atomically`. Whether it
/// was written; `error`, which may be null, becomes nil when it was.
bool writeToFile_atomically_error(NSDictionary* self, NSString* path, bool atomically,
                                  Ref<NSError>* error);

}  // namespace qz

#pragma GCC visibility pop
