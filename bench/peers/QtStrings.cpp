// Qt 6: QString.
#include <QByteArray>
#include <QString>
#include <QStringList>
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "bench/support/Comparison.h"
#include "bench/support/Data.h"
#include "bench/support/Families.h"
#include "bench/support/Texts.h"

namespace qz::bench {
namespace {

using State = benchmark::State;

QString words() { return QString::fromStdU16String(wordText()); }

template <class Work>
void repeat(State& state, Work work) {
  for (auto _ : state) {
    auto result = work();
    benchmark::DoNotOptimize(result);
  }
}

void findAbsent(State& state) {
  const QString text = words();
  const QString part = QStringLiteral("qux;");
  repeat(state, [&] { return text.indexOf(part); });
}

void replaceAll(State& state) {
  const QString text = words();
  repeat(state, [&] {
    QString copy = text;
    copy.replace(QStringLiteral(", "), QStringLiteral(" and "));
    return copy;
  });
}

QStringList names() {
  QStringList all;
  for (const std::string& name : randomNames(100'000)) all += QString::fromStdString(name);
  return all;
}

void joinShort(State& state) {
  const QStringList all = names();
  repeat(state, [&] { return all.join(QStringLiteral(", ")); });
}

template <auto Text>
void fromUtf8(State& state) {
  const std::string bytes = Text();
  repeat(state,
         [&] { return QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size())); });
}

template <auto Text>
void toUtf8(State& state) {
  const QString text = QString::fromStdString(Text());
  repeat(state, [&] { return text.toUtf8(); });
}

void lowerShort(State& state) {
  const QString text = QString::fromUtf8("Content-Type: Text/HTML");
  repeat(state, [&] { return text.toLower(); });
}

void sortInsensitively(State& state) {
  const QStringList all = names();
  repeat(state, [&] {
    QStringList sorted = all;
    sorted.sort(Qt::CaseInsensitive);
    return sorted;
  });
}

void formatNameAndCount(State& state) {
  const QString name = QStringLiteral("Untitled document");
  repeat(state, [&] { return QStringLiteral("%1 (%2)").arg(name).arg(42); });
}

struct Record {
  QString name;
  QString version;
  QString section;
};

void readRecords(State& state) {
  const QString text = QString::fromStdString(recordText());
  repeat(state, [&] {
    std::vector<std::unique_ptr<Record>> records;
    const QStringList lines = text.split(u'\n');
    for (const QString& line : lines) {
      const QStringList fields = line.split(u'\t');
      if (fields.size() == 4)
        records.push_back(std::make_unique<Record>(Record{fields[0], fields[1], fields[2]}));
    }
    return records;
  });
}

}  // namespace

void compareQtStrings() {
  comparePeer("FindAbsent", "Qt", &findAbsent);
  comparePeer("ReplaceAll", "Qt", &replaceAll);
  comparePeer("JoinShort", "Qt", &joinShort);
  comparePeer("FromUtf8Ascii", "Qt", &fromUtf8<&asciiText>);
  comparePeer("ToUtf8Ascii", "Qt", &toUtf8<&asciiText>);
  comparePeer("FromUtf8Mixed", "Qt", &fromUtf8<&mixedText>);
  comparePeer("ToUtf8Mixed", "Qt", &toUtf8<&mixedText>);
  comparePeer("LowerShort", "Qt", &lowerShort);
  comparePeer("SortInsensitively", "Qt", &sortInsensitively);
  comparePeer("Format", "Qt", &formatNameAndCount);
  comparePeer("DelimitedText", "Qt", &readRecords);
}

}  // namespace qz::bench
