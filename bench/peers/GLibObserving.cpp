// GLib: property notification.
#include <glib-object.h>

#include "bench/support/Comparison.h"
#include "bench/support/Families.h"
#include "bench/support/Observing.h"

namespace qz::bench {
namespace {

struct Thermometer {
  GObject parent;
  int degrees;
};

enum Property { propertyDegrees = 1 };
GParamSpec* degreesSpec = nullptr;

void getProperty(GObject* object, guint, GValue* value, GParamSpec*) {
  g_value_set_int(value, reinterpret_cast<Thermometer*>(object)->degrees);
}
void setProperty(GObject* object, guint, const GValue* value, GParamSpec*) {
  reinterpret_cast<Thermometer*>(object)->degrees = g_value_get_int(value);
}

void initialiseClass(gpointer memory, gpointer) {
  auto* aClass = static_cast<GObjectClass*>(memory);
  aClass->get_property = &getProperty;
  aClass->set_property = &setProperty;
  degreesSpec =
      g_param_spec_int("degrees", "degrees", "degrees", G_MININT, G_MAXINT, 0,
                       static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS |
                                                G_PARAM_EXPLICIT_NOTIFY));
  g_object_class_install_property(aClass, propertyDegrees, degreesSpec);
}

Thermometer* newThermometer() {
  static const GType type = g_type_register_static_simple(
      G_TYPE_OBJECT, "QZBenchThermometer", sizeof(GObjectClass), &initialiseClass,
      sizeof(Thermometer), nullptr, G_TYPE_FLAG_NONE);
  return static_cast<Thermometer*>(g_object_new(type, nullptr));
}

// As our observer, the handler reads the new value; GLib hands over no old one.
void readDegrees(GObject* object, GParamSpec*, gpointer) {
  GValue degrees = G_VALUE_INIT;
  g_object_get_property(object, "degrees", &degrees);
  int value = g_value_get_int(&degrees);
  benchmark::DoNotOptimize(value);
  g_value_unset(&degrees);
}
void doNothing(GObject*, GParamSpec*, gpointer) {}

void setAndNotify(Thermometer* thermometer, int degrees) {
  thermometer->degrees = degrees;
  g_object_notify_by_pspec(&thermometer->parent, degreesSpec);
}

void notifyUnobserved(benchmark::State& state) {
  Thermometer* thermometer = newThermometer();
  int value = 0;
  for (auto _ : state) setAndNotify(thermometer, ++value);
  g_object_unref(thermometer);
}

void notify(benchmark::State& state, GCallback handler) {
  Thermometer* thermometer = newThermometer();
  g_signal_connect(thermometer, "notify::degrees", handler, nullptr);
  int value = 0;
  for (auto _ : state) setAndNotify(thermometer, ++value);
  g_object_unref(thermometer);
}

void notifyAndRead(benchmark::State& state) { notify(state, G_CALLBACK(&readDegrees)); }
void notifyOnly(benchmark::State& state) { notify(state, G_CALLBACK(&doNothing)); }

void connectAndDisconnect(benchmark::State& state) {
  Thermometer* thermometer = newThermometer();
  for (auto _ : state)
    g_signal_handler_disconnect(thermometer, g_signal_connect(thermometer, "notify::degrees",
                                                              G_CALLBACK(&doNothing), nullptr));
  g_object_unref(thermometer);
}

}  // namespace

void compareGLibObserving() {
  comparePeer("SetUnobserved", "GLib", &notifyUnobserved);
  compare("TellObserver",
          {"set, and one observer told with the full change Dictionary", "GObject notify", 0.4},
          &observerToldWithDictionary, &notifyOnly);
  comparePeer("TellObserver", "GLib, value read", &notifyAndRead);
  comparePeer("AddAndRemoveObserver", "GLib", &connectAndDisconnect);
}

}  // namespace qz::bench
