#include "Platform/Collections/detail/HashSupport.h"

#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSNumber.h"

namespace qz::detail {

bool comparesQuietly(const NSObject* key) { return isKind<NSString>(key) || isKind<NSNumber>(key); }

void raiseTooMany() { raise(NSMallocException, "a collection holds at most 2147483646 entries"); }

}  // namespace qz::detail
