// Qt 6: signals of a property's change.
#include <QObject>

#include "bench/support/Comparison.h"
#include "bench/support/Families.h"
#include "bench/support/Observing.h"

namespace qz::bench {

class QtThermometer : public QObject {
  Q_OBJECT

 public:
  void setDegrees(int degrees) {
    degrees_ = degrees;
    Q_EMIT degreesChanged(degrees);
  }

 Q_SIGNALS:
  void degreesChanged(int degrees);

 private:
  int degrees_ = 0;
};

class QtReader : public QObject {
  Q_OBJECT

 public Q_SLOTS:
  void read(int degrees) { benchmark::DoNotOptimize(degrees); }
};

namespace {

void emitUnobserved(benchmark::State& state) {
  QtThermometer thermometer;
  int value = 0;
  for (auto _ : state) thermometer.setDegrees(++value);
}

void emitToOne(benchmark::State& state) {
  QtThermometer thermometer;
  QtReader reader;
  QObject::connect(&thermometer, &QtThermometer::degreesChanged, &reader, &QtReader::read);
  int value = 0;
  for (auto _ : state) thermometer.setDegrees(++value);
}

void connectAndDisconnect(benchmark::State& state) {
  QtThermometer thermometer;
  QtReader reader;
  for (auto _ : state)
    QObject::disconnect(
        QObject::connect(&thermometer, &QtThermometer::degreesChanged, &reader, &QtReader::read));
}

}  // namespace

void compareQtObserving() {
  comparePeer("SetUnobserved", "Qt", &emitUnobserved);
  comparePeer("TellObserver", "Qt, no Dictionary", &emitToOne);
  compare("AddAndRemoveObserver", {"add and remove an observer", "Qt connect and disconnect", 0.7},
          &addAndRemoveObserver, &connectAndDisconnect);
}

}  // namespace qz::bench

#include "QtObserving.moc"
