#include "tests/support/Files.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

namespace qz::test {
namespace {

namespace fs = std::filesystem;

std::string attributesOf(const std::string& path) {
  char names[4096];
  const ssize_t size = ::llistxattr(path.c_str(), names, sizeof names);
  std::set<std::string> all;
  for (ssize_t at = 0; at < size; at += static_cast<ssize_t>(std::string(names + at).size()) + 1) {
    char value[4096];
    const ssize_t length = ::lgetxattr(path.c_str(), names + at, value, sizeof value);
    all.insert(std::string(names + at) + '=' +
               std::string(value, length < 0 ? 0 : static_cast<std::size_t>(length)));
  }
  std::string text;
  for (const std::string& each : all) text += ' ' + each;
  return text;
}

// `first` knows under which path each file was met first.
std::string about(const std::string& path, const std::string& relative,
                  std::map<ino_t, std::string>& first) {
  struct ::stat status;
  if (::lstat(path.c_str(), &status) != 0) return "(missing)";
  std::ostringstream text;
  text << std::oct << status.st_mode << std::dec << ' ' << status.st_uid << ':' << status.st_gid
       << ' ' << status.st_mtim.tv_sec << '.' << status.st_mtim.tv_nsec << attributesOf(path);
  if (S_ISLNK(status.st_mode)) text << " -> " << fs::read_symlink(path).string();
  if (S_ISREG(status.st_mode)) {
    text << ' ' << contentsOf(path);
    if (status.st_nlink > 1) text << " = " << first.emplace(status.st_ino, relative).first->second;
  }
  return text.str();
}

}  // namespace

std::string contentsOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return "(missing)";
  std::ostringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

Snapshot snapshot(const std::string& top) {
  std::map<ino_t, std::string> first;
  Snapshot all{{"", about(top, "", first)}};
  std::error_code error;
  std::set<std::string> paths;
  for (fs::recursive_directory_iterator
           each(top, fs::directory_options::skip_permission_denied, error),
       end;
       each != end && !error; each.increment(error))
    paths.insert(each->path().string());
  for (const std::string& path : paths) {
    const std::string relative = path.substr(top.size() + 1);
    all[relative] = about(path, relative, first);
  }
  return all;
}

void makeSocket(const std::string& path) {
  const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  ::sockaddr_un address{AF_UNIX, {}};
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  ::bind(socket, reinterpret_cast<::sockaddr*>(&address), sizeof address);
  ::close(socket);
}

void setTime(const std::string& path, long seconds, long nanoseconds) {
  const ::timespec times[2] = {{seconds, nanoseconds}, {seconds, nanoseconds}};
  ::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW);
}

}  // namespace qz::test
