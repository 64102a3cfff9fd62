// A class as an application declares it, for tests of the run-time.
#pragma once

#include <string>

#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSString.h"

namespace qz::test {

class Person : public Derives<Person, NSObject> {
 public:
  static void describe(ClassDescription<Person>& is);

  Person() = default;
  explicit Person(NSString* name, int years = 0) : age(years), name_(name) {}

  Ref<NSString> name() const { return name_; }
  void setName(NSString* name) { name_ = Ref<NSString>(name); }
  virtual Ref<NSString> title() const { return "person"_ns; }

  NSComparisonResult compareByAge(Person* other) const;
  Ref<NSString> greet(NSString* greeting) const;
  int sum(int a, int b, int c, int d, int e) const { return age + a + b + c + d + e; }
  double half(double of) const { return of / 2; }
  std::string join(const std::string& a, const std::string& b) const { return a + b; }
  void doNothing() {}

  int age = 0;
  bool married = false;
  signed char grade = 0;
  std::uint64_t number = 0;
  float weight = 0;
  double height = 0;
  std::string nick;
  Ref<Person> partner;

  static int alive;  // Objects of this class (and below) that exist

 private:
  struct Counter {
    Counter() { ++alive; }
    ~Counter() { --alive; }
  } counter_;
  Ref<NSString> name_;
};

class Worker : public Derives<Worker, Person> {
 public:
  static void describe(ClassDescription<Worker>& is);
  using Derives::Derives;
  Ref<NSString> title() const override { return "worker"_ns; }
  int wage = 100;
};

}  // namespace qz::test
