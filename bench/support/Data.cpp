#include "bench/support/Data.h"

#include <random>

namespace qz::bench {
namespace {

// The distributions of <random> differ between standard libraries; this does not.
std::int32_t below(std::mt19937& random, std::int32_t bound) {
  return static_cast<std::int32_t>(random() % static_cast<std::uint32_t>(bound));
}

std::string randomWord(std::mt19937& random, std::int32_t shortest, std::int32_t longest) {
  std::string word(static_cast<std::size_t>(shortest + below(random, longest - shortest + 1)), 'a');
  for (char& letter : word) letter = static_cast<char>('a' + below(random, 26));
  return word;
}

}  // namespace

std::vector<std::int32_t> randomInts(std::size_t count, std::int32_t bound) {
  std::mt19937 random(1);
  std::vector<std::int32_t> values(count);
  for (std::int32_t& value : values) value = below(random, bound);
  return values;
}

std::vector<std::int32_t> anyInts(std::size_t count) {
  std::mt19937 random(2);
  std::vector<std::int32_t> values(count);
  for (std::int32_t& value : values) value = static_cast<std::int32_t>(random());
  return values;
}

std::vector<std::string> randomNames(std::size_t count) {
  std::mt19937 random(3);
  std::vector<std::string> names(count);
  for (std::string& name : names) name = randomWord(random, 6, 20);
  return names;
}

std::vector<std::string> randomPaths(std::size_t count) {
  std::mt19937 random(4);
  std::vector<std::string> folders(200);
  for (std::string& folder : folders) folder = "/usr/share/" + randomWord(random, 4, 12) + "/";
  std::vector<std::string> paths(count);
  for (std::string& path : paths)
    path =
        folders[static_cast<std::size_t>(below(random, 200))] + randomWord(random, 4, 16) + ".txt";
  return paths;
}

std::u16string widened(const std::string& ascii) { return {ascii.begin(), ascii.end()}; }

}  // namespace qz::bench
