#include "QZFoundation/detail/Registration.h"

#include "QZFoundation/QZIndexMap.h"

namespace qz {

void registerQZFoundation() {
  detail::registerNSObjectQZFoundation();
  detail::registerNSSortDescriptorQZFoundation();
  detail::registerNSErrorQZFoundation();
  detail::registerNSStringQZSearch();
  classOf<QZIndexMap>();
  detail::registerNSArrayQZIndexMap();
  detail::registerNSStringQZFoundation();
  detail::registerNSMutableStringQZFoundation();
  detail::registerNSAttributedStringQZFoundation();
  detail::registerNSURLQZFoundation();
}

}  // namespace qz
