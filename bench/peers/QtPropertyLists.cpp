// Qt 6: the same records as JSON and as CBOR, of which neither is a property list. Both documents
// hold what they have read in one tree of values; JSON has no dates and no bytes, which become
// text.
#include <QCborArray>
#include <QCborMap>
#include <QCborValue>
#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/NSDictionary.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/NSDate.h"
#include "Platform/Values/NSNumber.h"
#include "Platform/Values/NSString.h"
#include "bench/support/Comparison.h"
#include "bench/support/Families.h"
#include "bench/support/Records.h"

namespace qz::bench {
namespace {

QString textOf(NSObject* object) {
  return QString::fromUtf16(as<NSString>(object)->view().data(),
                            static_cast<qsizetype>(as<NSString>(object)->length()));
}

QDateTime timeOf(NSDate* date) {
  return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(date->timeIntervalSince1970() * 1000),
                                        Qt::UTC);
}

QByteArray bytesOf(NSData* data) {
  return QByteArray(data->view().data(), static_cast<qsizetype>(data->length()));
}

// `Value` is that of JSON or of CBOR.
template <class Value>
Value numberOf(NSNumber* number) {
  if (number->kind() == NumberKind::Bool) return Value(number->boolValue());
  if (isFloatingKind(number->kind())) return Value(number->doubleValue());
  return Value(static_cast<qint64>(number->longLongValue()));
}

struct Json {
  using Value = QJsonValue;
  using Array = QJsonArray;
  using Map = QJsonObject;
  static Value of(const QDateTime& time) { return time.toString(Qt::ISODate); }
  static Value of(const QByteArray& bytes) { return QString::fromLatin1(bytes.toBase64()); }
};

struct Cbor {
  using Value = QCborValue;
  using Array = QCborArray;
  using Map = QCborMap;
  static Value of(const QDateTime& time) { return Value(time); }
  static Value of(const QByteArray& bytes) { return Value(bytes); }
};

template <class Format>
typename Format::Value valueOf(NSObject* object) {
  if (auto* array = as<NSArray>(object)) {
    typename Format::Array values;
    for (NSObject* each : *array) values.append(valueOf<Format>(each));
    return values;
  }
  if (auto* dictionary = as<NSDictionary>(object)) {
    typename Format::Map values;
    for (const auto& [key, value] : dictionary) values.insert(textOf(key), valueOf<Format>(value));
    return values;
  }
  if (auto* number = as<NSNumber>(object)) return numberOf<typename Format::Value>(number);
  if (auto* date = as<NSDate>(object)) return Format::of(timeOf(date));
  if (auto* data = as<NSData>(object)) return Format::of(bytesOf(data));
  return textOf(object);
}

QJsonDocument jsonDocument() { return QJsonDocument(valueOf<Json>(records()).toArray()); }

template <class Work>
void repeat(benchmark::State& state, Work work) {
  for (auto _ : state) {
    auto result = work();
    benchmark::DoNotOptimize(result);
  }
}

void readJson(benchmark::State& state) {
  const QByteArray json = jsonDocument().toJson(QJsonDocument::Compact);
  repeat(state, [&] {
    QJsonDocument read = QJsonDocument::fromJson(json);
    if (read.array().size() != static_cast<qsizetype>(records()->count()))
      state.SkipWithError("cut");
    return read;
  });
}

void writeJson(benchmark::State& state) {
  const QJsonDocument document = jsonDocument();
  repeat(state, [&] { return document.toJson(QJsonDocument::Compact); });
}

void readCbor(benchmark::State& state) {
  const QByteArray cbor = valueOf<Cbor>(records()).toCbor();
  repeat(state, [&] {
    QCborValue read = QCborValue::fromCbor(cbor);
    if (read.toArray().size() != static_cast<qsizetype>(records()->count()))
      state.SkipWithError("cut");
    return read;
  });
}

void writeCbor(benchmark::State& state) {
  const QCborValue value = valueOf<Cbor>(records());
  repeat(state, [&] { return value.toCbor(); });
}

}  // namespace

void compareQtPropertyLists() {
  comparePeer("ListReadBinary", "QJsonDocument", &readJson);
  comparePeer("ListReadBinary", "QCborValue", &readCbor);
  comparePeer("ListWriteBinary", "QJsonDocument", &writeJson);
  comparePeer("ListWriteBinary", "QCborValue", &writeCbor);
}

}  // namespace qz::bench
