#include "Platform/System/FileProgress.h"

#include <cerrno>
#include <utility>

#include "Platform/Runtime/NSException.h"

namespace qz {
namespace {

thread_local FileProgress* innermost = nullptr;

}  // namespace

FileProgress::FileProgress(Function function) : function_(std::move(function)), outer_(innermost) {
  if (!function_) detail::raise(NSInvalidArgumentException, "FileProgress: the function is empty");
  innermost = this;
}

FileProgress::~FileProgress() { innermost = outer_; }

bool FileProgress::isHeard() noexcept { return innermost != nullptr; }

bool FileProgress::tell(std::uint64_t bytes) {
  if (innermost == nullptr || innermost->function_(bytes)) return true;
  errno = ECANCELED;
  return false;
}

}  // namespace qz
