#include "Platform/Values/NSURL.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "Platform/Collections/NSArray.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Values/FileSystemPath.h"
#include "Platform/Values/NSNumber.h"
#include "Platform/Values/NSPathUtilities.h"
#include "Platform/Values/detail/ClassicPath.h"
#include "Platform/Values/detail/PathText.h"
#include "Platform/Values/detail/PercentEscapes.h"
#include "Platform/Values/detail/StringStorage.h"
#include "Platform/Values/detail/UnitKinds.h"

namespace qz {

using detail::UrlParts;

void NSURL::describe(ClassDescription<NSURL>& is) {
  is.named("NSURL")
      .classMethod<&NSURL::URLWithString>("URLWithString:")
      .classMethod<&NSURL::URLWithString_relativeToURL>("URLWithString:relativeToURL:")
      .initializer<&NSURL::initWithString>("initWithString:")
      .initializer<&NSURL::initWithString_relativeToURL>("initWithString:relativeToURL:")
      .classMethod<&NSURL::fileURLWithPath>("fileURLWithPath:")
      .classMethod<&NSURL::fileURLWithPath_isDirectory>("fileURLWithPath:isDirectory:")
      .initializer<&NSURL::initFileURLWithPath>("initFileURLWithPath:")
      .initializer<&NSURL::initFileURLWithPath_isDirectory>("initFileURLWithPath:isDirectory:")
      .method<&NSURL::absoluteString>("absoluteString")
      .method<&NSURL::relativeString>("relativeString")
      .method<&NSURL::baseURL>("baseURL")
      .method<&NSURL::absoluteURL>("absoluteURL")
      .method<&NSURL::scheme>("scheme")
      .method<&NSURL::user>("user")
      .method<&NSURL::password>("password")
      .method<&NSURL::host>("host")
      .method<&NSURL::port>("port")
      .method<&NSURL::query>("query")
      .method<&NSURL::fragment>("fragment")
      .method<&NSURL::path>("path")
      .method<&NSURL::relativePath>("relativePath")
      .method<&NSURL::pathComponents>("pathComponents")
      .method<&NSURL::lastPathComponent>("lastPathComponent")
      .method<&NSURL::pathExtension>("pathExtension")
      .method<&NSURL::isFileURL>("isFileURL")
      .method<&NSURL::hasDirectoryPath>("hasDirectoryPath")
      .method<&NSURL::fileSystemRepresentation>("fileSystemRepresentation")
      .method<&NSURL::URLByAppendingPathComponent>("URLByAppendingPathComponent:")
      .method<&NSURL::URLByDeletingLastPathComponent>("URLByDeletingLastPathComponent")
      .method<&NSURL::standardizedURL>("standardizedURL");
}

namespace {

Ref<NSString> plainText(std::u16string_view escaped) {
  return NSString::stringWithCharacters(detail::replaceEscapesInUrl(escaped));
}

Ref<NSString> plainOrNil(const std::optional<std::u16string_view>& escaped) {
  return escaped ? plainText(*escaped) : nullptr;
}

Ref<NSString> textOrNil(const std::optional<std::u16string_view>& part) {
  return part ? NSString::stringWithCharacters(*part) : nullptr;
}

std::u16string lowerCase(std::u16string_view text) {
  std::u16string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), &detail::toAsciiLower);
  return lower;
}

// Escapes in upper case, and none of what means itself everywhere.
std::u16string normalEscapes(std::u16string_view part) {
  std::u16string normal;
  for (std::size_t at = 0; at < part.size(); ++at) {
    const int byte = detail::escapedByte(part, at);
    if (byte < 0) {
      normal += part[at];
      continue;
    }
    const char character = static_cast<char>(byte);
    normal += detail::addEscapes({&character, 1}, detail::unreservedSet);
    at += 2;
  }
  return normal;
}

// A host's letters have no case, those of its escapes have.
std::u16string normalHost(std::u16string_view host) {
  return normalEscapes(lowerCase(normalEscapes(host)));
}

// The directory that relative paths start from; nil when it is gone.
Ref<NSURL> currentDirectory() {
  std::error_code error;
  const std::filesystem::path directory = std::filesystem::current_path(error);
  if (error) return nullptr;
  return NSURL::fileURLWithPath_isDirectory(stringWithFileSystemPath(directory), true);
}

}  // namespace

// Making ------------------------------------------------------------------------------------------

NSURL::NSURL(NSString* text, NSURL* base, NSString* absolute, const UrlParts& parts)
    : text_(text), base_(base), absolute_(absolute), parts_(parts) {}

Ref<NSURL> NSURL::URLWithString(NSString* text) {
  return URLWithString_relativeToURL(text, nullptr);
}

