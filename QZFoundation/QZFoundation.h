/// @file
/// Everything the library offers.
#pragma once

#include "QZFoundation/NSArray-QZIndexMap.h"
#include "QZFoundation/NSAttributedString-QZFoundation.h"
#include "QZFoundation/NSBundle-QZFoundation.h"
#include "QZFoundation/NSData-QZFoundation.h"
#include "QZFoundation/NSError-QZFoundation.h"
#include "QZFoundation/NSMutableString-QZFoundation.h"
#include "QZFoundation/NSObject-QZFoundation.h"
#include "QZFoundation/NSPropertyListSerialization-QZFoundation.h"
#include "QZFoundation/NSSortDescriptor-QZFoundation.h"
#include "QZFoundation/NSString-QZFoundation.h"
#include "QZFoundation/NSString-QZSearch.h"
#include "QZFoundation/NSTask-QZFoundation.h"
#include "QZFoundation/NSURL-QZFoundation.h"
#include "QZFoundation/QZFunctions.h"
#include "QZFoundation/QZIndexMap.h"
#include "QZFoundation/QZVersionNumber.h"
