#include "QZFoundation/NSMutableString-QZFoundation.h"

#include "Platform/Runtime/Describe.h"

namespace qz {

void appendCharacter(NSMutableString* self, char16_t character) {
  self->appendCharacters({&character, 1});
}

void deleteLastCharacter(NSMutableString* self) {
  if (self->length() > 0) self->deleteCharactersInRange({self->length() - 1, 1});
}

void detail::registerNSMutableStringQZFoundation() {
  extend<NSMutableString>("QZFoundation")
      .method<&appendCharacter>("appendCharacter:")
      .method<&deleteLastCharacter>("deleteLastCharacter");
}

}  // namespace qz
