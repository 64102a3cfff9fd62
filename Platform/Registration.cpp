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
#include "Platform/Concurrency/NSLock.h"
#include "Platform/Concurrency/NSNotificationCenter.h"
#include "Platform/Concurrency/NSRunLoop.h"
#include "Platform/Concurrency/NSThread.h"
#include "Platform/Concurrency/detail/NSObjectThreads.h"
#include "Platform/Runtime/NSAssertionHandler.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/NSInvocation.h"
#include "Platform/Runtime/NSMethodSignature.h"
#include "Platform/Runtime/NSObject.h"
#include "Platform/System/NSBundle.h"
#include "Platform/System/NSDirectoryEnumerator.h"
#include "Platform/System/NSFileAttributes.h"
#include "Platform/System/NSFileHandle.h"
#include "Platform/System/NSFileManager.h"
#include "Platform/System/NSPipe.h"
#include "Platform/System/NSProcessInfo.h"
#include "Platform/System/NSPropertyListSerialization.h"
#include "Platform/System/NSPropertyListUID.h"
#include "Platform/System/NSTask.h"
#include "Platform/System/NSUserDefaults.h"
#include "Platform/System/detail/PropertyListFiles.h"
#include "Platform/Text/NSCoder.h"
#include "Platform/Text/NSDateFormatter.h"
#include "Platform/Text/NSFormatter.h"
#include "Platform/Text/NSKeyedArchiver.h"
#include "Platform/Text/NSLocale.h"
#include "Platform/Text/NSNumberFormatter.h"
#include "Platform/Text/NSTimeZone.h"
#include "Platform/Text/NSValueTransformer.h"
#include "Platform/Text/detail/ArchivedValues.h"
#include "Platform/Values/NSAttributedString.h"
#include "Platform/Values/NSCharacterSet.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/NSDate.h"
#include "Platform/Values/NSError.h"
#include "Platform/Values/NSIndexPath.h"
#include "Platform/Values/NSIndexSet.h"
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
template <class T>
void mention() {
  classOf<T>();
}
}  // namespace

void registerPlatform() {
  mention<NSObject>();
  mention<Class>();
  mention<NSMethodSignature>();
  mention<NSInvocation>();
  mention<NSException>();
  mention<NSAssertionHandler>();
  mention<NSString>();
  mention<NSMutableString>();
  mention<NSNumber>();
  mention<NSNull>();
  mention<NSData>();
  mention<NSMutableData>();
  mention<NSDate>();
  mention<NSIndexPath>();
  mention<NSIndexSet>();
  mention<NSCharacterSet>();
  mention<NSMutableCharacterSet>();
  mention<NSScanner>();
  mention<NSAttributedString>();
  mention<NSMutableAttributedString>();
  mention<NSURL>();
  mention<NSUUID>();
  mention<NSEnumerator>();
  mention<NSArray>();
  mention<NSMutableArray>();
  mention<NSDictionary>();
  mention<NSMutableDictionary>();
  mention<NSSet>();
  mention<NSMutableSet>();
  mention<NSCountedSet>();
  mention<NSSortDescriptor>();
  mention<NSPredicate>();
  mention<NSError>();
  mention<NSNotification>();
  mention<NSNotificationCenter>();
  mention<NSNotificationToken>();
  mention<NSLock>();
  mention<NSRecursiveLock>();
  mention<NSCondition>();
  mention<NSConditionLock>();
  mention<NSThread>();
  mention<NSRunLoop>();
  mention<NSTimer>();
  detail::registerNSObjectThreads();
  mention<NSBundle>();
  mention<NSPropertyListSerialization>();
  mention<NSPropertyListUID>();
  mention<NSUserDefaults>();
  mention<NSFileHandle>();
  mention<NSFileManager>();
  mention<NSDirectoryEnumerator>();
  detail::registerFileAttributes();
  mention<NSPipe>();
  mention<NSTask>();
  mention<NSProcessInfo>();
  mention<NSLocale>();
  mention<NSTimeZone>();
  mention<NSFormatter>();
  mention<NSNumberFormatter>();
  mention<NSDateFormatter>();
  mention<NSValueTransformer>();
  mention<NSCoder>();
  mention<NSKeyedArchiver>();
  mention<NSKeyedUnarchiver>();
  detail::describePropertyListFiles();
  detail::describeArchivedValues();
}

}  // namespace qz
