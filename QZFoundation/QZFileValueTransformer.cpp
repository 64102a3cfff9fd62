#include "QZFoundation/QZFileValueTransformer.h"

#include "Platform/Collections/NSArray.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/System/NSFileManager.h"
#include "Platform/Values/NSNumber.h"
#include "QZFoundation/detail/LibraryBundle.h"

namespace qz {
namespace {

enum Style : std::int32_t { POSIX = 0, URL = 1, HFS = 2, Exists = 3 };

/// -1 for a name that no style has.
std::int32_t styleNamed(NSObject* name) {
  static NSString* const names[] = {"POSIX"_ns, "URL"_ns, "HFS"_ns, "exists"_ns};
  for (std::int32_t style = POSIX; style <= Exists; ++style)
    if (equal(names[style], name)) return style;
  return -1;
}

Ref<NSObject> fileExists(NSURL* url) {
  const Ref<NSString> path = CFURLCopyFileSystemPath(url, URLPathStyle::POSIX);
  return NSNumber::numberWithBool(NSFileManager::defaultManager()->fileExistsAtPath(path));
}

}  // namespace

void QZFileValueTransformer::describe(ClassDescription<QZFileValueTransformer>& is) {
  using Self = QZFileValueTransformer;
  is.named("QZFileValueTransformer")
      .initializer<&Self::initWithInputStyle_outputStyle>("initWithInputStyle:outputStyle:")
      .classMethod<&Self::valueTransformerWithComponents>("valueTransformerWithComponents:")
      .classMethod<&Self::allowsReverseTransformation>("allowsReverseTransformation")
      .classMethod<&Self::transformedValueClass>("transformedValueClass")
      .property<&Self::inputStyle>("inputStyle")
      .property<&Self::outputStyle>("outputStyle")
      .method<&Self::urlForString_style>("urlForString:style:")
      .method<&Self::resultForURL_style>("resultForURL:style:");
}

Ref<QZFileValueTransformer> QZFileValueTransformer::initWithInputStyle_outputStyle(
    std::int32_t inputStyle, std::int32_t outputStyle) {
  return make<QZFileValueTransformer>(inputStyle, outputStyle);
}

Ref<QZFileValueTransformer> QZFileValueTransformer::valueTransformerWithComponents(
    NSArray* components) {
  if (components == nullptr || components->count() != 2) return nullptr;
  const std::int32_t input = styleNamed(components->objectAtIndex(0));
  const std::int32_t output = styleNamed(components->objectAtIndex(1));
  if (input < 0 || output < 0) return nullptr;
  return make<QZFileValueTransformer>(input, output);
}

Class* QZFileValueTransformer::transformedValueClass() { return classOf<NSString>(); }

Ref<NSObject> QZFileValueTransformer::transformedValue(NSObject* value) const {
  return resultForURL_style(urlForString_style(as<NSString>(value), inputStyle_), outputStyle_);
}

Ref<NSObject> QZFileValueTransformer::reverseTransformedValue(NSObject* value) const {
  return resultForURL_style(urlForString_style(as<NSString>(value), outputStyle_), inputStyle_);
}

Ref<NSURL> QZFileValueTransformer::urlForString_style(NSString* string, std::int32_t style) const {
  if (string == nullptr) return nullptr;
  switch (style) {
    case POSIX:
      return CFURLCreateWithFileSystemPath(string, URLPathStyle::POSIX, false);
    case URL:
      return CFURLCreateWithString(string, nullptr);
    case HFS:
      return CFURLCreateWithFileSystemPath(string, URLPathStyle::HFS, false);
    case Exists:
      NSException::raise_reason(
          NSInvalidArgumentException,
          detail::message(
              "\"exists\" cannot be used as the input style for a file value transformer"_ns,
              "QZFileValueTransformer exception message"_ns));
    default:
      return nullptr;
  }
}

Ref<NSObject> QZFileValueTransformer::resultForURL_style(NSURL* url, std::int32_t style) const {
  if (url == nullptr) return nullptr;
  switch (style) {
    case POSIX:
      return CFURLCopyFileSystemPath(url, URLPathStyle::POSIX);
    case URL:
      return url->absoluteString();
    case HFS:
      return CFURLCopyFileSystemPath(url, URLPathStyle::HFS);
    case Exists:
      return fileExists(url);
    default:
      return nullptr;
  }
}

}  // namespace qz
