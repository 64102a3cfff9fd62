#include "Platform/Runtime/NSAssertionHandler.h"

#include <string>

#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSNumber.h"

namespace qz {
namespace {

Ref<NSAssertionHandler>& threadHandler() {
  thread_local Ref<NSAssertionHandler> handler;
  return handler;
}

// Where it happened goes into the user information; the reason is the description alone, so that
// callers can compare it.
[[noreturn]] void fail(NSString* where, NSString* file, std::int32_t line, NSString* description) {
  auto place = make<NSMutableDictionary>();
  if (where != nullptr) place->setObject_forKey(where, "NSAssertionOperation"_ns);
  if (file != nullptr) place->setObject_forKey(file, "NSAssertionFile"_ns);
  place->setObject_forKey(NSNumber::numberWithInt(line), "NSAssertionLine"_ns);
  make<NSException>(NSInternalInconsistencyException, description, place)->raise();
}

}  // namespace

Ref<NSAssertionHandler> NSAssertionHandler::currentHandler() {
  if (threadHandler()) return threadHandler();
  static NSAssertionHandler* const common = make<NSAssertionHandler>().leak();
  return Ref<NSAssertionHandler>(common);
}

void NSAssertionHandler::setCurrentHandler(NSAssertionHandler* handler) {
  threadHandler() = Ref<NSAssertionHandler>(handler);
}

void NSAssertionHandler::handleFailureInMethod_object_file_lineNumber_description(
    Selector selector, NSObject* object, NSString* file, std::int32_t lineNumber,
    NSString* description) {
  const std::string where = "-[" +
                            std::string(object == nullptr ? "nil" : object->classObject()->name()) +
                            " " + std::string(selector.name()) + "]";
  fail(NSString::stringWithUTF8String(where), file, lineNumber, description);
}

void NSAssertionHandler::handleFailureInFunction_file_lineNumber_description(
    NSString* function, NSString* file, std::int32_t lineNumber, NSString* description) {
  fail(function, file, lineNumber, description);
}

void NSAssertionHandler::describe(ClassDescription<NSAssertionHandler>& is) {
  using Self = NSAssertionHandler;
  is.named("NSAssertionHandler")
      .classMethod<&Self::currentHandler>("currentHandler")
      .method<&Self::handleFailureInMethod_object_file_lineNumber_description>(
          "handleFailureInMethod:object:file:lineNumber:description:")
      .method<&Self::handleFailureInFunction_file_lineNumber_description>(
          "handleFailureInFunction:file:lineNumber:description:");
}

}  // namespace qz
