// GLib: signals by name, properties, variants.
#include <glib-object.h>

#include <array>

#include "bench/support/Comparison.h"
#include "bench/support/Data.h"
#include "bench/support/Families.h"

namespace qz::bench {
namespace {

struct Person {
  GObject parent;
  int age;
  Person* next;  // owned
};

enum Property { propertyAge = 1, propertyNext = 2 };

GObjectClass* baseClass = nullptr;

void getProperty(GObject* object, guint id, GValue* value, GParamSpec*) {
  auto* person = reinterpret_cast<Person*>(object);
  if (id == propertyAge)
    g_value_set_int(value, person->age);
  else
    g_value_set_object(value, person->next);
}

void setProperty(GObject* object, guint id, const GValue* value, GParamSpec*) {
  if (id == propertyAge) reinterpret_cast<Person*>(object)->age = g_value_get_int(value);
}

int answerAge(Person* person, gpointer) { return person->age; }

int answerOrder(Person* person, Person* other, gpointer) {
  return (person->age > other->age) - (person->age < other->age);
}

void finalize(GObject* object) {
  if (auto* next = reinterpret_cast<Person*>(object)->next) g_object_unref(next);
  baseClass->finalize(object);
}

void initialiseClass(gpointer memory, gpointer) {
  auto* aClass = static_cast<GObjectClass*>(memory);
  baseClass = static_cast<GObjectClass*>(g_type_class_peek_parent(memory));
  aClass->get_property = &getProperty;
  aClass->set_property = &setProperty;
  aClass->finalize = &finalize;
  const auto readWrite = static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS);
  g_object_class_install_property(
      aClass, propertyAge, g_param_spec_int("age", "age", "age", G_MININT, G_MAXINT, 0, readWrite));
  g_object_class_install_property(
      aClass, propertyNext, g_param_spec_object("next", "next", "next", G_TYPE_OBJECT, readWrite));
  const GType type = G_TYPE_FROM_CLASS(memory);
  g_signal_new_class_handler("age", type, G_SIGNAL_RUN_LAST,
                             reinterpret_cast<GCallback>(&answerAge), nullptr, nullptr, nullptr,
                             G_TYPE_INT, 0);
  g_signal_new_class_handler("compare-by-age", type, G_SIGNAL_RUN_LAST,
                             reinterpret_cast<GCallback>(&answerOrder), nullptr, nullptr, nullptr,
                             G_TYPE_INT, 1, G_TYPE_OBJECT);
}

GType personType() {
  static const GType type =
      g_type_register_static_simple(G_TYPE_OBJECT, "QZBenchPerson", sizeof(GObjectClass),
                                    &initialiseClass, sizeof(Person), nullptr, G_TYPE_FLAG_NONE);
  return type;
}

Person* newPerson(int age, Person* next = nullptr) {
  auto* person = static_cast<Person*>(g_object_new(personType(), nullptr));
  person->age = age;
  person->next = next;
  return person;
}

GPtrArray* makePeople(const std::vector<std::int32_t>& ages) {
  GPtrArray* people = g_ptr_array_new_with_free_func(&g_object_unref);
  for (const std::int32_t age : ages) g_ptr_array_add(people, newPerson(age));
  return people;
}

template <class Visit>
void visitAll(benchmark::State& state, Visit visit) {
  GPtrArray* people = makePeople(randomInts(visited, 1'000'000));
  for (auto _ : state) {
    std::int64_t sum = 0;
    for (guint i = 0; i < people->len; ++i) sum += visit(static_cast<Person*>(people->pdata[i]));
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(visited));
  g_ptr_array_unref(people);
}

void emitByName(benchmark::State& state) {
  visitAll(state, [](Person* person) {
    int age = 0;
    g_signal_emit_by_name(person, "age", &age);
    return age;
  });
}

void emitByNameWithObject(benchmark::State& state) {
  Person* other = newPerson(50);
  visitAll(state, [other](Person* person) {
    int order = 0;
    g_signal_emit_by_name(person, "compare-by-age", other, &order);
    return order;
  });
  g_object_unref(other);
}

void emitById(benchmark::State& state) {
  g_type_class_ref(personType());
  const guint id = g_signal_lookup("age", personType());
  visitAll(state, [id](Person* person) {
    int age = 0;
    g_signal_emit(person, id, 0, &age);
    return age;
  });
}

void findSignal(benchmark::State& state) {
  constexpr std::array names{"age", "compare-by-age", "count", "length"};
  std::size_t i = 0;
  visitAll(state, [&](Person* person) {
    return g_signal_lookup(names[i++ % names.size()], G_TYPE_FROM_INSTANCE(person)) != 0 ? 1 : 0;
  });
}

void newAndUnref(benchmark::State& state) {
  for (auto _ : state) {
    gpointer person = g_object_new(personType(), nullptr);
    benchmark::DoNotOptimize(person);
    g_object_unref(person);
  }
}

void refAndUnref(benchmark::State& state) {
  visitAll(state, [](Person* person) {
    g_object_ref(person);
    g_object_unref(person);
    return 0;
  });
}

void readProperty(benchmark::State& state) {
  visitAll(state, [](Person* person) {
    GValue age = G_VALUE_INIT;
    g_object_get_property(&person->parent, "age", &age);
    const int answer = g_value_get_int(&age);
    g_value_unset(&age);
    return answer;
  });
}

void writeProperty(benchmark::State& state) {
  GValue age = G_VALUE_INIT;
  g_value_init(&age, G_TYPE_INT);
  g_value_set_int(&age, 100'000);
  visitAll(state, [&age](Person* person) {
    g_object_set_property(&person->parent, "age", &age);
    return 0;
  });
}

GObject* readObject(GObject* object) {
  GObject* next = nullptr;
  g_object_get(object, "next", &next, nullptr);
  return next;
}

void readPath(benchmark::State& state) {
  Person* person = newPerson(0, newPerson(0, newPerson(12345)));
  for (auto _ : state) {
    GObject* middle = readObject(&person->parent);
    GObject* last = readObject(middle);
    int age = 0;
    g_object_get(last, "age", &age, nullptr);
    benchmark::DoNotOptimize(age);
    g_object_unref(last);
    g_object_unref(middle);
  }
  g_object_unref(person);
}

void unrefVariant(gpointer variant) { g_variant_unref(static_cast<GVariant*>(variant)); }

template <class Values>
GPtrArray* variants(const Values& values) {
  GPtrArray* array = g_ptr_array_new_full(static_cast<guint>(values.size()), &unrefVariant);
  for (const auto value : values)
    g_ptr_array_add(array, g_variant_ref_sink(g_variant_new_int32(value)));
  return array;
}

void makeVariants(benchmark::State& state) {
  const auto values = anyInts(1'000'000);
  for (auto _ : state) {
    GPtrArray* array = variants(values);
    benchmark::DoNotOptimize(array);
    g_ptr_array_unref(array);
  }
}

void keepVariants(std::size_t count) {
  GPtrArray* array = g_ptr_array_sized_new(static_cast<guint>(count));
  for (std::size_t i = 0; i < count; ++i)
    g_ptr_array_add(array, g_variant_ref_sink(g_variant_new_int32(static_cast<gint32>(i))));
}

/// Sorts copies of the pointers; takes over `array`.
void sortCopies(benchmark::State& state, GPtrArray* array, GCompareFunc compare) {
  for (auto _ : state) {
    state.PauseTiming();
    GPtrArray* copy = g_ptr_array_sized_new(array->len);
    for (guint i = 0; i < array->len; ++i) g_ptr_array_add(copy, array->pdata[i]);
    state.ResumeTiming();
    g_ptr_array_sort(copy, compare);
    benchmark::ClobberMemory();
    state.PauseTiming();
    g_ptr_array_unref(copy);
    state.ResumeTiming();
  }
  g_ptr_array_unref(array);
}

template <class T>
T* element(gconstpointer place) {
  return *static_cast<T* const*>(place);
}

int orderVariants(gconstpointer a, gconstpointer b) {
  const int first = g_variant_get_int32(element<GVariant>(a));
  const int second = g_variant_get_int32(element<GVariant>(b));
  return (first > second) - (first < second);
}

int orderTexts(gconstpointer a, gconstpointer b) {
  return g_strcmp0(element<char>(a), element<char>(b));
}

int orderByProperty(gconstpointer a, gconstpointer b) {
  int first = 0;
  int second = 0;
  g_object_get(element<Person>(a), "age", &first, nullptr);
  g_object_get(element<Person>(b), "age", &second, nullptr);
  return (first > second) - (first < second);
}

void sortVariants(benchmark::State& state) {
  sortCopies(state, variants(anyInts(1'000'000)), &orderVariants);
}

template <auto Texts>
void sortTexts(benchmark::State& state) {
  GPtrArray* array = g_ptr_array_new_with_free_func(&g_free);
  for (const std::string& text : Texts(100'000)) g_ptr_array_add(array, g_strdup(text.c_str()));
  sortCopies(state, array, &orderTexts);
}

void sortByProperty(benchmark::State& state) {
  sortCopies(state, makePeople(anyInts(100'000)), &orderByProperty);
}

}  // namespace

void compareGLib() {
  comparePeer("SendOneClass", "GLib", &emitByName);
  comparePeer("PerformOneClass", "GLib", &emitByNameWithObject);
  comparePeer("MethodForSelector", "GLib", &emitById);
  comparePeer("RespondsToSelector", "GLib", &findSignal);
  comparePeer("MakeObject", "GLib", &newAndUnref);
  comparePeer("RetainRelease", "GLib", &refAndUnref);
  comparePeer("ValueForKey", "GLib", &readProperty);
  comparePeer("SetValueForKey", "GLib", &writeProperty);
  comparePeer("ValueForKeyPath", "GLib", &readPath);
  comparePeer("BoxedInts", "GLib", &makeVariants);
  comparePeer("SortNumbers", "GLib", &sortVariants);
  comparePeer("SortStrings", "GLib", &sortTexts<&randomNames>);
  comparePeer("SortPaths", "GLib", &sortTexts<&randomPaths>);
  comparePeer("SortByKeyPath", "GLib", &sortByProperty);
  compareMemoryPeer("BoxedInts", "GLib", &keepVariants);
}

}  // namespace qz::bench
