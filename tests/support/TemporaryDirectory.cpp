#include "tests/support/TemporaryDirectory.h"

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace qz::test {

TemporaryDirectory::TemporaryDirectory()
    : TemporaryDirectory(std::filesystem::temp_directory_path()) {}

TemporaryDirectory TemporaryDirectory::inMemory() {
  const std::filesystem::path memory = "/dev/shm";
  return TemporaryDirectory(
      ::access(memory.c_str(), W_OK) == 0 ? memory : std::filesystem::temp_directory_path());
}

TemporaryDirectory::TemporaryDirectory(const std::filesystem::path& parent) {
  std::string name = (parent / "qz-test-XXXXXX").string();
  if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary directory");
  path_ = std::filesystem::canonical(name).string();
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string TemporaryDirectory::write(const std::string& name, std::string_view bytes) const {
  const std::filesystem::path file = std::filesystem::path(path_) / name;
  std::filesystem::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary).write(bytes.data(), static_cast<long>(bytes.size()));
  return file.string();
}

}  // namespace qz::test
