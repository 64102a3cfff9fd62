// What has to hold of every property list that a reader accepts.
#pragma once

#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>

#include "Platform/System/NSPropertyListSerialization.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/NSString.h"

namespace qz::fuzz {

inline Ref<NSObject> readList(std::string_view bytes, std::uint32_t mutability,
                              NSPropertyListFormat* format) {
  Ref<NSString> problem;
  auto list =
      NSPropertyListSerialization::propertyListFromData_mutabilityOption_format_errorDescription(
          NSData::dataWithBytes(bytes), mutability, format, &problem);
  if ((list == nullptr) != (problem != nullptr)) std::abort();
  return list;
}

inline std::string writeList(NSObject* list, NSPropertyListFormat format, Ref<NSString>* problem) {
  auto data = NSPropertyListSerialization::dataFromPropertyList_format_errorDescription(
      list, format, problem);
  return data ? std::string(data->view()) : std::string();
}

// Writes the list in `format`, reads that and writes it again: the bytes are the same. What the
// format has no room for may be refused.
inline void checkRoundTrip(NSObject* list, NSPropertyListFormat format, std::uint32_t mutability) {
  Ref<NSString> problem;
  const std::string once = writeList(list, format, &problem);
  if (problem) {
    if (format == NSPropertyListBinaryFormat ||
        !problem->containsString(format == NSPropertyListXMLFormat ? "XML has no room"_ns
                                                                   : "old-style"_ns)) {
      std::cerr << problem << '\n';
      std::abort();
    }
    return;
  }
  NSPropertyListFormat found;
  auto again = readList(once, mutability, &found);
  if (!again || found != format || writeList(again, format, nullptr) != once) {
    std::cerr << once << "\n---\n" << (again ? writeList(again, format, nullptr) : "") << '\n';
    std::abort();
  }
}

}  // namespace qz::fuzz
