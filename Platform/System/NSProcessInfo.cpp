#include "Platform/System/NSProcessInfo.h"

#include <sched.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <ctime>
#include <mutex>
#include <string>

#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/System/detail/BundlePlaces.h"
#include "Platform/System/detail/FileBytes.h"
#include "Platform/System/detail/OsRelease.h"
#include "Platform/Values/NSUUID.h"

namespace qz {
namespace {

Ref<NSString> text(std::string_view bytes) {
  return NSString::stringWithFileSystemRepresentation(bytes);
}

Ref<NSArray> commandLine() {
  constexpr std::uint64_t limit = 256 * 1024 * 1024;
  const std::string words = detail::bytesOfFile("/proc/self/cmdline", limit).value_or("");
  auto arguments = NSMutableArray::array();
  for (std::size_t at = 0; at < words.size();) {
    const std::size_t end = std::min(words.find('\0', at), words.size());
    arguments->addObject(text(std::string_view(words).substr(at, end - at)));
    at = end + 1;
  }
  return as<NSArray>(arguments->copy());
}

std::mutex nameMutex;

Ref<NSString>& givenName() {
  static auto* const name = new Ref<NSString>;
  return *name;
}

}  // namespace

Ref<NSProcessInfo> NSProcessInfo::processInfo() {
  static NSProcessInfo* const shared = make<NSProcessInfo>().leak();
  return shared;
}

Ref<NSArray> NSProcessInfo::arguments() const {
  static NSArray* const arguments = commandLine().leak();
  return arguments;
}

Ref<NSDictionary> NSProcessInfo::environment() const {
  auto variables = NSMutableDictionary::dictionary();
  for (char** each = environ; each != nullptr && *each != nullptr; ++each) {
    const std::string_view entry(*each);
    const std::size_t sign = entry.find('=');
    if (sign == 0 || sign == entry.npos) continue;
    const auto name = text(entry.substr(0, sign));
    if (!variables->objectForKey(name))
      variables->setObject_forKey(text(entry.substr(sign + 1)), name);
  }
  return as<NSDictionary>(variables->copy());
}

Ref<NSString> NSProcessInfo::processName() const {
  const std::lock_guard lock(nameMutex);
  if (givenName()) return givenName();
  const std::string& path = detail::executablePath();
  return text(std::string_view(path).substr(path.rfind('/') + 1));
}

void NSProcessInfo::setProcessName(NSString* name) {
  const std::lock_guard lock(nameMutex);
  givenName() = name != nullptr && name->length() != 0 ? as<NSString>(name->copy()) : nullptr;
}

std::int32_t NSProcessInfo::processIdentifier() const noexcept { return ::getpid(); }

Ref<NSString> NSProcessInfo::hostName() const {
  std::array<char, 256> name{};
  if (::gethostname(name.data(), name.size() - 1) != 0 || name[0] == '\0') return "localhost"_ns;
  return text(name.data());
}

Ref<NSString> NSProcessInfo::globallyUniqueString() const {
  return NSString::stringWithFormat("%@-%d"_ns, NSUUID::UUID()->UUIDString(), processIdentifier());
}

Ref<NSString> NSProcessInfo::operatingSystemVersionString() const {
  if (Ref<NSString> name = detail::osReleaseField("PRETTY_NAME")) return name;
  struct utsname system;
  if (::uname(&system) != 0) return "Linux"_ns;
  return text(std::string(system.sysname) + " " + system.release);
}

std::uint32_t NSProcessInfo::processorCount() const noexcept {
  const long count = ::sysconf(_SC_NPROCESSORS_CONF);
  return count > 0 ? static_cast<std::uint32_t>(count) : 1;
}

std::uint32_t NSProcessInfo::activeProcessorCount() const noexcept {
  cpu_set_t allowed;
  if (::sched_getaffinity(0, sizeof allowed, &allowed) == 0)
    return static_cast<std::uint32_t>(CPU_COUNT(&allowed));
  const long count = ::sysconf(_SC_NPROCESSORS_ONLN);
  return count > 0 ? static_cast<std::uint32_t>(count) : 1;
}

std::uint64_t NSProcessInfo::physicalMemory() const noexcept {
  const long pages = ::sysconf(_SC_PHYS_PAGES);
  const long size = ::sysconf(_SC_PAGESIZE);
  return pages > 0 && size > 0
             ? static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(size)
             : 0;
}

double NSProcessInfo::systemUptime() const noexcept {
  struct ::timespec now {};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

void NSProcessInfo::describe(ClassDescription<NSProcessInfo>& is) {
  is.named("NSProcessInfo")
      .classMethod<&NSProcessInfo::processInfo>("processInfo")
      .method<&NSProcessInfo::arguments>("arguments")
      .method<&NSProcessInfo::environment>("environment")
      .property<&NSProcessInfo::processName, &NSProcessInfo::setProcessName>("processName")
      .method<&NSProcessInfo::processIdentifier>("processIdentifier")
      .method<&NSProcessInfo::hostName>("hostName")
      .method<&NSProcessInfo::globallyUniqueString>("globallyUniqueString")
      .method<&NSProcessInfo::operatingSystemVersionString>("operatingSystemVersionString")
      .method<&NSProcessInfo::processorCount>("processorCount")
      .method<&NSProcessInfo::activeProcessorCount>("activeProcessorCount")
      .method<&NSProcessInfo::physicalMemory>("physicalMemory")
      .method<&NSProcessInfo::systemUptime>("systemUptime");
}

}  // namespace qz
