// Qt 6: QLocale and QDateTime.
#include <QDateTime>
#include <QLocale>
#include <QString>
#include <QTimeZone>

#include "bench/support/Comparison.h"
#include "bench/support/Families.h"

namespace qz::bench {
namespace {

using State = benchmark::State;

template <class Work>
void repeat(State& state, Work work) {
  int i = 0;
  for (auto _ : state) {
    auto result = work(i++ % 64);
    benchmark::DoNotOptimize(result);
  }
}

void formatSize(State& state) {
  const QLocale locale(QStringLiteral("en_US"));
  repeat(state, [&](int i) {
    return locale.formattedDataSize(qint64{i} * 1'234'567'891 >> (i % 24), 1,
                                    QLocale::DataSizeSIFormat);
  });
}

void formatNumber(State& state) {
  const QLocale locale(QStringLiteral("en_US"));
  repeat(state, [&](int i) { return locale.toString(i * 12345.678, 'f', 2); });
}

void parseNumber(State& state) {
  const QLocale locale(QStringLiteral("en_US"));
  QStringList texts;
  for (int i = 0; i < 64; ++i) texts += locale.toString(i * 12345.678, 'f', 2);
  repeat(state, [&](int i) { return locale.toDouble(texts[i]); });
}

void formatDate(State& state) {
  const QTimeZone zone("Europe/Berlin");
  const QString format = QStringLiteral("yy-MM-dd HH:mm:ss");
  repeat(state, [&](int i) {
    return QDateTime::fromSecsSinceEpoch(1'700'000'000 + i * 86'399, zone).toString(format);
  });
}

}  // namespace

void compareQtFormatters() {
  comparePeer("FormatSize", "Qt", &formatSize);
  comparePeer("FormatNumber", "Qt", &formatNumber);
  comparePeer("ParseNumber", "Qt", &parseNumber);
  comparePeer("FormatDate", "Qt", &formatDate);
}

}  // namespace qz::bench
