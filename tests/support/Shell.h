// Tasks of tests: scripts of the shell.
#pragma once

#include "Platform/System/NSTask.h"
#include "tests/support/Test.h"

namespace qz::test {

/// A task, not launched yet, that runs a script.
inline Ref<NSTask> shell(NSString* script) {
  auto task = make<NSTask>();
  task->setLaunchPath("/bin/sh"_ns);
  task->setArguments(NSArray::arrayWithObjects({"-c"_ns, script}));
  return task;
}

}  // namespace qz::test
