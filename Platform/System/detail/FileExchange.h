/// @file
/// Private: putting a finished file in the place of another in one step.
#pragma once

#pragma GCC visibility push(default)

namespace qz::detail {

/// Exchanges what is at two paths of one directory's file system, so that at every moment each name
/// leads to a whole file. When `other` is a regular file, a symbolic link at `path` stays, and what
/// it leads to is exchanged. A file system that can only replace replaces, and then there is
/// nothing at `other` any more. A directory at `path`, or at the end of a link there, is refused
/// (EISDIR). False with `errno`, and nothing has changed.
bool exchangeFiles(const char* other, const char* path);

}  // namespace qz::detail

#pragma GCC visibility pop