Ref<NSURL> NSURL::URLWithString_relativeToURL(NSString* text, NSURL* base) {
  if (text == nullptr || (text->length() == 0 && base == nullptr)) return nullptr;
  const Ref<NSString> own = NSString::stringWithString(text);
  const auto parts = detail::parseUrl(own->view());
  if (!parts) return nullptr;
  if (base == nullptr || parts->scheme)
    return Ref<NSURL>(new NSURL(own, nullptr, own, *parts), adopt);
  const auto absolute = NSString::stringWithCharacters(detail::resolveUrl(base->parts_, *parts));
  const auto resolved = detail::parseUrl(absolute->view());
  if (!resolved) return nullptr;
  return Ref<NSURL>(new NSURL(own, base, absolute, *resolved), adopt);
}

Ref<NSURL> NSURL::initWithString(NSString* text) { return URLWithString(text); }

Ref<NSURL> NSURL::initWithString_relativeToURL(NSString* text, NSURL* base) {
  return URLWithString_relativeToURL(text, base);
}

Ref<NSURL> NSURL::whole(std::u16string_view text) {
  return URLWithString(NSString::stringWithCharacters(text));
}

Ref<NSURL> NSURL::fileURLWithPath(NSString* path) {
  return fileURLWithPath_isDirectory(path, path != nullptr && path->view().ends_with(u'/'));
}

Ref<NSURL> NSURL::fileURLWithPath_isDirectory(NSString* path, bool isDirectory) {
  if (path == nullptr || path->length() == 0) return nullptr;
  const auto bytes = detail::bytesOfPath(detail::withoutTrailingSlashes(path->view()));
  if (!bytes || bytes->find('\0') != bytes->npos) return nullptr;
  std::u16string text = detail::addEscapes(*bytes, detail::urlPathSet);
  if (isDirectory && text.back() != u'/') text += u'/';
  if (path->isAbsolutePath()) return whole(u"file://" + text);
  // A colon before the first slash would end a scheme.
  for (std::size_t colon = text.find(u':'); colon < std::min(text.find(u'/'), text.size());
       colon = text.find(u':'))
    text.replace(colon, 1, u"%3A");
  return URLWithString_relativeToURL(NSString::stringWithCharacters(text), currentDirectory());
}

Ref<NSURL> NSURL::initFileURLWithPath(NSString* path) { return fileURLWithPath(path); }

Ref<NSURL> NSURL::initFileURLWithPath_isDirectory(NSString* path, bool isDirectory) {
  return fileURLWithPath_isDirectory(path, isDirectory);
}

Ref<NSURL> NSURL::absoluteURL() const {
  return base_ ? URLWithString(absolute_) : Ref<NSURL>(const_cast<NSURL*>(this));
}

// Components --------------------------------------------------------------------------------------

Ref<NSString> NSURL::scheme() const { return textOrNil(parts_.scheme); }
Ref<NSString> NSURL::user() const { return plainOrNil(parts_.user); }
Ref<NSString> NSURL::password() const { return plainOrNil(parts_.password); }
Ref<NSString> NSURL::query() const { return textOrNil(parts_.query); }
Ref<NSString> NSURL::fragment() const { return textOrNil(parts_.fragment); }

Ref<NSString> NSURL::host() const {
  if (!parts_.host || !parts_.host->starts_with(u'[')) return plainOrNil(parts_.host);
  return plainText(parts_.host->substr(1, parts_.host->size() - 2));
}

Ref<NSNumber> NSURL::port() const {
  if (!parts_.port || parts_.port->empty()) return nullptr;
  return NSNumber::numberWithInt(NSString::stringWithCharacters(*parts_.port)->intValue());
}

Ref<NSString> NSURL::path() const { return plainText(detail::withoutTrailingSlashes(parts_.path)); }

Ref<NSString> NSURL::relativePath() const {
  if (!base_) return path();
  return plainText(detail::withoutTrailingSlashes(detail::parseUrl(text_->view())->path));
}

Ref<NSArray> NSURL::pathComponents() const {
  std::vector<Ref<NSString>> components;
  for (std::u16string_view each : detail::componentsOfPath(parts_.path))
    components.push_back(plainText(each));
  return NSArray::fromRange(components);
}

Ref<NSString> NSURL::lastPathComponent() const {
  const std::u16string_view path = detail::withoutTrailingSlashes(parts_.path);
  return plainText(path.substr(detail::lastComponentStart(path)));
}

Ref<NSString> NSURL::pathExtension() const {
  const Ref<NSString> last = lastPathComponent();
  const std::size_t dot = detail::extensionStart(last->view());
  if (dot == std::u16string_view::npos) return ""_ns;
  return last->substringFromIndex(static_cast<std::uint32_t>(dot + 1));
}

bool NSURL::isFileURL() const { return parts_.scheme && lowerCase(*parts_.scheme) == u"file"; }

