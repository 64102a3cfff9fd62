// Qt 6: QFileSystemWatcher.
#include <QCoreApplication>
#include <QEventLoop>
#include <QFileSystemWatcher>
#include <QThread>
#include <memory>

#include "bench/support/Comparison.h"
#include "bench/support/Families.h"
#include "bench/support/Watching.h"

namespace qz::bench {
namespace {

std::vector<QString> names(const Files& files) {
  std::vector<QString> all;
  for (const std::string& path : files.paths) all.push_back(QString::fromStdString(path));
  return all;
}

template <bool timeAdding>
void addOrRemove(benchmark::State& state) {
  const Files files(many);
  const std::vector<QString> paths = names(files);
  for (auto _ : state) {
    state.PauseTiming();
    auto watcher = std::make_unique<QFileSystemWatcher>();
    if (timeAdding) state.ResumeTiming();
    for (const QString& path : paths) watcher->addPath(path);
    if (timeAdding)
      state.PauseTiming();
    else
      state.ResumeTiming();
    if (!timeAdding) {
      for (const QString& path : paths) watcher->removePath(path);
      state.PauseTiming();
    }
    watcher.reset();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * many);
}

/// Qt's notifiers want one of its own.
class Thread {
 public:
  template <class F>
  explicit Thread(F function) : thread_(QThread::create(std::move(function))) {
    thread_->start();
  }
  void join() { thread_->wait(); }

 private:
  std::unique_ptr<QThread> thread_;
};

void changeSeen(benchmark::State& state) {
  const Files files(1);
  int count = 0;
  std::unique_ptr<QCoreApplication> application;
  if (QCoreApplication::instance() == nullptr)
    application = std::make_unique<QCoreApplication>(count, nullptr);
  writeUntilSeen<Thread>(state, files.paths[0], [&] {
    auto watcher = std::make_shared<QFileSystemWatcher>();
    auto loop = std::make_shared<QEventLoop>();
    watcher->addPath(QString::fromStdString(files.paths[0]));
    QObject::connect(watcher.get(), &QFileSystemWatcher::fileChanged,
                     [loop = loop.get()] { loop->quit(); });
    return [watcher, loop] { loop->exec(); };
  });
}

}  // namespace

void compareQtWatching() {
  comparePeer("WatchAdd", "Qt", &addOrRemove<true>);
  comparePeer("WatchRemove", "Qt", &addOrRemove<false>);
  comparePeer("WatchEvent", "Qt", &changeSeen);
}

}  // namespace qz::bench
