#include "Platform/System/detail/BundlePlaces.h"

#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "Platform/System/detail/FileBytes.h"

namespace qz::detail {
namespace {

std::string directoryOf(const std::string& file) { return file.substr(0, file.rfind('/')); }
std::string nameOf(const std::string& file) { return file.substr(file.rfind('/') + 1); }

bool holdsLibrariesOrPrograms(std::string_view directory) {
  return directory == "bin" || directory == "sbin" || directory.starts_with("lib");
}

// Directories called <name>.resources are made for nothing else. Other names must prove themselves:
// what lies in a prefix's share under a program's name need not be a bundle.
bool isBundle(const std::string& directory) {
  if (directory.ends_with(".resources")) return isDirectory(directory);
  return fileExists(directory + "/" + bundleInfoFile);
}

}  // namespace

const std::string& executablePath() {
  static const auto* const path = new std::string(realPath("/proc/self/exe"));
  return *path;
}

std::optional<std::string> libraryAt(const void* address) {
  Dl_info info;
  link_map* map = nullptr;
  if (::dladdr1(address, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) == 0 ||
      map == nullptr || map->l_name == nullptr || *map->l_name == '\0')
    return std::nullopt;
  std::string path = realPath(map->l_name);
  if (path.empty() || path == executablePath()) return std::nullopt;
  return path;
}

std::vector<std::string> loadedLibraries() {
  std::vector<std::string> names, paths;
  ::dl_iterate_phdr(
      [](dl_phdr_info* info, std::size_t, void* list) {
        if (info->dlpi_name != nullptr && *info->dlpi_name == '/')
          static_cast<std::vector<std::string>*>(list)->emplace_back(info->dlpi_name);
        return 0;
      },
      &names);
  for (const std::string& name : names)
    if (std::string path = realPath(name.c_str()); !path.empty()) paths.push_back(std::move(path));
  return paths;
}

std::string bundleNameOfModule(const std::string& file) {
  std::string name = nameOf(file);
  const std::size_t suffix = name.find(".so");
  if (suffix == name.npos || (suffix + 3 < name.size() && name[suffix + 3] != '.')) return name;
  name.resize(suffix);
  if (name.starts_with("lib")) name.erase(0, 3);
  return name;
}

std::string prefixOfModule(const std::string& file) {
  std::string directory = directoryOf(file);
  while (!directory.empty()) {
    const std::string last = nameOf(directory);
    directory = directoryOf(directory);
    if (holdsLibrariesOrPrograms(last)) return directory.empty() ? "/" : directory;
  }
  return "";
}

std::vector<std::string> bundleCandidates(const std::string& file, const std::string& name) {
  std::vector<std::string> candidates;
  if (name.empty() || name == "." || name == ".." || name.find('/') != name.npos) return candidates;
  // A program that runs with more rights than its user takes no paths from that user.
  const char* list = ::secure_getenv("QZ_BUNDLE_PATH");
  std::string_view rest = list == nullptr ? "" : list;
  while (!rest.empty()) {
    const std::size_t colon = std::min(rest.find(':'), rest.size());
    const std::string directory(rest.substr(0, colon));
    rest.remove_prefix(std::min(colon + 1, rest.size()));
    if (directory.empty()) continue;
    candidates.push_back(directory + "/" + name + ".resources");
    candidates.push_back(directory + "/" + name);
  }
  if (file.empty()) return candidates;
  candidates.push_back(directoryOf(file) + "/" + name + ".resources");
  const std::string prefix = prefixOfModule(file);
  if (!prefix.empty()) candidates.push_back((prefix == "/" ? "" : prefix) + "/share/" + name);
  return candidates;
}

std::string findBundle(const std::string& file, const std::string& name) {
  for (const std::string& candidate : bundleCandidates(file, name))
    if (isBundle(candidate)) return candidate;
  return "";
}

}  // namespace qz::detail
