// What the commands have in common: how they end, and what they say when they fail.
#pragma once

#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace qz::tool {

enum Status { Done = 0, Failed = 1, Misused = 2 };

// Ends the command, or what it does to one file or value.
struct Failure : std::runtime_error {
  Failure(Status itsStatus, const std::string& reason)
      : std::runtime_error(reason), status(itsStatus) {}
  Status status;
};

[[noreturn]] inline void fail(const std::string& reason) { throw Failure(Failed, reason); }
[[noreturn]] inline void fail(const std::string& what, const std::string& reason) {
  fail(what + ": " + reason);
}

// The command line makes no sense.
[[noreturn]] inline void misuse(const std::string& reason) { throw Failure(Misused, reason); }

// All of `main`: runs the command with the words behind its name.
inline int runCommand(const std::string& name, Status (*run)(std::vector<std::string> words),
                      int count, char** words) {
  try {
    const Status status = run({words + 1, words + count});
    if (!std::cout.flush()) fail("the output cannot be written");
    return status;
  } catch (const Failure& failure) {
    const std::string hint = failure.status == Misused ? " (see " + name + " --help)" : "";
    std::cerr << name << ": " << failure.what() << hint << '\n';
    return failure.status;
  } catch (const std::exception& problem) {
    std::cerr << name << ": " << problem.what() << '\n';
    return Failed;
  }
}

}  // namespace qz::tool
