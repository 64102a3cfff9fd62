#include "Platform/Values/detail/UrlSyntax.h"

#include <arpa/inet.h>

#include <algorithm>

#include "Platform/Values/detail/PercentEscapes.h"
#include "Platform/Values/detail/UnitKinds.h"

namespace qz::detail {
namespace {

constexpr AsciiSet userSet = unreservedSet.with("!$&'()*+,;=:");
constexpr AsciiSet hostSet = unreservedSet.with("!$&'()*+,;=");
constexpr AsciiSet querySet = segmentSet.with("/?");

bool isAsciiLetter(char16_t unit) noexcept { return isAsciiUpper(toAsciiUpper(unit)); }

// Only members of the set and well-formed escapes.
bool consistsOf(std::u16string_view part, const AsciiSet& set) noexcept {
  for (std::size_t at = 0; at < part.size(); ++at) {
    if (set.contains(part[at])) continue;
    if (escapedByte(part, at) < 0) return false;
    at += 2;
  }
  return true;
}

bool isScheme(std::u16string_view text) noexcept {
  return !text.empty() && isAsciiLetter(text.front()) &&
         std::all_of(text.begin(), text.end(), [](char16_t unit) {
           return isAsciiLetter(unit) || isDigit(unit) || unit == u'+' || unit == u'-' ||
                  unit == u'.';
         });
}

bool isPort(std::u16string_view text) noexcept {
  std::uint32_t port = 0;
  for (char16_t unit : text) {
    if (!isDigit(unit)) return false;
    port = port * 10 + static_cast<std::uint32_t>(unit - u'0');
    if (port > 65535) return false;
  }
  return true;
}

// What may stand between brackets: an address of version 6, with the name of a zone behind "%25",
// or one of a version yet to come.
bool isAddress(std::u16string_view text) noexcept {
  if (!text.empty() && toAsciiLower(text.front()) == u'v') {
    const std::size_t dot = text.find(u'.');
    if (dot == text.npos || dot < 2 || dot + 1 == text.size()) return false;
    const std::u16string_view version = text.substr(1, dot - 1);
    const std::u16string_view rest = text.substr(dot + 1);
    return std::all_of(version.begin(), version.end(),
                       [](char16_t unit) { return hexValue(unit) >= 0; }) &&
           std::all_of(rest.begin(), rest.end(),
                       [](char16_t unit) { return userSet.contains(unit); });
  }
  const std::size_t zone = text.find(u"%25");
  if (zone != text.npos &&
      (zone + 3 == text.size() || !consistsOf(text.substr(zone + 3), unreservedSet)))
    return false;
  std::string address;
  for (char16_t unit : text.substr(0, zone)) {
    if (hexValue(unit) < 0 && unit != u':' && unit != u'.') return false;
    address += static_cast<char>(unit);
  }
  in6_addr parsed{};
  return ::inet_pton(AF_INET6, address.c_str(), &parsed) == 1;
}

bool parseAuthority(std::u16string_view text, UrlParts& parts) {
  if (const std::size_t at = text.find(u'@'); at != text.npos) {
    const std::u16string_view info = text.substr(0, at);
    if (!consistsOf(info, userSet)) return false;
    const std::size_t colon = info.find(u':');
    parts.user = info.substr(0, colon);
    if (colon != info.npos) parts.password = info.substr(colon + 1);
    text.remove_prefix(at + 1);
  }
  std::size_t end = std::min(text.find(u':'), text.size());
  if (text.starts_with(u'[')) {
    const std::size_t close = text.find(u']');
    if (close == text.npos || !isAddress(text.substr(1, close - 1))) return false;
    end = close + 1;
    if (end < text.size() && text[end] != u':') return false;
  } else if (!consistsOf(text.substr(0, end), hostSet)) {
    return false;
  }
  parts.host = text.substr(0, end);
  if (end == text.size()) return true;
  parts.port = text.substr(end + 1);
  return isPort(*parts.port);
}

// Cuts off what stands behind `mark`.
std::optional<std::u16string_view> cutBehind(std::u16string_view& text, char16_t mark) {
  const std::size_t at = text.find(mark);
  if (at == text.npos) return std::nullopt;
  const std::u16string_view behind = text.substr(at + 1);
  text = text.substr(0, at);
  return behind;
}

// The base's path up to its last slash, with the reference's in place of what follows.
std::u16string mergePaths(const UrlParts& base, std::u16string_view path) {
  std::u16string merged;
  if (base.host && base.path.empty())
    merged = u'/';
  else
    merged = base.path.substr(0, base.path.rfind(u'/') + 1);
  return merged += path;
}

void takeAuthority(UrlParts& to, const UrlParts& from) {
  to.user = from.user;
  to.password = from.password;
  to.host = from.host;
  to.port = from.port;
}

}  // namespace

std::optional<UrlParts> parseUrl(std::u16string_view text) {
  UrlParts parts;
  parts.fragment = cutBehind(text, u'#');
  parts.query = cutBehind(text, u'?');
  if (parts.fragment && !consistsOf(*parts.fragment, querySet)) return std::nullopt;
  if (parts.query && !consistsOf(*parts.query, querySet)) return std::nullopt;

  const std::size_t colon = text.find(u':');
  if (colon != text.npos && text.find(u'/') > colon) {
    parts.scheme = text.substr(0, colon);
    if (!isScheme(*parts.scheme)) return std::nullopt;
    text.remove_prefix(colon + 1);
  }
  if (text.starts_with(u"//")) {
    text.remove_prefix(2);
    const std::size_t end = std::min(text.find(u'/'), text.size());
    if (!parseAuthority(text.substr(0, end), parts)) return std::nullopt;
    text.remove_prefix(end);
  }
  parts.path = text;
  if (!consistsOf(parts.path, urlPathSet)) return std::nullopt;
  return parts;
}

std::u16string composeUrl(const UrlParts& parts) {
  std::u16string text;
  if (parts.scheme) (text += *parts.scheme) += u':';
  if (parts.host) {
    text += u"//";
    if (parts.user) text += *parts.user;
    if (parts.password) (text += u':') += *parts.password;
    if (parts.user || parts.password) text += u'@';
    text += *parts.host;
    if (parts.port) (text += u':') += *parts.port;
    if (!parts.path.empty() && parts.path.front() != u'/') text += u'/';
  } else if (parts.path.starts_with(u"//")) {
    text += u"/.";
  } else if (!parts.scheme &&
             parts.path.find(u':') < std::min(parts.path.find(u'/'), parts.path.size())) {
    text += u"./";
  }
  text += parts.path;
  if (parts.query) (text += u'?') += *parts.query;
  if (parts.fragment) (text += u'#') += *parts.fragment;
  return text;
}

std::u16string resolveUrl(const UrlParts& base, const UrlParts& reference) {
  UrlParts target = reference;
  std::u16string path;
  if (!reference.scheme) {
    target.scheme = base.scheme;
    if (!reference.host) {
      takeAuthority(target, base);
      if (reference.path.empty()) {
        target.path = base.path;
        if (!reference.query) target.query = base.query;
        return composeUrl(target);
      }
      if (reference.path.front() != u'/') target.path = path = mergePaths(base, reference.path);
    }
  }
  const std::u16string clean = removeDotSegments(target.path);
  target.path = clean;
  return composeUrl(target);
}

std::u16string removeDotSegments(std::u16string_view path) {
  std::u16string out;
  const bool isAbsolute = path.starts_with(u'/');
  if (isAbsolute) {
    out = u'/';
    path.remove_prefix(1);
  }
  // `out` ends with a slash here, or is empty.
  for (;;) {
    const std::size_t end = std::min(path.find(u'/'), path.size());
    const std::u16string_view segment = path.substr(0, end);
    if (segment == u"..") {
      const std::size_t root = isAbsolute ? 1 : 0;
      if (out.size() > root) {
        out.pop_back();
        out.resize(std::max(out.rfind(u'/') + 1, root));
      }
    } else if (segment != u".") {
      out += segment;
      if (end < path.size()) out += u'/';
    }
    if (end == path.size()) return out;
    path.remove_prefix(end + 1);
  }
}

}  // namespace qz::detail
