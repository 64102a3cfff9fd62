/// @file
/// Commands of this build, run through their command lines.
#pragma once

#include "tests/support/Test.h"

namespace qz::test {

struct Outcome {
  int status;  ///< What the command ended with; -1 when a signal ended it.
  std::string output;
};

/// A fixture for one command and a directory to run it in.
class CommandTest : public testing::Test {
 protected:
  /// The name is the program's path in the build's folder.
  explicit CommandTest(std::string name) : name_(std::move(name)) {}

  std::string program() const;

  /// Runs the command in the directory, with arguments as a shell takes them, what it says of
  /// errors mixed in, in the locale en_US.
  Outcome run(const std::string& arguments) const;

  void expect(const std::string& arguments, int status, const std::string& output) const;

  /// Of a file in the directory.
  std::string contents(const std::string& name) const;

  const TemporaryDirectory directory_;

 private:
  const std::string name_;
};

}  // namespace qz::test
