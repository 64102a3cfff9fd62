#include "bench/support/Records.h"

#include <string>
#include <vector>

#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/NSDate.h"
#include "Platform/Values/NSNumber.h"
#include "Platform/Values/NSString.h"
#include "bench/support/Data.h"

namespace qz::bench {

NSArray* records() {
  static NSArray* const all = [] {
    auto array = NSMutableArray::array();
    const std::vector<std::string> names = randomNames(12'000);
    for (std::size_t i = 0; i < names.size(); ++i) {
      const auto name = NSString::stringWithUTF8String(names[i]);
      const auto number = NSNumber::of(static_cast<std::int64_t>(i * 7919 % 100'003));
      auto marks = NSArray::arrayWithObjects({number, NSNumber::of(static_cast<double>(i) / 7)});
      array->addObject(NSDictionary::of(
          {{"name"_ns, name},
           {"street"_ns, NSString::stringWithFormat("%@ & Sons Street %d"_ns, name, i % 300)},
           {"city"_ns, NSString::stringWithUTF8String(names[i % 100])},
           {"number"_ns, number},
           {"active"_ns, NSNumber::of(i % 3 == 0)},
           {"since"_ns, NSDate::dateWithTimeIntervalSince1970(1e9 + static_cast<double>(i) * 997)},
           {"marks"_ns, marks},
           {"seal"_ns, NSData::dataWithBytes(names[i])}}));
    }
    return as<NSArray>(array->copy()).leak();
  }();
  return all;
}

}  // namespace qz::bench
