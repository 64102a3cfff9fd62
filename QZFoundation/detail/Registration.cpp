#include "QZFoundation/detail/Registration.h"

#include "QZFoundation/QZIndexMap.h"

namespace qz {

void registerQZFoundation() {
  detail::registerNSObjectQZFoundation();
  detail::registerNSSortDescriptorQZFoundation();
  classOf<QZIndexMap>();
  detail::registerNSArrayQZIndexMap();
}

}  // namespace qz
