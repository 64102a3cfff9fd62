#include "tests/support/Command.h"

#include <sys/wait.h>

#include "tests/support/Files.h"

namespace qz::test {

// The tests themselves lie in the build's folder "tests".
std::string CommandTest::program() const {
  return fs::read_symlink("/proc/self/exe").parent_path().parent_path() / name_;
}

Outcome CommandTest::run(const std::string& arguments) const {
  const std::string line = "cd '" + directory_.path() + "' && LC_ALL=en_US.UTF-8 '" + program() +
                           "' " + arguments + " 2>&1";
  FILE* const pipe = ::popen(line.c_str(), "r");
  Outcome result;
  std::array<char, 4096> buffer;
  while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), pipe))
    result.output.append(buffer.data(), count);
  const int status = ::pclose(pipe);
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return result;
}

void CommandTest::expect(const std::string& arguments, int status,
                         const std::string& output) const {
  const Outcome result = run(arguments);
  EXPECT_EQ(result.status, status) << arguments;
  EXPECT_EQ(result.output, output) << arguments;
}

std::string CommandTest::contents(const std::string& name) const {
  return contentsOf(directory_.path() + "/" + name);
}

}  // namespace qz::test
