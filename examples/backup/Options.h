// What the command line asks for.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "Platform/Values/NSString.h"

namespace backup {

struct Options {
  qz::Ref<qz::NSString> source;
  qz::Ref<qz::NSString> destination;  ///< Nil for a trial in a temporary folder.
  bool update = false;
  bool verify = false;
  bool watch = false;
  bool quiet = false;
  bool help = false;
  std::uint32_t largest = 8;

  bool isTrial() const { return !destination; }
};

/// Thrown for a command line that makes no sense.
class UsageError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Reads the words after the program's name. User defaults, "-name value", are not for us and are
/// left out.
Options parseOptions(const std::vector<std::string>& words);

extern const char* const helpText;

}  // namespace backup
