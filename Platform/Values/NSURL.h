/// @file
/// URLs, and the conversions between them, POSIX paths and classic paths.
#pragma once

#include <cstdint>
#include <string>

#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSString.h"
#include "Platform/Values/detail/UrlSyntax.h"

#pragma GCC visibility push(default)

namespace qz {

class NSNumber;

/// A URL after RFC 3986: whole ("http://host/a?b#c"), or relative to another.
///
///     Ref<NSURL> page = NSURL::URLWithString("../img/x.png"_ns, base);
///     Ref<NSURL> file = NSURL::fileURLWithPath("/tmp/a b"_ns);   // "file:///tmp/a%20b"
///     Ref<NSString> path = file->path();                         // "/tmp/a b"
///
/// Everything but the text, the base and the relative path is told of the absolute URL. Immutable;
/// any thread.
class NSURL final : public Derives<NSURL, NSObject> {
 public:
  static void describe(ClassDescription<NSURL>& is);

  /// The URL that `text` is, taken relative to `base`, which may be nil. Nil for nil, for text that
  /// is not well formed (a blank, a letter that is not ASCII, a "%" without two digits; see
  /// `stringByAddingPercentEncoding`), for a port above 65535, and for an empty text without base.
  static Ref<NSURL> URLWithString(NSString* text);
  static Ref<NSURL> URLWithString_relativeToURL(NSString* text, NSURL* base);
  static Ref<NSURL> initWithString(NSString* text);
  static Ref<NSURL> initWithString_relativeToURL(NSString* text, NSURL* base);

  /// The file or directory at a path: a directory when that is said, and otherwise when the path
  /// ends with a slash. Its URL ends with one. A relative path is taken from the current directory
  /// of this moment. Nil for nil, the empty path, and a path that `fileSystemRepresentation`
  /// refuses. Neither the file nor "~" is looked at.
  static Ref<NSURL> fileURLWithPath(NSString* path);
  static Ref<NSURL> fileURLWithPath_isDirectory(NSString* path, bool isDirectory);
  static Ref<NSURL> initFileURLWithPath(NSString* path);
  static Ref<NSURL> initFileURLWithPath_isDirectory(NSString* path, bool isDirectory);

  // Texts -----------------------------------------------------------------------------------------

  /// The URL with all that it takes from the base, as RFC 3986 resolves it.
  Ref<NSString> absoluteString() const { return absolute_; }

  /// The text it was made of, and what that is relative to: nil for a URL without base.
  Ref<NSString> relativeString() const { return text_; }
  Ref<NSURL> baseURL() const { return base_; }

  /// The URL of `absoluteString`: this one when it has no base.
  Ref<NSURL> absoluteURL() const;

  // Components ------------------------------------------------------------------------------------

  /// Nil where the URL has no such component, the empty String where it has one that is empty. Of
  /// user, password, host and path the escapes are replaced; a byte that is not UTF-8 becomes what
  /// it is in a path (see `stringWithFileSystemRepresentation`). Query and fragment stay as they
  /// stand, because their parts cannot be told apart any more once escapes are replaced.
  Ref<NSString> scheme() const;
  Ref<NSString> user() const;
  Ref<NSString> password() const;
  Ref<NSString> host() const;  ///< An address of version 6 without its brackets.
  Ref<NSNumber> port() const;  ///< Nil for an empty one as well.
  Ref<NSString> query() const;
  Ref<NSString> fragment() const;

  /// The path without slashes at its end, never nil: "" where there is none. `relativePath` is the
  /// path of `relativeString`.
  Ref<NSString> path() const;
  Ref<NSString> relativePath() const;

  /// Of the path's components, told apart before escapes are replaced: "a%2Fb" is one. The first
  /// is "/" when the path begins with a slash.
  Ref<NSArray> pathComponents() const;
  Ref<NSString> lastPathComponent() const;
  Ref<NSString> pathExtension() const;

  /// Whether the scheme is "file", and whether the path ends with a slash.
  bool isFileURL() const;
  bool hasDirectoryPath() const;

  /// The bytes of the path for the system. Raises NSInvalidArgumentException for a zero ("%00").
  std::string fileSystemRepresentation() const;

  // Other URLs ------------------------------------------------------------------------------------

  /// With a component, escaped, at the end of the path; a slash at its end stays, and so do query
  /// and fragment. Raises NSInvalidArgumentException for nil and for a lone surrogate that stands
  /// for no byte.
  Ref<NSURL> URLByAppendingPathComponent(NSString* component) const;

  /// With the path up to the last component, ending with a slash; the same URL when there is none.
  Ref<NSURL> URLByDeletingLastPathComponent() const;

  /// Normalised: absolute, without "." and ".." components, scheme and host in lower case, escapes
  /// in upper case and none of what need not be escaped.
  Ref<NSURL> standardizedURL() const;

  // Object ----------------------------------------------------------------------------------------

  /// The same `absoluteString`, unit by unit.
  bool isEqual(NSObject* other) const override;
  std::size_t hash() const override;
  Ref<NSObject> copy() const override;
  Ref<NSString> description() const override;

 private:
  NSURL(NSString* text, NSURL* base, NSString* absolute, const detail::UrlParts& parts);

  static Ref<NSURL> whole(std::u16string_view text);

  Ref<NSString> text_;
  Ref<NSURL> base_;
  Ref<NSString> absolute_;
  detail::UrlParts parts_;  // into `absolute_`
};

/// How a path is written: "/usr/lib", or "Root:usr:lib" as on classic systems.
///
/// A classic path begins with the name of a volume, and with a colon when it is relative. The
/// start-up volume, `NSStartupVolumeName()`, is "/"; any other is a directory in "/Volumes". Names
/// are separated by colons; "::" goes up one directory, as "/../" does. A ":" in a file's name is a
/// "/" in its classic name and the other way round. Every POSIX path comes back from its classic
/// form as it was, but for extra slashes and "." components.
enum class URLPathStyle : std::int32_t { POSIX = 0, HFS = 1 };

/// The file URL of a path. Nil for nil, a path that is empty or has a zero, a classic path with a
/// name "." or "..", and another style.
Ref<NSURL> CFURLCreateWithFileSystemPath(NSString* path, URLPathStyle style, bool isDirectory);

/// The URL's own path (`relativePath`) in that style. Nil for nil, another style, and where the
/// path cannot be written in it.
Ref<NSString> CFURLCopyFileSystemPath(NSURL* url, URLPathStyle style);

/// `NSURL::URLWithString_relativeToURL`.
Ref<NSURL> CFURLCreateWithString(NSString* text, NSURL* base);

/// The text with percent escapes replaced, but for those of the characters listed: none listed ("")
/// means that all are replaced, nil that none is. Nil for nil, for an escape that is not well
/// formed, and for bytes that are not UTF-8.
Ref<NSString> CFURLCreateStringByReplacingPercentEscapes(NSString* text,
                                                         NSString* charactersToLeaveEscaped);

}  // namespace qz

#pragma GCC visibility pop
