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

namespace fs = std::filesystem;
using namespace std::literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

using Lines = std::vector<std::string>;
inline constexpr double infinity = std::numeric_limits<double>::infinity();
inline constexpr double nan = std::numeric_limits<double>::quiet_NaN();

/// A String of any bytes, which name a file again as they are.
inline Ref<NSString> ns(std::string_view bytes) {
  return NSString::stringWithFileSystemRepresentation(bytes);
}
inline Ref<NSString> ns(std::u16string_view units) { return NSString::stringWithCharacters(units); }
inline Ref<NSArray> arrayOf(std::initializer_list<NSObject*> objects) {
  return NSArray::arrayWithObjects(objects);
}
inline Ref<NSDate> dateAt(double seconds) { return NSDate::dateWithTimeIntervalSince1970(seconds); }
inline Ref<NSNumber> number(int value) { return NSNumber::numberWithInt(value); }
inline std::string textOf(NSError* error) {
  return error == nullptr ? "" : to_string(error->localizedDescription());
}
/// What an Error holds that has nothing but a description.
inline Ref<NSDictionary> described(NSString* text) {
  return NSDictionary::dictionaryWithObject_forKey(text, NSLocalizedDescriptionKey);
}
inline Ref<NSDate> inSeconds(double seconds) {
  return NSDate::dateWithTimeIntervalSinceNow(seconds);
}

}  // namespace qz::test
