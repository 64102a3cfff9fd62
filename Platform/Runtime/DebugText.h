/// @file
/// What a debugger shows of an Object.
#pragma once

#pragma GCC visibility push(default)

namespace qz {
class NSObject;
}

/// "(NSArray) (a, b)": the class, and the description in UTF-8; "nil" for nil. Valid until the next
/// call in the same thread. Never raises: where describing does, the answer says so.
///
/// For a stopped program: the pretty printers of `resources/gdb` call it, and so can any other
/// debugger (`call QZDebugText(object)`). An Object that is being built or destroyed has no
/// description to rely on.
extern "C" const char* QZDebugText(const qz::NSObject* object) noexcept;

#pragma GCC visibility pop
