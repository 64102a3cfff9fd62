// Figures and names as people read them.
#pragma once

#include <cstdint>
#include <string>

#include "Platform/Values/NSString.h"

namespace backup {

/// "1.5 MB"
std::string sizeText(std::uint64_t bytes);

/// "1.5 MB/s"; "-" when no time has passed.
std::string rateText(double bytes, double seconds);

/// "02:05", and "02:05.250" to the millisecond.
std::string timeText(double seconds);
std::string exactTimeText(double seconds);

/// "200,000"
std::string countText(std::uint64_t count);

/// A path for the screen: a name can hold anything, also what a terminal would obey.
std::string printable(qz::NSString* text);

}  // namespace backup
