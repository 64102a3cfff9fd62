#include <iostream>

#include "Platform/Runtime/NSObject.h"
#include "QZFoundation/QZFoundation.h"

int main() {
  std::cout << "QZFoundation found, built and linked\n";
  return 0;
}
