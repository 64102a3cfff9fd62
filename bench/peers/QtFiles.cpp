// Qt 6: QFile, QDirIterator, QFileInfo. QFile::copy keeps permissions, not times.
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include "bench/support/Comparison.h"
#include "bench/support/Families.h"
#include "bench/support/Files.h"

namespace qz::bench {
namespace {

using State = benchmark::State;

constexpr auto everything = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;

bool copyWithContents(const QString& from, const QString& to) {
  if (!QDir().mkpath(to)) return false;
  QDirIterator entries(from, everything, QDirIterator::Subdirectories);
  while (entries.hasNext()) {
    const QString path = entries.next();
    const QString copy = to + path.mid(from.size());
    const bool isDone = entries.fileInfo().isDir() ? QDir().mkpath(copy) : QFile::copy(path, copy);
    if (!isDone) return false;
  }
  return true;
}

void copyTree(State& state) {
  copyTreeBy(state, [](const std::string& from, const std::string& to) {
    return copyWithContents(QString::fromStdString(from), QString::fromStdString(to));
  });
}

void copyLarge(State& state) {
  copyLargeBy(state, [](const std::string& from, const std::string& to) {
    return QFile::copy(QString::fromStdString(from), QString::fromStdString(to));
  });
}

void walk(State& state) {
  walkBy(state, [](const std::string& top) {
    QDirIterator entries(QString::fromStdString(top), everything, QDirIterator::Subdirectories);
    int count = 1;
    qsizetype length = 0;
    while (entries.hasNext()) {
      length += entries.next().size();
      ++count;
    }
    benchmark::DoNotOptimize(length);
    return count;
  });
}

template <class Ask>
void askEach(State& state, Ask ask) {
  QStringList paths;
  for (const std::string& each : widePaths()) paths += QString::fromStdString(each);
  timed(
      state,
      [&] {
        qint64 sum = 0;
        for (const QString& each : paths) sum += ask(QFileInfo(each));
        return sum == paths.size();
      },
      [] {});
}

void sizes(State& state) {
  askEach(state, [](const QFileInfo& info) { return info.size(); });
}

void directories(State& state) {
  askEach(state, [](const QFileInfo& info) { return info.isDir() ? 0 : 1; });
}

}  // namespace

void compareQtFiles() {
  compareElapsedPeer("CopyTree", "Qt", &copyTree);
  compareElapsedPeer("CopyLarge", "Qt", &copyLarge);
  compareElapsedPeer("Walk", "Qt", &walk);
  compareElapsedPeer("Sizes", "Qt", &sizes);
  compareElapsedPeer("Directories", "Qt", &directories);
}

}  // namespace qz::bench
