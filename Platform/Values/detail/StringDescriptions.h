/// @file
/// Private: what each source file of NSString enters into the class.
#pragma once

#include "Platform/Values/NSString.h"

namespace qz::detail {

void describeSearching(ClassDescription<NSString>& is);
void describeParts(ClassDescription<NSString>& is);
void describeLines(ClassDescription<NSString>& is);
void describeEncodings(ClassDescription<NSString>& is);
void describePaths(ClassDescription<NSString>& is);
void describePercentEscapes(ClassDescription<NSString>& is);

/// What `boolValue` answers unless a library replaces it.
bool readTruth(NSString* string);

}  // namespace qz::detail
