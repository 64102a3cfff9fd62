#include "QZFoundation/detail/Registration.h"

#include "QZFoundation/QZAlternateTextValueTransformer.h"
#include "QZFoundation/QZDisk.h"
#include "QZFoundation/QZFileManagerErrorHandler.h"
#include "QZFoundation/QZFileValueTransformer.h"
#include "QZFoundation/QZFileWatcher.h"
#include "QZFoundation/QZHMSFormatter.h"
#include "QZFoundation/QZIndexMap.h"
#include "QZFoundation/QZKeyValueSyncer.h"
#include "QZFoundation/QZLog.h"
#include "QZFoundation/QZMathValueTransformer.h"
#include "QZFoundation/QZPathIndexer.h"
#include "QZFoundation/QZStorageSizeFormatter.h"
#include "QZFoundation/QZThreadedTask.h"
#include "QZFoundation/QZTreeWatcher.h"
#include "QZFoundation/QZVersionNumber.h"
#include "QZFoundation/QZWordSeparator.h"
#include "QZFoundation/XJKQueue.h"

namespace qz {

void registerQZFoundation() {
  detail::registerNSObjectQZFoundation();
  detail::registerNSObjectQZObserving();
  classOf<QZKeyValueSyncer>();
  classOf<QZThreadedTask>();
  detail::registerNSSortDescriptorQZFoundation();
  detail::registerNSErrorQZFoundation();
  detail::registerNSStringQZSearch();
  classOf<QZIndexMap>();
  detail::registerNSArrayQZIndexMap();
  detail::registerNSArrayQZFoundation();
  detail::registerNSMutableArrayQZFoundation();
  detail::registerNSEnumeratorQZFoundation();
  detail::registerNSArrayQZDelimitedText();
  detail::registerQZKeyPathArray();
  detail::registerNSDictionaryQZFoundation();
  detail::registerNSMutableDictionaryQZFoundation();
  detail::registerNSSetQZFoundation();
  detail::registerNSNumberQZFoundation();
  detail::registerNSDateQZFoundation();
  detail::registerNSIndexPathQZFoundation();
  detail::registerNSObjectQZIndexPath();
  detail::registerNSStringQZFoundation();
  detail::registerNSMutableStringQZFoundation();
  detail::registerNSAttributedStringQZFoundation();
  detail::registerNSURLQZFoundation();
  detail::registerXJMainThreadProxy();
  classOf<XJKQueue>();
  classOf<QZFileWatcher>();
  classOf<QZTreeChange>();
  classOf<QZTreeWatcher>();
  classOf<QZVersionNumber>();
  classOf<QZDisk>();
  detail::registerNSFileManagerQZVolumes();
  classOf<QZPathIndexer>();
  classOf<QZLog>();
  detail::registerNSBundleQZFoundation();
  detail::registerNSTaskQZFoundation();
  detail::registerNSDataQZFoundation();
  detail::registerNSPropertyListSerializationQZFoundation();
  classOf<QZFileManagerErrorHandler>();
  detail::registerNSFileManagerQZFoundation();
  detail::registerNSFileManagerQZCopy();
  classOf<QZHMSFormatter>();
  classOf<QZStorageSizeFormatter>();
  detail::registerNSUserDefaultsQZFoundation();
  detail::registerNSCoderQZFoundation();
  detail::registerNSObjectQZInfoDictionary();
  detail::registerNSValueTransformerQZFoundation();
  classOf<QZMathValueTransformer>();
  classOf<QZFileValueTransformer>();
  classOf<QZAlternateTextValueTransformer>();
  classOf<QZWordSeparator>();
}

}  // namespace qz
