// ICU, called directly.
#include <unicode/coll.h>
#include <unicode/unistr.h>

#include <memory>
#include <string>

#include "bench/support/Comparison.h"
#include "bench/support/Families.h"
#include "bench/support/Texts.h"

namespace qz::bench {
namespace {

using State = benchmark::State;

template <auto Text>
void fromUtf8(State& state) {
  const std::string bytes = Text();
  for (auto _ : state) {
    auto text = icu::UnicodeString::fromUTF8(bytes);
    benchmark::DoNotOptimize(text);
  }
}

template <auto Text>
void toUtf8(State& state) {
  const auto text = icu::UnicodeString::fromUTF8(Text());
  for (auto _ : state) {
    std::string bytes;
    text.toUTF8String(bytes);
    benchmark::DoNotOptimize(bytes);
  }
}

void lowerShort(State& state) {
  const icu::UnicodeString text(u"Content-Type: Text/HTML");
  for (auto _ : state) {
    icu::UnicodeString copy = text;
    copy.toLower(icu::Locale::getRoot());
    benchmark::DoNotOptimize(copy);
  }
}

void compareNumeric(State& state) {
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<icu::Collator> collator(
      icu::Collator::createInstance(icu::Locale::getRoot(), status));
  collator->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
  const icu::UnicodeString a(u"Documents/Report 2 of 2024, page 118.txt");
  const icu::UnicodeString b(u"Documents/Report 2 of 2024, page 1024.txt");
  for (auto _ : state) benchmark::DoNotOptimize(collator->compare(a, b, status));
}

}  // namespace

void compareIcuStrings() {
  comparePeer("FromUtf8Ascii", "ICU", &fromUtf8<&asciiText>);
  comparePeer("ToUtf8Ascii", "ICU", &toUtf8<&asciiText>);
  comparePeer("FromUtf8Mixed", "ICU", &fromUtf8<&mixedText>);
  comparePeer("ToUtf8Mixed", "ICU", &toUtf8<&mixedText>);
  comparePeer("LowerShort", "ICU", &lowerShort);
  comparePeer("CompareNumeric", "ICU", &compareNumeric);
}

}  // namespace qz::bench
