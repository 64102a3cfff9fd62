/// @file
/// Everything the library offers.
#pragma once

#include "QZFoundation/NSArray-QZIndexMap.h"
#include "QZFoundation/NSObject-QZFoundation.h"
#include "QZFoundation/NSSortDescriptor-QZFoundation.h"
#include "QZFoundation/QZIndexMap.h"
