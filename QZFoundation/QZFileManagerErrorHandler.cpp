#include "QZFoundation/QZFileManagerErrorHandler.h"

#include <cerrno>

#include "Platform/Collections/NSDictionary.h"
#include "Platform/Runtime/Describe.h"

namespace qz {

Ref<QZFileManagerErrorHandler> QZFileManagerErrorHandler::sharedHandler() {
  static auto* const handler = make<QZFileManagerErrorHandler>().leak();
  return Ref<QZFileManagerErrorHandler>(handler);
}

bool QZFileManagerErrorHandler::fileManager_shouldProceedAfterError(NSFileManager*,
                                                                    NSDictionary* failure) {
  const int number = errno;
  const Ref<NSObject> text =
      failure == nullptr ? nullptr : failure->objectForKey(NSFileManagerErrorTextKey);
  setLastError(
      make<NSError>(NSPOSIXErrorDomain, number,
                    NSDictionary::dictionaryWithObjectsAndKeys(text, NSLocalizedDescriptionKey)));
  return false;
}

void QZFileManagerErrorHandler::setLastError(NSError* error) {
  Ref<NSError> old(error);  // let go of when the lock is
  const std::lock_guard guard(mutex_);
  if (lastError_ != error) lastError_.swap(old);
}

Ref<NSError> QZFileManagerErrorHandler::lastError() {
  const std::lock_guard guard(mutex_);
  return std::exchange(lastError_, nullptr);
}

void QZFileManagerErrorHandler::describe(ClassDescription<QZFileManagerErrorHandler>& is) {
  using Self = QZFileManagerErrorHandler;
  is.named("QZFileManagerErrorHandler")
      .classMethod<&Self::sharedHandler>("sharedHandler")
      .method<&Self::fileManager_shouldProceedAfterError>("fileManager:shouldProceedAfterError:")
      .method<&Self::setLastError>("setLastError:")
      .method<&Self::lastError>("lastError");
}

}  // namespace qz
