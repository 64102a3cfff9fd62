// Notes what fails an assertion, and goes on.
#pragma once

#include "Platform/Runtime/NSAssertionHandler.h"
#include "tests/support/Test.h"

namespace qz::test {

class Witness : public Derives<Witness, NSAssertionHandler> {
 public:
  static void describe(ClassDescription<Witness>& is) { is.named("AssertionWitness"); }
  void handleFailureInMethod_object_file_lineNumber_description(Selector selector, NSObject*,
                                                                NSString* file,
                                                                std::int32_t lineNumber,
                                                                NSString* description) override {
    seen = std::string(selector.name()) + " " + to_string(file) + ": " + to_string(description);
    line = lineNumber;
  }
  std::string seen;
  std::int32_t line = 0;
};

}  // namespace qz::test
