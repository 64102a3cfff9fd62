/// @file
/// What nearly every test uses: GoogleTest, the standard library's everyday parts, the values and
/// containers of the platform, and the run-time's ways to describe a class and to send.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <numeric>
#include <optional>
#include <random>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/Collections/NSSet.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/Send.h"
#include "Platform/Values/NSCharacterSet.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/NSDate.h"
#include "Platform/Values/NSError.h"
#include "Platform/Values/NSMutableString.h"
#include "Platform/Values/NSNull.h"
#include "Platform/Values/NSNumber.h"
#include "tests/support/Raises.h"
#include "tests/support/TemporaryDirectory.h"

namespace qz::test {

inline Ref<NSNumber> number(int value) { return NSNumber::numberWithInt(value); }
inline Ref<NSDate> inSeconds(double seconds) {
  return NSDate::dateWithTimeIntervalSinceNow(seconds);
}

}  // namespace qz::test
