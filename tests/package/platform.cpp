#include <iostream>

#include "Platform/Collections/NSArray.h"
#include "Platform/Runtime/NSException.h"

using namespace qz;

int main() {
  try {
    NSArray::array()->objectAtIndex(1);
  } catch (const Raised& raised) {
    std::cout << raised->name() << '\n';
    return 0;
  }
  return 1;
}
