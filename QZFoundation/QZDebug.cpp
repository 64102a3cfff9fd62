#include "QZFoundation/QZDebug.h"

#include <mutex>
#include <utility>

#include "Platform/Collections/NSArray.h"
#include "Platform/System/NSFileManager.h"
#include "Platform/System/NSTask.h"
#include "Platform/Values/NSPathUtilities.h"
#include "QZFoundation/detail/ApplicationName.h"

namespace qz {
namespace {

struct State {
  std::mutex mutex;
  Ref<QZLog> log;
};

State& state() {
  static State* const state = new State;
  return *state;
}

Ref<NSString> debugLogPath() {
  const auto folder = NSHomeDirectory()->stringByAppendingPathComponent("Desktop"_ns);
  return folder->stringByAppendingPathComponent(
      NSString::stringWithFormat("%@.log"_ns, detail::applicationName()));
}

}  // namespace

Ref<QZLog> QZGetDebugLog() {
  const std::lock_guard lock(state().mutex);
  if (state().log) return state().log;
  const auto path = debugLogPath();
  const auto manager = NSFileManager::defaultManager();
  if (manager->fileExistsAtPath(path)) manager->removeFileAtPath_handler(path, nullptr);
  state().log = QZLog::initWithFilePath(path);  // which enables the keys under "QZDebug"
  return state().log;
}

void QZDebugInitialize() { QZGetDebugLog(); }

void QZSetDebugEnabled(NSString* key, bool enabled) {
  QZGetDebugLog()->setKey_enabled(key, enabled);
}

bool QZIsDebugEnabled(NSString* key) { return QZGetDebugLog()->isKeyEnabled(key); }

void QZDebugClose() {
  Ref<QZLog> log;
  {
    const std::lock_guard lock(state().mutex);
    log = std::move(state().log);
  }
  if (log) log->closeLog();
}

void QZDebugLogSystemProfile() {
  QZDebugInitialize();
  // Prepared and let go of: that nothing is written is the required effect.
  auto task = make<NSTask>();
  task->setLaunchPath("/usr/sbin/system_profiler"_ns);
  task->setArguments(NSArray::arrayWithObjects({"-detailLevel"_ns, "mini"_ns}));
}

}  // namespace qz
