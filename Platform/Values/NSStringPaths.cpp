// Strings: paths.

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Collections/NSArray.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSPathUtilities.h"
#include "Platform/Values/NSString.h"
#include "Platform/Values/detail/PathText.h"
#include "Platform/Values/detail/StringDescriptions.h"
#include "Platform/Values/detail/StringStorage.h"

namespace qz {

using detail::requireString;

void detail::describePaths(ClassDescription<NSString>& is) {
  is.classMethod<&NSString::pathWithComponents>("pathWithComponents:")
      .method<&NSString::pathComponents>("pathComponents")
      .method<&NSString::isAbsolutePath>("isAbsolutePath")
      .method<&NSString::lastPathComponent>("lastPathComponent")
      .method<&NSString::stringByDeletingLastPathComponent>("stringByDeletingLastPathComponent")
      .method<&NSString::stringByAppendingPathComponent>("stringByAppendingPathComponent:")
      .method<&NSString::pathExtension>("pathExtension")
      .method<&NSString::stringByDeletingPathExtension>("stringByDeletingPathExtension")
      .method<&NSString::stringByAppendingPathExtension>("stringByAppendingPathExtension:")
      .method<&NSString::stringByAbbreviatingWithTildeInPath>("stringByAbbreviatingWithTildeInPath")
      .method<&NSString::stringByExpandingTildeInPath>("stringByExpandingTildeInPath")
      .method<&NSString::stringByStandardizingPath>("stringByStandardizingPath")
      .method<&NSString::fileSystemRepresentation>("fileSystemRepresentation");
}

namespace {

// The String itself when the text is all of it.
Ref<NSString> partOf(const NSString* path, std::u16string_view text) {
  if (text.size() == path->length()) return NSString::stringWithString(const_cast<NSString*>(path));
  return NSString::stringWithCharacters(text);
}

std::u16string_view lastComponentOf(std::u16string_view path) {
  path = detail::withoutTrailingSlashes(path);
  return path.substr(detail::lastComponentStart(path));
}

}  // namespace

// Components --------------------------------------------------------------------------------------

Ref<NSArray> NSString::pathComponents() const {
  std::vector<Ref<NSString>> components;
  for (std::u16string_view each : detail::componentsOfPath(view()))
    components.push_back(partOf(this, each));
  return NSArray::fromRange(components);
}

Ref<NSString> NSString::pathWithComponents(NSArray* components) {
  std::u16string path;
  for (NSString* each : elements<NSString>(components)) {
    std::u16string_view component = detail::withoutTrailingSlashes(each->view());
    if (!path.empty())
      component.remove_prefix(std::min(component.find_first_not_of(u'/'), component.size()));
    if (!component.empty()) detail::appendComponent(path, component);
  }
  return stringWithCharacters(path);
}

bool NSString::isAbsolutePath() const noexcept { return length_ > 0 && units_[0] == u'/'; }

Ref<NSString> NSString::lastPathComponent() const { return partOf(this, lastComponentOf(view())); }

Ref<NSString> NSString::stringByDeletingLastPathComponent() const {
  const std::u16string_view path = detail::withoutTrailingSlashes(view());
  if (path == u"/") return partOf(this, path);
  const std::size_t start = detail::lastComponentStart(path);
  return partOf(this, detail::withoutTrailingSlashes(path.substr(0, start)));
}

Ref<NSString> NSString::stringByAppendingPathComponent(NSString* component) const {
  std::u16string_view added =
      detail::withoutTrailingSlashes(requireString(component, "stringByAppendingPathComponent:"));
  std::u16string path(detail::withoutTrailingSlashes(view()));
  if (!path.empty()) added.remove_prefix(std::min(added.find_first_not_of(u'/'), added.size()));
  if (!added.empty()) detail::appendComponent(path, added);
  return stringWithCharacters(path);
}

// Extensions --------------------------------------------------------------------------------------

Ref<NSString> NSString::pathExtension() const {
  const std::u16string_view last = lastComponentOf(view());
  const std::size_t dot = detail::extensionStart(last);
  return stringWithCharacters(dot == last.npos ? u"" : last.substr(dot + 1));
}

Ref<NSString> NSString::stringByDeletingPathExtension() const {
  std::u16string_view path = detail::withoutTrailingSlashes(view());
  const std::size_t start = detail::lastComponentStart(path);
  const std::size_t dot = detail::extensionStart(path.substr(start));
  if (dot != path.npos) path = path.substr(0, start + dot);
  return partOf(this, path);
}

Ref<NSString> NSString::stringByAppendingPathExtension(NSString* extension) const {
  const NSString& added = requireString(extension, "stringByAppendingPathExtension:");
  if (added.view().find(u'/') != std::u16string_view::npos)
    detail::raise(NSInvalidArgumentException,
                  "stringByAppendingPathExtension: \"" + added.UTF8String() + "\" has a slash");
  std::u16string path(detail::withoutTrailingSlashes(view()));
  if (!path.empty() && path != u"/" && added.length() > 0) (path += u'.') += added.view();
  return stringWithCharacters(path);
}

// The user's directories --------------------------------------------------------------------------

Ref<NSString> NSString::stringByAbbreviatingWithTildeInPath() const {
  const Ref<NSString> home = NSHomeDirectory();
  const std::u16string_view path = detail::withoutTrailingSlashes(view());
  const std::u16string_view start = detail::withoutTrailingSlashes(home->view());
  const bool isInside =
      path.starts_with(start) && (path.size() == start.size() || path[start.size()] == u'/');
  if (start == u"/" || !isInside) return partOf(this, path);
  return "~"_ns->stringByAppendingPathComponent(stringWithCharacters(path.substr(start.size())));
}

Ref<NSString> NSString::stringByExpandingTildeInPath() const {
  const std::u16string_view path = detail::withoutTrailingSlashes(view());
  if (!path.starts_with(u'~')) return partOf(this, path);
  const std::size_t end = std::min(path.find(u'/'), path.size());
  const Ref<NSString> home =
      end == 1 ? NSHomeDirectory()
               : NSHomeDirectoryForUser(stringWithCharacters(path.substr(1, end - 1)));
  if (!home) return partOf(this, path);
  return home->stringByAppendingPathComponent(stringWithCharacters(path.substr(end)));
}

Ref<NSString> NSString::stringByStandardizingPath() const {
  if (length_ == 0) return ""_ns;
  const Ref<NSString> expanded = stringByExpandingTildeInPath();
  std::vector<std::u16string_view> kept;
  for (std::u16string_view each : detail::componentsOfPath(expanded->view())) {
    if (each == u".") continue;
    const bool canGoUp = each == u".." && !kept.empty() && kept.back() != u"..";
    if (!canGoUp)
      kept.push_back(each);
    else if (kept.back() != u"/")  // nothing is above the root
      kept.pop_back();
  }
  if (kept.empty()) return "."_ns;
  std::u16string path;
  for (std::u16string_view each : kept) detail::appendComponent(path, each);
  return stringWithCharacters(path);
}

// The file system ---------------------------------------------------------------------------------

std::string NSString::fileSystemRepresentation() const {
  if (view().find(u'\0') != std::u16string_view::npos)
    detail::raise(NSInvalidArgumentException, "fileSystemRepresentation: the path has a zero: " +
                                                  UTF8String().substr(0, view().find(u'\0')));
  auto bytes = detail::bytesOfPath(view());
  if (!bytes)
    detail::raise(NSInvalidArgumentException,
                  "fileSystemRepresentation: no file can be named " + UTF8String());
  return std::move(*bytes);
}

Ref<NSString> NSString::stringWithFileSystemRepresentation(std::string_view bytes) {
  return stringWithCharacters(detail::pathOfBytes(bytes));
}

}  // namespace qz
