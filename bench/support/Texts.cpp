#include "bench/support/Texts.h"

#include <iterator>
#include <string_view>

#include "bench/support/Data.h"

namespace qz::bench {
namespace {

std::string words(std::size_t length) {
  std::string text;
  std::size_t count = 0;
  for (const std::string& name : randomNames(length / 6)) {
    if (text.size() >= length) break;
    text += name;
    text += ++count % 6 == 0 ? ", " : " ";
  }
  text.resize(length, 'x');
  return text;
}

}  // namespace

std::u16string wordText() { return widened(words(1'000'000)); }

std::string asciiText() { return words(1'000'000); }

std::string mixedText() {
  constexpr std::string_view parts[] = {"der Fluß ",    "любовь ",     "日本語の文 ",
                                        "plain words ", "\U0001F600 ", "déjà vu, "};
  std::string text;
  for (const std::int32_t part : randomInts(80'000, 6))
    text += parts[static_cast<std::size_t>(part)];
  return text;
}

std::string lineText() {
  std::string text;
  for (const std::int32_t length : randomInts(1'000'000, 61)) {
    text.append(static_cast<std::size_t>(length), 'a');
    text += '\n';
  }
  return text;
}

std::string recordText() {
  constexpr std::size_t length = 20'000'000;
  constexpr std::string_view sections[] = {"libs", "libdevel", "admin", "utils", "oldlibs"};
  const auto names = randomNames(length / 25);
  std::string text;
  for (std::size_t i = 0; text.size() < length; ++i) {
    text += names[i % names.size()];
    text += '\t';
    text += std::to_string(i % 10) + "." + std::to_string(i % 97) + "-" + std::to_string(i % 7);
    text += '\t';
    text += sections[i % std::size(sections)];
    text += "\t\n";
  }
  return text;
}

}  // namespace qz::bench
