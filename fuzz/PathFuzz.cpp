// Any bytes as a path: it comes back from its components, from its String, and from its classic
// form; and what the operations answer is a path of fewer or more components, never another one.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Platform/Collections/NSArray.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSURL.h"
#include "QZFoundation/NSString-QZFoundation.h"
#include "fuzz/support/Require.h"

using namespace qz;
using fuzz::require;

namespace {

// Without what means nothing in a path: "." beside other components, and extra slashes.
Ref<NSString> canonical(NSString* path) {
  std::u16string text;
  for (NSString* each : elements<NSString>(path->pathComponents())) {
    if (each->view() == u".") continue;
    if (!text.empty() && text.back() != u'/') text += u'/';
    text += each->view();
  }
  return NSString::stringWithCharacters(text.empty() ? u"." : text);
}

void takeApart(NSString* path) {
  const auto components = path->pathComponents();
  require(equal(NSString::pathWithComponents(components)->pathComponents(), components));
  const auto last = path->lastPathComponent();
  const auto parent = path->stringByDeletingLastPathComponent();
  require(last->view() == u"/" ||
          equal(parent->stringByAppendingPathComponent(last)->pathComponents(), components));
  require(components->count() == 0 || equal(components->lastObject(), last));
  const auto bare = path->stringByDeletingPathExtension();
  const auto extension = path->pathExtension();
  require(equal(bare->stringByAppendingPathExtension(extension)->pathComponents(), components));
  require(containsPath(parent, path) || components->count() <= 1);
  const auto standard = path->stringByStandardizingPath();
  require(standard->view().starts_with(u'~') ||
          equal(standard->stringByStandardizingPath(), standard));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 4096) return 0;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const auto path = NSString::stringWithFileSystemRepresentation(bytes);
  takeApart(path);
  const bool isUsable = size > 0 && bytes.find('\0') == bytes.npos;
  try {
    require(path->fileSystemRepresentation() == bytes);
    require(bytes.find('\0') == bytes.npos);
  } catch (const Raised& raised) {
    require(bytes.find('\0') != bytes.npos && raised.is(NSInvalidArgumentException));
  }

  const auto classic = carbonPathFromPOSIXPath(path);
  require((classic != nullptr) == isUsable);
  if (classic) require(equal(POSIXPathFromCarbonPath(classic), canonical(path)));
  // As a classic path it may have no POSIX form; where it has one, that is a fixed point.
  if (const auto posix = POSIXPathFromCarbonPath(path))
    require(equal(POSIXPathFromCarbonPath(carbonPathFromPOSIXPath(posix)), posix));
  return 0;
}