bool NSURL::hasDirectoryPath() const { return parts_.path.ends_with(u'/'); }

std::string NSURL::fileSystemRepresentation() const { return path()->fileSystemRepresentation(); }

// Other URLs --------------------------------------------------------------------------------------

Ref<NSURL> NSURL::URLByAppendingPathComponent(NSString* component) const {
  const std::u16string_view added =
      detail::requireString(component, "URLByAppendingPathComponent:");
  const auto bytes = detail::bytesOfPath(added);
  if (!bytes)
    detail::raise(NSInvalidArgumentException,
                  "URLByAppendingPathComponent: no file can be named " + component->UTF8String());
  std::u16string path(detail::withoutTrailingSlashes(parts_.path));
  const std::u16string escaped = detail::addEscapes(*bytes, detail::urlPathSet);
  std::u16string_view last = escaped;
  const bool isFirst = path.empty() && !parts_.host;
  if (!isFirst) last.remove_prefix(std::min(last.find_first_not_of(u'/'), last.size()));
  if (!isFirst && !last.empty() && !path.ends_with(u'/')) path += u'/';
  path += last;
  UrlParts parts = parts_;
  parts.path = path;
  return whole(detail::composeUrl(parts));
}

Ref<NSURL> NSURL::URLByDeletingLastPathComponent() const {
  UrlParts parts = parts_;
  const std::u16string_view path = detail::withoutTrailingSlashes(parts_.path);
  const std::size_t start = detail::lastComponentStart(path);
  if (path.empty() || path == u"/") return absoluteURL();
  parts.path = start == 0 ? u"./" : path.substr(0, start);
  return whole(detail::composeUrl(parts));
}

Ref<NSURL> NSURL::standardizedURL() const {
  UrlParts parts = parts_;
  std::u16string scheme, host, user, password, query, fragment;
  const auto normalise = [](std::optional<std::u16string_view>& part, std::u16string& own,
                            auto change) {
    if (part) part = own = change(*part);
  };
  normalise(parts.scheme, scheme, lowerCase);
  normalise(parts.host, host, normalHost);
  normalise(parts.user, user, normalEscapes);
  normalise(parts.password, password, normalEscapes);
  normalise(parts.query, query, normalEscapes);
  normalise(parts.fragment, fragment, normalEscapes);
  std::u16string path = normalEscapes(parts.path);
  // What a relative URL goes up is up to its base.
  if (parts.scheme) path = detail::removeDotSegments(path);
  parts.path = path;
  return whole(detail::composeUrl(parts));
}

// Object ------------------------------------------------------------------------------------------

bool NSURL::isEqual(NSObject* other) const {
  const auto* url = as<NSURL>(other);
  return url != nullptr && absolute_->isEqualToString(url->absolute_);
}

std::size_t NSURL::hash() const { return absolute_->hash(); }

Ref<NSObject> NSURL::copy() const { return const_cast<NSURL*>(this); }

Ref<NSString> NSURL::description() const { return absolute_; }

// Paths -------------------------------------------------------------------------------------------

Ref<NSURL> CFURLCreateWithFileSystemPath(NSString* path, URLPathStyle style, bool isDirectory) {
  if (path == nullptr) return nullptr;
  if (style == URLPathStyle::POSIX) return NSURL::fileURLWithPath_isDirectory(path, isDirectory);
  if (style != URLPathStyle::HFS) return nullptr;
  const auto posix = detail::posixFromClassicPath(path->view(), NSStartupVolumeName()->view());
  if (!posix) return nullptr;
  return NSURL::fileURLWithPath_isDirectory(NSString::stringWithCharacters(*posix), isDirectory);
}

Ref<NSString> CFURLCopyFileSystemPath(NSURL* url, URLPathStyle style) {
  if (url == nullptr) return nullptr;
  const Ref<NSString> path = url->relativePath();
  if (style == URLPathStyle::POSIX) return path;
  if (style != URLPathStyle::HFS) return nullptr;
  const auto classic = detail::classicFromPosixPath(path->view(), NSStartupVolumeName()->view());
  return classic ? NSString::stringWithCharacters(*classic) : nullptr;
}

Ref<NSURL> CFURLCreateWithString(NSString* text, NSURL* base) {
  return NSURL::URLWithString_relativeToURL(text, base);
}

Ref<NSString> CFURLCreateStringByReplacingPercentEscapes(NSString* text,
                                                         NSString* charactersToLeaveEscaped) {
  if (text == nullptr) return nullptr;
  if (charactersToLeaveEscaped == nullptr) return NSString::stringWithString(text);
  const auto plain = detail::replaceEscapes(text->view(), charactersToLeaveEscaped->view());
  return plain ? NSString::stringWithCharacters(*plain) : nullptr;
}

}  // namespace qz
