// Backs a folder up: counts it, copies it file by file, and compares if asked. `--help` says how.
//
// The work is done by tasks on threads of their own (BackupTask), one for each step; the main
// thread runs its loop, in which progress, failures and Ctrl-C arrive one after the other (Backup).
#include <iostream>

#include "Backup.h"
#include "Platform/Concurrency/NSThread.h"
#include "Platform/Runtime/NSException.h"

int main(int argc, char** argv) try {
  qz::NSThread::becomeMainThread();
  const backup::Options options = backup::parseOptions({argv + 1, argv + argc});
  if (options.help) {
    std::cout << backup::helpText;
    return 0;
  }
  return qz::make<backup::Backup>(options)->run();
} catch (const backup::UsageError& error) {
  std::cerr << "backup: " << error.what() << "\n\"backup --help\" says how it is used.\n";
  return 2;
} catch (const std::exception& error) {
  std::cerr << "backup: " << error.what() << '\n';
  return 1;
}
