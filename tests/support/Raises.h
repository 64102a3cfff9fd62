// Runs code that must raise, and hands back what was raised.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "Platform/Runtime/NSException.h"

namespace qz::test {

/// The reason of the exception named `name` that `code` raises; a failure when it raises none or
/// another one.
inline std::string reasonRaised(NSString* name, const std::function<void()>& code) {
  try {
    code();
  } catch (const Raised& raised) {
    EXPECT_EQ(raised->name()->UTF8String(), name->UTF8String()) << raised.what();
    return raised->reason() ? raised->reason()->UTF8String() : "";
  }
  ADD_FAILURE() << "nothing was raised, " << name->UTF8String() << " expected";
  return "";
}

/// Whether the reason that `code` raises under `name` holds each of `parts`.
inline ::testing::AssertionResult raises(NSString* name, const std::function<void()>& code,
                                         std::initializer_list<std::string> parts = {}) {
  const std::string reason = reasonRaised(name, code);
  for (const std::string& part : parts)
    if (reason.find(part) == std::string::npos)
      return ::testing::AssertionFailure() << "\"" << part << "\" is missing in: " << reason;
  return ::testing::AssertionSuccess();
}

/// Whether `code` raises that an argument is none it can take.
inline ::testing::AssertionResult refuses(const std::function<void()>& code,
                                          std::initializer_list<std::string> parts = {}) {
  return raises(NSInvalidArgumentException, code, parts);
}

/// Whether `code` raises that an index or a range lies outside.
inline ::testing::AssertionResult refusesRange(const std::function<void()>& code,
                                               std::initializer_list<std::string> parts = {}) {
  return raises(NSRangeException, code, parts);
}

}  // namespace qz::test
