// Runs a fuzz target over saved inputs, without a fuzzer: each argument is a file, or a directory
// whose files are all run. No input at all is a failure, for then nothing was tested.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

bool collect(const std::filesystem::path& argument, std::vector<std::filesystem::path>& inputs) {
  std::error_code error;
  if (std::filesystem::is_regular_file(argument, error)) {
    inputs.push_back(argument);
    return true;
  }
  std::filesystem::recursive_directory_iterator entries(argument, error);
  if (error) {
    std::fprintf(stderr, "%s: %s\n", argument.c_str(), error.message().c_str());
    return false;
  }
  for (const auto& entry : entries) {
    if (entry.is_regular_file()) inputs.push_back(entry.path());
  }
  return true;
}

bool replay(const std::filesystem::path& input) {
  std::ifstream file(input, std::ios::binary);
  const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (!file) {
    std::fprintf(stderr, "%s: cannot be read\n", input.c_str());
    return false;
  }
  // An allocation of exactly this size: the address sanitizer sees a read one byte too far.
  const auto bytes = std::make_unique<std::uint8_t[]>(text.size());
  std::copy(text.begin(), text.end(), bytes.get());
  // Named beforehand, so that the last line before a crash tells which input it was.
  std::printf("%s (%zu bytes)\n", input.c_str(), text.size());
  std::fflush(stdout);
  LLVMFuzzerTestOneInput(bytes.get(), text.size());
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  bool good = true;
  std::vector<std::filesystem::path> inputs;
  for (int i = 1; i < argc; ++i) good = collect(argv[i], inputs) && good;
  std::sort(inputs.begin(), inputs.end());
  for (const auto& input : inputs) good = replay(input) && good;

  std::printf("%zu inputs\n", inputs.size());
  if (inputs.empty()) std::fprintf(stderr, "nothing to replay\n");
  return good && !inputs.empty() ? 0 : 1;
}
