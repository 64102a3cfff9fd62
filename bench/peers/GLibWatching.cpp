// GLib: GFileMonitor.
#include <gio/gio.h>

#include <vector>

#include "bench/support/Comparison.h"
#include "bench/support/Families.h"
#include "bench/support/Watching.h"

namespace qz::bench {
namespace {

GFileMonitor* monitorOf(const std::string& path) {
  GFile* file = g_file_new_for_path(path.c_str());
  GFileMonitor* monitor = g_file_monitor_file(file, G_FILE_MONITOR_NONE, nullptr, nullptr);
  g_object_unref(file);
  return monitor;
}

template <bool timeAdding>
void addOrRemove(benchmark::State& state) {
  const Files files(many);
  std::vector<GFileMonitor*> monitors(many);
  for (auto _ : state) {
    if (!timeAdding) state.PauseTiming();
    for (std::size_t i = 0; i < many; ++i) monitors[i] = monitorOf(files.paths[i]);
    if (timeAdding)
      state.PauseTiming();
    else
      state.ResumeTiming();
    for (GFileMonitor* monitor : monitors) {
      g_file_monitor_cancel(monitor);
      g_object_unref(monitor);
    }
    if (timeAdding) state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * many);
}

void noteChange(GFileMonitor*, GFile*, GFile*, GFileMonitorEvent event, gpointer isSeen) {
  if (event == G_FILE_MONITOR_EVENT_CHANGED) *static_cast<bool*>(isSeen) = true;
}

void changeSeen(benchmark::State& state) {
  const Files files(1);
  GMainContext* context = g_main_context_new();
  GFileMonitor* monitor = nullptr;
  bool isSeen = false;
  writeUntilSeen(state, files.paths[0], [&] {
    g_main_context_push_thread_default(context);
    monitor = monitorOf(files.paths[0]);
    g_file_monitor_set_rate_limit(monitor, 0);
    g_signal_connect(monitor, "changed", G_CALLBACK(&noteChange), &isSeen);
    return [&] {
      isSeen = false;
      while (!isSeen) g_main_context_iteration(context, TRUE);
    };
  });
  g_file_monitor_cancel(monitor);
  g_object_unref(monitor);
  g_main_context_unref(context);
}

}  // namespace

void compareGLibWatching() {
  comparePeer("WatchAdd", "GLib", &addOrRemove<true>);
  comparePeer("WatchRemove", "GLib", &addOrRemove<false>);
  comparePeer("WatchEvent", "GLib, without its rate limit", &changeSeen);
}

}  // namespace qz::bench
