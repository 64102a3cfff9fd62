/// @file
/// Private: names the library's list of operations, so that a static link keeps it. Every public
/// header of the library includes this.
#pragma once

#include "Platform/Runtime/detail/Library.h"

#pragma GCC visibility push(default)

namespace qz {

/// Registers the library's classes and the operations it adds, in order. Called by the run-time
/// before the first look-up.
void registerQZFoundation();

namespace detail {
[[gnu::used]] inline LibraryHook foundationHook(&registerQZFoundation);
}  // namespace detail

}  // namespace qz

#pragma GCC visibility pop

namespace qz::detail {

// One for each file that adds something; the list in Registration.cpp gives the order.
void registerNSArrayQZDelimitedText();
void registerNSArrayQZFoundation();
void registerNSArrayQZIndexMap();
void registerNSAttributedStringQZFoundation();
void registerNSEnumeratorQZFoundation();
void registerNSMutableArrayQZFoundation();
void registerNSFileManagerQZCopy();
void registerNSFileManagerQZFoundation();
void registerNSFileManagerQZVolumes();
void registerNSMutableStringQZFoundation();
void registerNSBundleQZFoundation();
void registerNSCoderQZFoundation();
void registerNSDataQZFoundation();
void registerNSErrorQZFoundation();
void registerNSObjectQZFoundation();
void registerNSObjectQZInfoDictionary();
void registerNSPropertyListSerializationQZFoundation();
void registerNSObjectQZObserving();
void registerNSSortDescriptorQZFoundation();
void registerNSStringQZSearch();
void registerNSStringQZFoundation();
void registerNSTaskQZFoundation();
void registerNSDictionaryQZFoundation();
void registerNSMutableDictionaryQZFoundation();
void registerNSSetQZFoundation();
void registerNSNumberQZFoundation();
void registerNSDateQZFoundation();
void registerNSIndexPathQZFoundation();
void registerNSObjectQZIndexPath();
void registerNSURLQZFoundation();
void registerNSUserDefaultsQZFoundation();
void registerNSValueTransformerQZFoundation();
void registerQZKeyPathArray();
void registerXJMainThreadProxy();

}  // namespace qz::detail
