/// @file
/// Private: Arrays and Dictionaries as files.
#pragma once

namespace qz::detail {

/// Enters the operations of Arrays and Dictionaries that read and write property lists: their own
/// files lie below the serialisation.
void describePropertyListFiles();

}  // namespace qz::detail
