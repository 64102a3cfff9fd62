/// @file
/// Exported functions: messages in the user's language, standard directories, the system's version,
/// geometry and ranges, operations replaced at run time.
///
///     Ref<NSString> message =
///         QZLocalizedString("%d files copied"_ns, "Copy progress message"_ns, count);
#pragma once

#include "Platform/Runtime/Class.h"
#include "Platform/System/NSBundle.h"
#include "Platform/System/NSSearchPath.h"
#include "Platform/Values/NSGeometry.h"
#include "Platform/Values/NSRange.h"
#include "Platform/Values/NSString.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

class QZVersionNumber;

// Messages ----------------------------------------------------------------------------------------

namespace detail {
/// The text for `key`, or `key` itself when there is none; also for a nil bundle.
Ref<NSString> localizedFormat(NSString* key, NSString* table, NSBundle* bundle);
}  // namespace detail

/// Looks `key` up in a bundle's string table and uses the text found, or `key` itself when there is
/// none, as a format for `arguments`. A nil table is the default one; in a nil bundle there is no
/// text. A nil key gives the empty String. `comment` tells translators what the message is for and
/// does nothing. Any thread.
template <FormatValue... Args>
Ref<NSString> QZLocalizedStringFromTableInBundle(NSString* key, NSString* table, NSBundle* bundle,
                                                 [[maybe_unused]] NSString* comment,
                                                 const Args&... arguments) {
  return NSString::stringWithFormat(detail::localizedFormat(key, table, bundle), arguments...);
}

/// The same in the main bundle's default table.
template <FormatValue... Args>
Ref<NSString> QZLocalizedString(NSString* key, NSString* comment, const Args&... arguments) {
  return QZLocalizedStringFromTableInBundle(key, nullptr, NSBundle::mainBundle(), comment,
                                            arguments...);
}

// Directories and the system ----------------------------------------------------------------------
// The application's name is its bundle's "CFBundleName", or else the process's.

/// "Application Support/NAME", relative: for QZSearchPathForDirectoriesInDomains.
Ref<NSString> QZApplicationSupportSubPath();

/// "Library/Caches/NAME" in the user's home directory, made with its parents unless something is
/// there. Answered whether or not that worked.
Ref<NSString> QZCacheDirectory();

/// NSSearchPathForDirectoriesInDomains, with `subPath` appended to each path unless it is nil.
Ref<NSArray> QZSearchPathForDirectoriesInDomains(NSSearchPathDirectory directory,
                                                 std::uint32_t domainMask, bool expandTilde,
                                                 NSString* subPath);

/// What "/usr/bin/sw_vers -productVersion" prints; on a system without that program, the VERSION_ID
/// of its release file (os-release(5)). Nil when neither says anything. Runs a program: keep the
/// answer.
Ref<QZVersionNumber> QZSystemVersionNumber();

/// Whether a debugger traces this process; false also when the system does not say.
bool QZProcessIsBeingTraced();

// Geometry and ranges -----------------------------------------------------------------------------

/// Whether `inner` lies within `outer`. Arithmetic is unsigned, with 32 bits: an empty range at the
/// very start of `outer` does not lie within it, one further inside does.
constexpr bool QZRangeContainsRange(NSRange outer, NSRange inner) noexcept {
  return inner.location - outer.location < outer.length &&
         inner.location + inner.length - 1 - outer.location < outer.length;
}

/// The middle of `rect`.
constexpr NSPoint QZCenterOfRect(const NSRect& rect) noexcept {
  return {rect.origin.x + rect.size.width * 0.5f, rect.origin.y + rect.size.height * 0.5f};
}

/// The greatest rectangle with the proportions of `size` that fits into `rect`: in the middle of
/// its width when it is relatively tall, and half its own height above the rectangle's origin when
/// it is relatively wide. Where proportions have no meaning (0 by 0), the rectangle has no width.
NSRect QZFitCenteredRect(NSSize size, const NSRect& rect) noexcept;

// Replacing operations ----------------------------------------------------------------------------
// For code that changes how a class of the platform behaves. Every later message to Objects of the
// class and of those below that have no implementation of their own sees the change, whoever sent
// it before. `implementationOf` and `callImplementation` (Platform/Runtime/Implementations.h) make
// such functions and call them.

/// Puts `implementation` in place of the one that Objects of the class have for `selector`, and
/// answers that one. Null, and nothing happens, when the class has no such operation, and for a nil
/// class. The types must be the same. Raises NSInvalidArgumentException for a null implementation.
detail::Imp QZReplaceMethodImplementation(Class* aClass, Selector selector,
                                          detail::Imp implementation);

/// The same with the implementation of another operation of the class, or of another class. Raise
/// NSInvalidArgumentException when there is no such operation, and when its types differ.
detail::Imp QZReplaceMethodImplementationWithSelector(Class* aClass, Selector selector,
                                                      Selector donorSelector);
detail::Imp QZReplaceMethodImplementationWithSelectorOnClass(Class* aClass, Selector selector,
                                                             Class* donorClass,
                                                             Selector donorSelector);

// The library's version ---------------------------------------------------------------------------

/// "@(#)PROGRAM:QZFoundation  PROJECT:Quillet-" and a line feed, for what(1).
extern const char QZFoundationVersionString[];

/// The version of the library that is linked: the major number, and the minor one as hundredths.
extern const double QZFoundationVersionNumber;

}  // namespace qz

#pragma GCC visibility pop
