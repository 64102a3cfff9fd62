// Strings: searching, replacing, joining, splitting, converting, comparing.
#if defined(QZ_BENCH_FMT)
#include <fmt/format.h>
#endif

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Collections/NSArray.h"
#include "Platform/Values/NSCharacterSet.h"
#include "Platform/Values/NSString.h"
#include "bench/support/Comparison.h"
#include "bench/support/Data.h"
#include "bench/support/Families.h"
#include "bench/support/Texts.h"

namespace qz::bench {
namespace {

using State = benchmark::State;

// Runs `work` over and over; `count` is how many operations one run does.
template <class Work>
void repeat(State& state, std::size_t count, Work work) {
  for (auto _ : state) {
    auto result = work();
    benchmark::DoNotOptimize(result);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(count));
}

Ref<NSString> string(std::u16string_view units) { return NSString::stringWithCharacters(units); }

// Searching ---------------------------------------------------------------------------------------

void findAbsent(State& state) {
  const auto text = string(wordText());
  repeat(state, 1, [&] { return text->rangeOfString("qux;"_ns); });
}

void findAbsentPlain(State& state) {
  const std::u16string text = wordText();
  repeat(state, 1, [&] { return text.find(u"qux;"); });
}

void replaceAll(State& state) {
  const auto text = string(wordText());
  repeat(state, 1, [&] {
    return text->stringByReplacingOccurrencesOfString_withString(", "_ns, " and "_ns);
  });
}

void replaceAllPlain(State& state) {
  const std::u16string text = wordText();
  repeat(state, 1, [&] {
    std::u16string out;
    std::size_t copied = 0;
    for (std::size_t at; (at = text.find(u", ", copied)) != text.npos; copied = at + 2) {
      out.append(text, copied, at - copied);
      out.append(u" and ");
    }
    return out.append(text, copied);
  });
}

void splitAtSet(State& state) {
  const auto text = string(wordText());
  const auto set = NSCharacterSet::characterSetWithCharactersInString(" ,;.\n"_ns);
  repeat(state, 1, [&] { return text->componentsSeparatedByCharactersInSet(set); });
}

void splitAtSetPlain(State& state) {
  const std::u16string text = wordText();
  repeat(state, 1, [&] {
    std::vector<std::u16string> pieces;
    std::size_t start = 0;
    for (std::size_t at; (at = text.find_first_of(u" ,;.\n", start)) != text.npos; start = at + 1)
      pieces.push_back(text.substr(start, at - start));
    pieces.push_back(text.substr(start));
    return pieces;
  });
}

void joinShort(State& state) {
  std::vector<Ref<NSString>> names;
  for (const std::string& name : randomNames(100'000))
    names.push_back(NSString::stringWithUTF8String(name));
  const auto array = NSArray::fromRange(names);
  repeat(state, 1, [&] { return array->componentsJoinedByString(", "_ns); });
}

void joinShortPlain(State& state) {
  std::vector<std::u16string> names;
  for (const std::string& name : randomNames(100'000)) names.push_back(widened(name));
  repeat(state, 1, [&] {
    std::size_t length = 0;
    for (const auto& name : names) length += name.size() + 2;
    std::u16string out;
    out.reserve(length);
    for (const auto& name : names) {
      if (!out.empty()) out.append(u", ");
      out.append(name);
    }
    return out;
  });
}

// Converting --------------------------------------------------------------------------------------

template <auto Text>
void fromUtf8(State& state) {
  const std::string bytes = Text();
  repeat(state, 1, [&] { return NSString::stringWithUTF8String(bytes); });
}

template <auto Text>
void toUtf8(State& state) {
  const auto text = NSString::stringWithUTF8String(Text());
  repeat(state, 1, [&] { return text->UTF8String(); });
}

template <auto Text>
void copyUtf8(State& state) {
  const std::string bytes = Text();
  repeat(state, 1, [&] { return std::string(bytes); });
}

template <auto Text>
void copyUnits(State& state) {
  const std::u16string units(NSString::stringWithUTF8String(Text())->view());
  repeat(state, 1, [&] { return std::u16string(units); });
}

void lowerShort(State& state) {
  const auto text = NSString::stringWithUTF8String("Content-Type: Text/HTML");
  repeat(state, 1, [&] { return text->lowercaseString(); });
}

void copyShort(State& state) {
  const auto text = NSString::stringWithUTF8String("Content-Type: Text/HTML");
  repeat(state, 1, [&] { return NSString::stringWithCharacters(*text); });
}

// Comparing ---------------------------------------------------------------------------------------

template <std::uint32_t Options>
void compareNumbered(State& state) {
  const auto a = NSString::stringWithUTF8String("Documents/Report 2 of 2024, page 118.txt");
  const auto b = NSString::stringWithUTF8String("Documents/Report 2 of 2024, page 1024.txt");
  NSString* first = a;
  NSString* second = b;
  repeat(state, 1, [&] {
    benchmark::DoNotOptimize(first);
    if constexpr (Options == 0)
      return first->compare(second);
    else
      return first->compare_options(second, Options);
  });
}

void sortInsensitively(State& state) {
  std::vector<Ref<NSString>> names;
  for (const std::string& name : randomNames(100'000))
    names.push_back(NSString::stringWithUTF8String(name));
  const auto array = NSArray::fromRange(names);
  repeat(state, 1, [&] { return array->sortedArrayUsingSelector("caseInsensitiveCompare:"_sel); });
}

void sortPlain(State& state) {
  std::vector<std::u16string> names;
  for (const std::string& name : randomNames(100'000)) names.push_back(widened(name));
  repeat(state, 1, [&] {
    auto sorted = names;
    std::sort(sorted.begin(), sorted.end());
    return sorted;
  });
}

// Lines and formats -------------------------------------------------------------------------------

void countLines(State& state) {
  const auto text = NSString::stringWithUTF8String(lineText());
  repeat(state, 1, [&] {
    std::uint32_t count = 0;
    for (std::uint32_t at = 0; at < text->length(); ++count)
      at = static_cast<std::uint32_t>(NSMaxRange(text->lineRangeForRange({at, 1})));
    return count;
  });
}

void countLinesPlain(State& state) {
  const std::string text = lineText();
  repeat(state, 1, [&] {
    std::uint32_t count = 0;
    const char* at = text.data();
    const char* const end = at + text.size();
    for (; at < end; ++count) {
      const auto* next =
          static_cast<const char*>(std::memchr(at, '\n', static_cast<std::size_t>(end - at)));
      at = next != nullptr ? next + 1 : end;
    }
    return count;
  });
}

void formatNameAndCount(State& state) {
  const auto name = NSString::stringWithUTF8String("Untitled document");
  repeat(state, 1, [&] { return NSString::stringWithFormat("%@ (%d)"_ns, name, 42); });
}

void formatPlain(State& state) {
  const std::string name = "Untitled document";
#if defined(QZ_BENCH_FMT)
  repeat(state, 1, [&] { return fmt::format("{} ({})", name, 42); });
#else
  repeat(state, 1, [&] {
    char text[128];
    const int length = std::snprintf(text, sizeof text, "%s (%d)", name.c_str(), 42);
    return std::string(text, static_cast<std::size_t>(length));
  });
#endif
}

#if defined(QZ_BENCH_FMT)
constexpr auto formatter = "fmt::format";

void joinWithFmt(State& state) {
  const std::vector<std::string> names = randomNames(100'000);
  repeat(state, 1, [&] { return fmt::format("{}", fmt::join(names, ", ")); });
}
#else
constexpr auto formatter = "snprintf";
#endif

}  // namespace

void compareStrings() {
  compare("FindAbsent", {"find an absent string in 1,000,000 units", "u16string::find", 0.3},
          &findAbsent, &findAbsentPlain);
  compare("ReplaceAll", {"replace all in 1,000,000 units", "find and append", 0.6}, &replaceAll,
          &replaceAllPlain);
  compare("JoinShort", {"join 100,000 short Strings", "append with reserve", 0.8}, &joinShort,
          &joinShortPlain);
  compare("SplitAtSet", {"split 1,000,000 units at a set", "find_first_of, copies", 0.4},
          &splitAtSet, &splitAtSetPlain);
  compare("FromUtf8Ascii", {"UTF-8 to UTF-16, 1 MB of ASCII", "copy of the result", 1.2},
          &fromUtf8<&asciiText>, &copyUnits<&asciiText>);
  compare("ToUtf8Ascii", {"UTF-16 to UTF-8, 1 MB of ASCII", "copy of the result", 2.5},
          &toUtf8<&asciiText>, &copyUtf8<&asciiText>);
  compare("FromUtf8Mixed", {"UTF-8 to UTF-16, 1 MB of mixed text", "copy of the result", 0},
          &fromUtf8<&mixedText>, &copyUnits<&mixedText>);
  compare("ToUtf8Mixed", {"UTF-16 to UTF-8, 1 MB of mixed text", "copy of the result", 0},
          &toUtf8<&mixedText>, &copyUtf8<&mixedText>);
  compare("LowerShort", {"lower-case a short ASCII String", "copy of it", 2.5}, &lowerShort,
          &copyShort);
  compare("CompareNumeric", {"compare a pair by the numbers in it", "compare", 4},
          &compareNumbered<NSNumericSearch>, &compareNumbered<0>);
  compare("SortInsensitively",
          {"sort 100,000 Strings by caseInsensitiveCompare:", "u16string, case kept", 1.5},
          &sortInsensitively, &sortPlain);
  compare("CountLines", {"walk 1,000,000 lines", "memchr over bytes", 2}, &countLines,
          &countLinesPlain);
  compare("Format", {"format \"%@ (%d)\"", formatter, 1.5}, &formatNameAndCount, &formatPlain);
#if defined(QZ_BENCH_FMT)
  comparePeer("JoinShort", "fmt", &joinWithFmt);
#endif
}

}  // namespace qz::bench
