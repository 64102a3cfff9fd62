#include "tests/support/TemporaryDirectory.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace qz::test {

TemporaryDirectory::TemporaryDirectory() {
  std::string name = (std::filesystem::temp_directory_path() / "qz-test-XXXXXX").string();
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
