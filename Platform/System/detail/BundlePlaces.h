/// @file
/// Private: where bundles lie. NSBundle.h says the rules.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace qz::detail {

/// The file that holds a bundle's information.
inline constexpr const char* bundleInfoFile = "Info.plist";

/// The running program's file, without symbolic links.
const std::string& executablePath();

/// The shared library that holds `address`, without symbolic links; no value for one that is part
/// of the program itself, and for what is in no file.
std::optional<std::string> libraryAt(const void* address);

/// The shared libraries that the program has loaded.
std::vector<std::string> loadedLibraries();

/// What a program's or library's bundle is called: "Foundation" for "libFoundation.so.1.0", the
/// file's name otherwise.
std::string bundleNameOfModule(const std::string& file);

/// Before the last "bin", "sbin", "lib…" or "libexec" in a file's directory: "/usr" for
/// "/usr/lib/x86_64-linux-gnu/libz.so". Empty when there is none.
std::string prefixOfModule(const std::string& file);

/// The directories that may be the bundle `name` of the program or library `file`, the first ones
/// first; whether they exist is not asked.
std::vector<std::string> bundleCandidates(const std::string& file, const std::string& name);

/// The first of `bundleCandidates` that is a bundle; empty when none is.
std::string findBundle(const std::string& file, const std::string& name);

}  // namespace qz::detail
