#include "bench/support/People.h"

#include <array>

#include "Platform/Runtime/Describe.h"
#include "bench/support/Data.h"

namespace qz::bench {
namespace {

template <int Kind>
class Worker : public Derives<Worker<Kind>, Person> {
 public:
  static void describe(ClassDescription<Worker>& is);
  using Derives<Worker<Kind>, Person>::Derives;

  int ageOfWorker() const { return this->age_ + Kind; }
  NSComparisonResult compareAgeOfWorker(Person* other) const { return Person::compareByAge(other); }
};

template <int Kind>
void Worker<Kind>::describe(ClassDescription<Worker>& is) {
  static constexpr char name[] = {'B', 'e', 'n', 'c', 'h',        'W', 'o',
                                  'r', 'k', 'e', 'r', '0' + Kind, '\0'};
  is.named(name)
      .template method<&Worker::ageOfWorker>("age")
      .template method<&Worker::compareAgeOfWorker>("compareByAge:");
}

template <int Kind>
Ref<Person> makeWorker(int age, Company* employer) {
  return make<Worker<Kind>>(age, employer);
}

constexpr std::array makers{&makeWorker<0>, &makeWorker<1>, &makeWorker<2>, &makeWorker<3>,
                            &makeWorker<4>, &makeWorker<5>, &makeWorker<6>, &makeWorker<7>};
static_assert(makers.size() == classes);

}  // namespace

void Address::describe(ClassDescription<Address>& is) {
  is.named("BenchAddress").property<&Address::zip>("zip");
}

void Company::describe(ClassDescription<Company>& is) {
  is.named("BenchCompany").property<&Company::address>("address");
}

void Person::describe(ClassDescription<Person>& is) {
  is.named("BenchPerson")
      .property<&Person::age, &Person::setAge>("age")
      .property<&Person::employer>("employer")
      .method<&Person::isAdult>("isAdult")
      .method<&Person::compareByAge>("compareByAge:");
}

People makePeople(const std::vector<std::int32_t>& ages) {
  People people;
  for (const std::int32_t age : ages)
    people.push_back(make<Person>(age, make<Company>(make<Address>(age))));
  return people;
}

People makeMixedPeople(const std::vector<std::int32_t>& ages) {
  const auto kinds = randomInts(ages.size(), static_cast<std::int32_t>(classes));
  People people;
  for (std::size_t i = 0; i < ages.size(); ++i)
    people.push_back(
        makers[static_cast<std::size_t>(kinds[i])](ages[i], make<Company>(make<Address>(ages[i]))));
  return people;
}

}  // namespace qz::bench
