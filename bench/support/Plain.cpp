#include "bench/support/Plain.h"

#include <array>
#include <utility>

#include "bench/support/Data.h"

namespace qz::bench::plain {
namespace {

template <int Kind>
class Worker : public Person {
 public:
  using Person::Person;
  int age() const override { return age_ + Kind; }
  int compareByAge(const Person& other) const override { return Person::compareByAge(other); }
};

template <int Kind>
Person* newWorker(int age, Handle<Company> employer) {
  return new Worker<Kind>(age, std::move(employer));
}

constexpr std::array makers{&newWorker<0>, &newWorker<1>, &newWorker<2>, &newWorker<3>,
                            &newWorker<4>, &newWorker<5>, &newWorker<6>, &newWorker<7>};
static_assert(makers.size() == classes);

Handle<Company> newEmployer(int zip) {
  return Handle<Company>(new Company(Handle<Address>(new Address(zip))));
}

}  // namespace

Object::~Object() = default;
Value::~Value() = default;

int Address::zip() const { return zip_; }
Handle<Address> Company::address() const { return address_; }
int Person::age() const { return age_; }
void Person::setAge(int age) { age_ = age; }
bool Person::isAdult() const { return age_ >= 500'000; }
Handle<Company> Person::employer() const { return employer_; }
int Person::compareByAge(const Person& other) const {
  return (age_ > other.age_) - (age_ < other.age_);
}
std::int32_t Int::value() const { return value_; }

People makePeople(const std::vector<std::int32_t>& ages) {
  People people;
  for (const std::int32_t age : ages)
    people.push_back(Handle<Person>(new Person(age, newEmployer(age))));
  return people;
}

People makeMixedPeople(const std::vector<std::int32_t>& ages) {
  const auto kinds = randomInts(ages.size(), static_cast<std::int32_t>(classes));
  People people;
  for (std::size_t i = 0; i < ages.size(); ++i)
    people.push_back(
        Handle<Person>(makers[static_cast<std::size_t>(kinds[i])](ages[i], newEmployer(ages[i]))));
  return people;
}

}  // namespace qz::bench::plain
