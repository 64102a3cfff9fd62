#include "QZFoundation/QZFunctions.h"

namespace qz {

Ref<NSString> detail::localizedFormat(NSString* key, NSString* table, NSBundle* bundle) {
  if (bundle != nullptr) return bundle->localizedStringForKey_value_table(key, ""_ns, table);
  return key != nullptr ? Ref<NSString>(key) : NSString::string();
}

}  // namespace qz
