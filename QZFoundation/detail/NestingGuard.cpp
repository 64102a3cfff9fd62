#include "QZFoundation/detail/NestingGuard.h"

#include <string>

#include "Platform/Runtime/NSException.h"

namespace qz::detail {
namespace {

constinit thread_local unsigned depth = 0;

}  // namespace

NestingGuard::NestingGuard(const char* operation) {
  if (depth == maximumDepth)
    raise(NSInternalInconsistencyException,
          std::string(operation) + ": a collection holds itself or is nested too deeply");
  ++depth;
}

NestingGuard::~NestingGuard() { --depth; }

}  // namespace qz::detail
