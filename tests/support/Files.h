// Files of tests: written, read and told apart without the library that is tested.
#pragma once

#include <map>
#include <string>

namespace qz::test {

/// All bytes of a file; "(missing)" when there is none.
std::string contentsOf(const std::string& path);

/// Everything below `top` (and itself, as ""), with all that a careful copy keeps: kind,
/// permissions, owner, modification time, contents, extended attributes, where links lead, and
/// which names share a file. Directories that cannot be read are empty.
using Snapshot = std::map<std::string, std::string>;
Snapshot snapshot(const std::string& top);

/// A socket that nobody listens at.
void makeSocket(const std::string& path);

/// Sets the modification time, links not followed.
void setTime(const std::string& path, long seconds, long nanoseconds);

}  // namespace qz::test
