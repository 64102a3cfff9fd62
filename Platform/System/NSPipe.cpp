#include "Platform/System/NSPipe.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Values/detail/PosixError.h"

namespace qz {

NSPipe::NSPipe() {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0)
    detail::raise(NSFileHandleOperationException, "pipe: " + detail::posixErrorText(errno));
  reading_ = NSFileHandle::initWithFileDescriptor_closeOnDealloc(ends[0], true);
  writing_ = NSFileHandle::initWithFileDescriptor_closeOnDealloc(ends[1], true);
}

Ref<NSPipe> NSPipe::pipe() { return make<NSPipe>(); }

void NSPipe::describe(ClassDescription<NSPipe>& is) {
  is.named("NSPipe")
      .classMethod<&NSPipe::pipe>("pipe")
      .method<&NSPipe::fileHandleForReading>("fileHandleForReading")
      .method<&NSPipe::fileHandleForWriting>("fileHandleForWriting");
}

}  // namespace qz
