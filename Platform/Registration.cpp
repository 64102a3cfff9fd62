// The platform's classes, in order. A class that stands in no list would still work once it is
// mentioned, but could not be found by name before; a test compares the list with the headers.
#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/NSCountedSet.h"
#include "Platform/Collections/NSDictionary.h"
#include "Platform/Collections/NSEnumerator.h"
#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/Collections/NSMutableSet.h"
#include "Platform/Collections/NSPredicate.h"
#include "Platform/Collections/NSSet.h"
#include "Platform/Collections/NSSortDescriptor.h"
#include "Platform/Runtime/NSAssertionHandler.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/NSInvocation.h"
#include "Platform/Runtime/NSMethodSignature.h"
#include "Platform/Runtime/NSObject.h"
#include "Platform/System/NSBundle.h"
#include "Platform/Values/NSAttributedString.h"
#include "Platform/Values/NSCharacterSet.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/NSError.h"
#include "Platform/Values/NSMutableAttributedString.h"
#include "Platform/Values/NSMutableData.h"
#include "Platform/Values/NSMutableString.h"
#include "Platform/Values/NSNull.h"
#include "Platform/Values/NSNumber.h"
#include "Platform/Values/NSScanner.h"
#include "Platform/Values/NSString.h"
#include "Platform/Values/NSURL.h"
#include "Platform/Values/NSUUID.h"

namespace qz {

namespace {
template <class... T>
void mention() {
  (classOf<T>(), ...);
}
}  // namespace

void registerPlatform() {
  mention<NSObject, Class, NSMethodSignature, NSInvocation, NSException, NSAssertionHandler>();
  mention<NSString, NSMutableString, NSNumber, NSNull>();
  mention<NSData, NSMutableData, NSCharacterSet, NSMutableCharacterSet, NSScanner>();
  mention<NSAttributedString, NSMutableAttributedString, NSURL, NSUUID>();
  mention<NSEnumerator, NSArray, NSMutableArray, NSDictionary, NSMutableDictionary, NSSet,
          NSMutableSet, NSCountedSet, NSSortDescriptor, NSPredicate>();
  mention<NSError, NSBundle>();
}

}  // namespace qz
