#include "tests/support/Person.h"

#include "Platform/Runtime/Describe.h"

namespace qz::test {

int Person::alive = 0;

NSComparisonResult Person::compareByAge(Person* other) const {
  return age < other->age   ? NSOrderedAscending
         : age > other->age ? NSOrderedDescending
                            : NSOrderedSame;
}

Ref<NSString> Person::greet(NSString* greeting) const {
  return NSString::stringWithUTF8String(to_string(greeting) + ", " + to_string(name_));
}

void Person::describe(ClassDescription<Person>& is) {
  is.named("Person")
      .property<&Person::name, &Person::setName>("name")
      .property<&Person::title>("title")
      .field<&Person::age>("age")
      .field<&Person::married>("married")
      .field<&Person::grade>("grade")
      .field<&Person::number>("number")
      .field<&Person::weight>("weight")
      .readOnlyField<&Person::height>("height")
      .field<&Person::nick>("nick")
      .field<&Person::partner>("partner")
      .method<&Person::compareByAge>("compareByAge:")
      .method<&Person::greet>("greet:")
      .method<&Person::sum>("sum:b:c:d:e:")
      .method<&Person::half>("half:")
      .method<&Person::join>("join:with:")
      .method<&Person::doNothing>("doNothing");
}

void Worker::describe(ClassDescription<Worker>& is) {
  is.named("Worker").field<&Worker::wage>("wage");
}

}  // namespace qz::test
