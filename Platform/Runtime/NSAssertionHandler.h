/// @file
/// Where failed assertions go.
#pragma once

#include <cstdint>

#include "Platform/Runtime/Derives.h"

#pragma GCC visibility push(default)

namespace qz {

/// Receives failed assertions of this thread. The default raises NSInternalInconsistencyException;
/// a subclass may log instead and return, and then the operation that asserted goes on.
class NSAssertionHandler : public Derives<NSAssertionHandler, NSObject> {
 public:
  static void describe(ClassDescription<NSAssertionHandler>& is);

  /// The calling thread's handler; the process-wide default until one is set. Never nil.
  static Ref<NSAssertionHandler> currentHandler();

  /// Sets the calling thread's handler, which is kept alive; nil goes back to the default.
  static void setCurrentHandler(NSAssertionHandler* handler);

  /// A failure inside a method of `object`; the texts and the Object may be nil. The default's
  /// exception has `description` as its reason, and as user information the operation, the file and
  /// the line under "NSAssertionOperation", "NSAssertionFile" and "NSAssertionLine".
  virtual void handleFailureInMethod_object_file_lineNumber_description(Selector selector,
                                                                        NSObject* object,
                                                                        NSString* file,
                                                                        std::int32_t lineNumber,
                                                                        NSString* description);

  /// A failure inside a function.
  virtual void handleFailureInFunction_file_lineNumber_description(NSString* function,
                                                                   NSString* file,
                                                                   std::int32_t lineNumber,
                                                                   NSString* description);
};

}  // namespace qz

#pragma GCC visibility pop
