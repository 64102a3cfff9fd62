/// @file
/// Conversion between path styles, as a value transformer.
#pragma once

#include <cstdint>

#include "Platform/Values/NSURL.h"
#include "QZFoundation/NSValueTransformer-QZFoundation.h"

#pragma GCC visibility push(default)

namespace qz {

/// Turns a path or URL written in one style into another: "QZFile-POSIX-URL" turns "/tmp" into
/// "file:///tmp", and back.
///
/// | code | style | |
/// |---|---|---|
/// | 0 | "POSIX" | "/usr/lib" |
/// | 1 | "URL" | "file:///usr/lib" |
/// | 2 | "HFS" | "Root:usr:lib" (NSURL.h has the rules) |
/// | 3 | "exists" | going out only: whether there is a file, as a Number |
///
/// Immutable; any thread.
class QZFileValueTransformer final : public Derives<QZFileValueTransformer, NSValueTransformer> {
 public:
  static void describe(ClassDescription<QZFileValueTransformer>& is);

  /// Of styles by their codes.
  QZFileValueTransformer(std::int32_t inputStyle, std::int32_t outputStyle) noexcept
      : inputStyle_(inputStyle), outputStyle_(outputStyle) {}

  /// With styles that there are not, everything is turned into nil.
  static Ref<QZFileValueTransformer> initWithInputStyle_outputStyle(std::int32_t inputStyle,
                                                                    std::int32_t outputStyle);

  /// Of the names of both styles; nil unless there are two, and for others.
  static Ref<QZFileValueTransformer> valueTransformerWithComponents(NSArray* components);

  /// What transformers of this class can do, by Selector too: NSValueTransformer.h.
  static bool allowsReverseTransformation() { return true; }
  static Class* transformedValueClass();

  /// As it was made.
  std::int32_t inputStyle() const noexcept { return inputStyle_; }
  std::int32_t outputStyle() const noexcept { return outputStyle_; }

  /// Reads a String in the input style and answers it in the output style. Nil for nil, for another
  /// Object and for what is no path or URL.
  Ref<NSObject> transformedValue(NSObject* value) const override;

  /// The same with the styles the other way round.
  Ref<NSObject> reverseTransformedValue(NSObject* value) const override;

  /// The URL that the text means in a style; nil for nil, for what is no path or URL, and for a
  /// style that there is not. "exists" raises NSInvalidArgumentException.
  Ref<NSURL> urlForString_style(NSString* string, std::int32_t style) const;

  /// The URL in a style; nil for nil, for what the style cannot say, and for a style that there is
  /// not.
  Ref<NSObject> resultForURL_style(NSURL* url, std::int32_t style) const;

 private:
  const std::int32_t inputStyle_;
  const std::int32_t outputStyle_;
};

}  // namespace qz

#pragma GCC visibility pop
