// Ctrl-C, seen by the main thread's loop.
#pragma once

#include <functional>

namespace backup {

/// From now on SIGINT, SIGTERM and SIGHUP, unless they are ignored, call `onSignal` on the main
/// thread with their number. The second one ends the process at once. To be called once, before
/// any other thread is started.
void handleInterruptions(std::function<void(int signal)> onSignal);

}  // namespace backup
