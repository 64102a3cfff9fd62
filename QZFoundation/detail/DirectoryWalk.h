/// @file
/// Private: the walk behind `iterateDirectory:…`.
#pragma once

#include <cstdint>
#include <string>

#include "Platform/Runtime/Send.h"
#include "Platform/Values/NSString.h"

namespace qz::detail {

/// One walk; see `iterateDirectory_recursionType_target_selector_withObject`. A path is kept as the
/// system takes it and as units, and grows and shrinks by one name, so that an entry costs no more
/// than its String.
class DirectoryWalk {
 public:
  DirectoryWalk(std::int32_t type, NSObject* target, Selector operation, NSObject* object)
      : type_(type), target_(target), operation_(operation), object_(object) {}

  Ref<NSObject> run(NSString* directory);

 private:
  Ref<NSObject> walk(NSString* directory);
  Ref<NSObject> entry(std::string_view name, unsigned char type);
  bool find(unsigned char type, bool& isFolder);
  Ref<NSObject> call(NSString* path);

  std::int32_t type_;
  NSObject* target_;
  Selector operation_;
  NSObject* object_;
  std::string bytes_;
  std::u16string text_;
};

}  // namespace qz::detail
