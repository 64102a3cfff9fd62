/// @file
/// User defaults registered from files. The receiver must not be nil.
#pragma once

#include "Platform/System/NSBundle.h"
#include "Platform/System/NSUserDefaults.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

/// Registers the Dictionary in the main bundle's, in any bundle's resource "Defaults.plist", or in
/// a property-list file, as values to fall back to. False, and nothing is registered, when there is
/// no such resource or file, when it cannot be read, and when it is no Dictionary.
bool loadDefaults(NSUserDefaults* self);
bool loadDefaultsFromBundle(NSUserDefaults* self, NSBundle* bundle);
bool loadDefaultsFromFile(NSUserDefaults* self, NSString* path);

}  // namespace qz

#pragma GCC visibility pop
