// A directory for one test, removed with everything in it.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace qz::test {

class TemporaryDirectory {
 public:
  TemporaryDirectory();
  /// In memory where the system offers that, for tests that do the same a thousand times.
  static TemporaryDirectory inMemory();
  ~TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  /// Without symbolic links.
  const std::string& path() const { return path_; }

  /// Writes a file, and makes the directories it lies in. Answers its path.
  std::string write(const std::string& name, std::string_view bytes) const;

 private:
  explicit TemporaryDirectory(const std::filesystem::path& parent);

  std::string path_;
};

}  // namespace qz::test
