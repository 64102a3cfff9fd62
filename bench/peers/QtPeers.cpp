// Qt 6: calls by name, properties, variants.
#include <QMetaMethod>
#include <QMetaObject>
#include <QObject>
#include <QString>
#include <QVariant>
#include <algorithm>
#include <memory>
#include <numeric>

#include "bench/support/Comparison.h"
#include "bench/support/Data.h"
#include "bench/support/Families.h"

namespace qz::bench {

class QtPerson : public QObject {
  Q_OBJECT
  Q_PROPERTY(int age READ age WRITE setAge)
  Q_PROPERTY(QObject* next READ next)

 public:
  explicit QtPerson(int age = 0, QObject* next = nullptr) : age_(age), next_(next) {}
  Q_INVOKABLE int age() const { return age_; }
  Q_INVOKABLE int compareByAge(QObject* other) const {
    const int theirs = static_cast<QtPerson*>(other)->age_;
    return (age_ > theirs) - (age_ < theirs);
  }
  void setAge(int age) { age_ = age; }
  QObject* next() const { return next_; }

 private:
  int age_;
  QObject* next_;
};

namespace {

using People = std::vector<std::unique_ptr<QtPerson>>;

People makePeople(const std::vector<std::int32_t>& ages) {
  People people;
  for (const std::int32_t age : ages) people.push_back(std::make_unique<QtPerson>(age));
  return people;
}

template <class Visit>
void visitAll(benchmark::State& state, Visit visit) {
  const People people = makePeople(randomInts(visited, 1'000'000));
  for (auto _ : state) {
    std::int64_t sum = 0;
    for (const auto& person : people) sum += visit(static_cast<QObject*>(person.get()));
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(visited));
}

void invokeByName(benchmark::State& state) {
  visitAll(state, [](QObject* person) {
    int age = 0;
    QMetaObject::invokeMethod(person, "age", Qt::DirectConnection, Q_RETURN_ARG(int, age));
    return age;
  });
}

void invokeByNameWithObject(benchmark::State& state) {
  QtPerson other(50);
  visitAll(state, [&other](QObject* person) {
    int order = 0;
    QMetaObject::invokeMethod(person, "compareByAge", Qt::DirectConnection,
                              Q_RETURN_ARG(int, order), Q_ARG(QObject*, &other));
    return order;
  });
}

void invokeMetaMethod(benchmark::State& state) {
  const QMetaObject& about = QtPerson::staticMetaObject;
  const QMetaMethod method = about.method(about.indexOfMethod("age()"));
  visitAll(state, [&method](QObject* person) {
    int age = 0;
    method.invoke(person, Qt::DirectConnection, Q_RETURN_ARG(int, age));
    return age;
  });
}

void findMethod(benchmark::State& state) {
  constexpr std::array names{"age()", "compareByAge(QObject*)", "count()", "length()"};
  std::size_t i = 0;
  visitAll(state, [&](QObject* person) {
    return person->metaObject()->indexOfMethod(names[i++ % names.size()]) >= 0 ? 1 : 0;
  });
}

void newAndDelete(benchmark::State& state) {
  for (auto _ : state) {
    QObject* person = new QtPerson(36);
    benchmark::DoNotOptimize(person);
    delete person;
  }
}

void readProperty(benchmark::State& state) {
  visitAll(state, [](QObject* person) {
    QVariant age = person->property("age");
    benchmark::DoNotOptimize(age);
    return 0;
  });
}

void writeProperty(benchmark::State& state) {
  const QVariant age = 100'000;
  visitAll(state, [&age](QObject* person) { return person->setProperty("age", age) ? 1 : 0; });
}

void readPath(benchmark::State& state) {
  QtPerson last(12345);
  QtPerson middle(0, &last);
  QtPerson person(0, &middle);
  for (auto _ : state) {
    QVariant age =
        person.property("next").value<QObject*>()->property("next").value<QObject*>()->property(
            "age");
    benchmark::DoNotOptimize(age);
  }
}

QVariantList variants(std::size_t count) {
  QVariantList list;
  list.reserve(static_cast<qsizetype>(count));
  for (std::size_t i = 0; i < count; ++i) list.append(QVariant(static_cast<int>(i)));
  return list;
}

void makeVariants(benchmark::State& state) {
  for (auto _ : state) {
    QVariantList list = variants(1'000'000);
    benchmark::DoNotOptimize(list);
  }
}

void keepVariants(std::size_t count) { new QVariantList(variants(count)); }

template <class List, class Less>
void sortCopies(benchmark::State& state, const List& values, Less less) {
  for (auto _ : state) {
    state.PauseTiming();
    List copy = values;
    copy.detach();
    state.ResumeTiming();
    std::sort(copy.begin(), copy.end(), less);
    benchmark::ClobberMemory();
    state.PauseTiming();
    copy = {};
    state.ResumeTiming();
  }
}

void sortVariants(benchmark::State& state) {
  QVariantList list;
  for (const std::int32_t value : anyInts(1'000'000)) list.append(QVariant(value));
  sortCopies(state, list,
             [](const QVariant& a, const QVariant& b) { return a.toInt() < b.toInt(); });
}

template <auto Texts>
void sortStrings(benchmark::State& state) {
  QList<QString> list;
  for (const std::string& text : Texts(100'000)) list.append(QString::fromStdString(text));
  sortCopies(state, list,
             [](const QString& a, const QString& b) { return QString::compare(a, b) < 0; });
}

void sortByProperty(benchmark::State& state) {
  const People people = makePeople(anyInts(100'000));
  QList<QObject*> list;
  for (const auto& person : people) list.append(person.get());
  sortCopies(state, list, [](const QObject* a, const QObject* b) {
    return a->property("age").toInt() < b->property("age").toInt();
  });
}

void findByProperty(benchmark::State& state) {
  std::vector<std::int32_t> ages(100'000);
  std::iota(ages.begin(), ages.end(), 10'000);
  const People people = makePeople(ages);
  for (auto _ : state) {
    auto found = std::ranges::find_if(
        people, [&](const auto& each) { return each->property("age").toInt() == ages.back(); });
    benchmark::DoNotOptimize(found);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(ages.size()));
}

}  // namespace

void compareQt() {
  comparePeer("SendOneClass", "Qt", &invokeByName);
  comparePeer("PerformOneClass", "Qt", &invokeByNameWithObject);
  comparePeer("MethodForSelector", "Qt", &invokeMetaMethod);
  comparePeer("RespondsToSelector", "Qt", &findMethod);
  comparePeer("MakeObject", "Qt", &newAndDelete);
  comparePeer("ValueForKey", "Qt", &readProperty);
  comparePeer("SetValueForKey", "Qt", &writeProperty);
  comparePeer("ValueForKeyPath", "Qt", &readPath);
  comparePeer("BoxedInts", "Qt", &makeVariants);
  comparePeer("SortNumbers", "Qt", &sortVariants);
  comparePeer("SortStrings", "Qt", &sortStrings<&randomNames>);
  comparePeer("SortPaths", "Qt", &sortStrings<&randomPaths>);
  comparePeer("SortByKeyPath", "Qt", &sortByProperty);
  comparePeer("MatchByKeyPath", "Qt", &findByProperty);
  compareMemoryPeer("BoxedInts", "Qt", &keepVariants);
}

}  // namespace qz::bench

#include "QtPeers.moc"
