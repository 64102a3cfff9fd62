#include "bench/support/ResidentMemory.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace qz::bench {
namespace {

// Memory comes from the system in pieces of up to 2 MB; on several copies the last one weighs less.
constexpr int copies = 8;

double residentNow() {
  std::ifstream statm("/proc/self/statm");
  double total = 0;
  double resident = 0;
  statm >> total >> resident;
  return resident * static_cast<double>(sysconf(_SC_PAGESIZE));
}

[[noreturn]] void fail(const char* what) {
  std::perror(what);
  std::exit(1);
}

}  // namespace

double residentBytes(void (*build)(std::size_t count), std::size_t count) {
  int ends[2];
  if (pipe(ends) != 0) fail("pipe");
  const pid_t child = fork();
  if (child < 0) fail("fork");
  if (child == 0) {
    build(1);  // what is set up once does not count
    const double before = residentNow();
    for (int i = 0; i < copies; ++i) build(count);
    const double grown = (residentNow() - before) / copies;
    const bool told = write(ends[1], &grown, sizeof grown) == sizeof grown;
    _exit(told ? 0 : 1);
  }
  close(ends[1]);
  double grown = 0;
  const bool heard = read(ends[0], &grown, sizeof grown) == sizeof grown;
  close(ends[0]);
  int status = 0;
  if (waitpid(child, &status, 0) != child || status != 0 || !heard) fail("measuring memory");
  return grown;
}

}  // namespace qz::bench
