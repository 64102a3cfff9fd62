/// @file
/// The classes whose Objects are measured, as an application declares them.
#pragma once

#include <cstdint>
#include <vector>

#include "Platform/Runtime/Derives.h"

namespace qz::bench {

class Address : public Derives<Address, NSObject> {
 public:
  static void describe(ClassDescription<Address>& is);
  explicit Address(int zip) : zip_(zip) {}
  int zip() const { return zip_; }

 private:
  int zip_;
};

class Company : public Derives<Company, NSObject> {
 public:
  static void describe(ClassDescription<Company>& is);
  explicit Company(Address* address) : address_(address) {}
  Ref<Address> address() const { return address_; }

 private:
  Ref<Address> address_;
};

class Person : public Derives<Person, NSObject> {
 public:
  static void describe(ClassDescription<Person>& is);
  explicit Person(int age = 0, Company* employer = nullptr) : age_(age), employer_(employer) {}

  int age() const { return age_; }
  void setAge(int age) { age_ = age; }
  bool isAdult() const { return age_ >= 500'000; }
  Ref<Company> employer() const { return employer_; }
  NSComparisonResult compareByAge(Person* other) const {
    return static_cast<NSComparisonResult>((age_ > other->age_) - (age_ < other->age_));
  }

 protected:
  int age_;
  Ref<Company> employer_;
};

using People = std::vector<Ref<Person>>;

/// People of one class, of these ages, each with an employer who has an address.
People makePeople(const std::vector<std::int32_t>& ages);

/// The same of eight classes, each with an `age` and a `compareByAge:` of its own, at random.
People makeMixedPeople(const std::vector<std::int32_t>& ages);

}  // namespace qz::bench
