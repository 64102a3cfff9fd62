// Any text as a URL, and one half of it relative to the other: what parses comes back from its
// components, resolving gives a whole URL that stays what it is, and escapes come and go.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "Platform/Collections/NSArray.h"
#include "Platform/Values/NSNumber.h"
#include "Platform/Values/NSURL.h"
#include "fuzz/support/Require.h"

using namespace qz;
using fuzz::require;

namespace {

void checkUrl(NSURL* url) {
  const auto again = NSURL::URLWithString(url->absoluteString());
  require(again != nullptr || url->absoluteString()->length() == 0);
  if (!again) return;
  require(again->isEqual(url) && equal(again->path(), url->path()));
  require(equal(again->host(), url->host()) && equal(again->query(), url->query()));
  require(!url->port() || url->port()->intValue() <= 65535);
  // An empty URL has nothing to be a URL of its own.
  if (const auto standard = url->standardizedURL()) {
    const auto twice = standard->standardizedURL();
    require(equal(twice, standard));
  }
  url->lastPathComponent();
  url->pathExtension();
  url->pathComponents();
  if (const auto longer = url->URLByAppendingPathComponent("a b:c"_ns))
    require(longer->lastPathComponent()->view() == u"a b:c");
  else
    std::abort();
}

void checkEscapes(NSString* text) {
  if (const auto escaped = text->stringByAddingPercentEncoding())
    require(equal(escaped->stringByRemovingPercentEncoding(), text));
  const auto plain = CFURLCreateStringByReplacingPercentEscapes(text, ""_ns);
  require(equal(plain, text->stringByRemovingPercentEncoding()));
  const auto kept = CFURLCreateStringByReplacingPercentEscapes(text, "%/\xC3\xA4"_ns);
  require((kept != nullptr) == (plain != nullptr));
  // What stayed escaped is replaced by the second round.
  if (kept && text->view().find(u"%25") == std::u16string_view::npos)
    require(equal(kept->stringByRemovingPercentEncoding(), plain));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 4096) return 0;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const auto text = NSString::stringWithUTF8String(bytes);
  checkEscapes(text);
  if (const auto url = NSURL::URLWithString(text)) checkUrl(url);

  const std::size_t space = bytes.find(' ');
  if (space == bytes.npos) return 0;
  const auto base = NSURL::URLWithString(NSString::stringWithUTF8String(bytes.substr(0, space)));
  const auto reference = NSString::stringWithUTF8String(bytes.substr(space + 1));
  if (!base) return 0;
  if (const auto url = NSURL::URLWithString_relativeToURL(reference, base)) {
    checkUrl(url);
    require(equal(url->relativeString(), reference));
  } else {
    require(reference->length() > 0 && NSURL::URLWithString(reference) == nullptr);
  }
  return 0;
}
