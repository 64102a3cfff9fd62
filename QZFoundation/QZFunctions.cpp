#include "QZFoundation/QZFunctions.h"

#include <cmath>
#include <string>

#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/System/detail/FileBytes.h"
#include "Platform/System/detail/OsRelease.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/NSPathUtilities.h"
#include "QZFoundation/NSFileManager-QZFoundation.h"
#include "QZFoundation/NSTask-QZFoundation.h"
#include "QZFoundation/QZVersionNumber.h"
#include "QZFoundation/detail/ApplicationName.h"

namespace qz {

const char QZFoundationVersionString[] = "@(#)PROGRAM:QZFoundation  PROJECT:Quillet-\n";
const double QZFoundationVersionNumber = QZ_VERSION_MAJOR + QZ_VERSION_MINOR / 100.0;

Ref<NSString> detail::localizedFormat(NSString* key, NSString* table, NSBundle* bundle) {
  if (bundle != nullptr) return bundle->localizedStringForKey_value_table(key, ""_ns, table);
  return key != nullptr ? Ref<NSString>(key) : NSString::string();
}

// Directories and the system ----------------------------------------------------------------------

Ref<NSString> QZApplicationSupportSubPath() {
  return NSString::stringWithFormat("Application Support/%@"_ns, detail::applicationName());
}

Ref<NSString> QZCacheDirectory() {
  const auto path = NSHomeDirectory()->stringByAppendingPathComponent(
      NSString::stringWithFormat("Library/Caches/%@"_ns, detail::applicationName()));
  const Ref<NSFileManager> manager = currentThreadFileManager();
  if (!manager->fileExistsAtPath(path))
    createDirectoryAtPath_attributes_createParents(manager, path, nullptr, true);
  return path;
}

Ref<NSArray> QZSearchPathForDirectoriesInDomains(NSSearchPathDirectory directory,
                                                 std::uint32_t domainMask, bool expandTilde,
                                                 NSString* subPath) {
  auto paths = NSSearchPathForDirectoriesInDomains(directory, domainMask, expandTilde);
  if (subPath == nullptr) return paths;
  auto longer = NSMutableArray::array();
  for (NSString* each : elements<NSString>(paths))
    longer->addObject(each->stringByAppendingPathComponent(subPath));
  return as<NSArray>(longer->copy());
}

Ref<QZVersionNumber> QZSystemVersionNumber() {
  constexpr const char* program = "/usr/bin/sw_vers";
  if (!detail::fileExists(program))
    return QZVersionNumber::versionWithString(detail::osReleaseField("VERSION_ID"));
  const auto output = dataByRunningTask_withArguments(
      NSString::stringWithUTF8String(program), NSArray::arrayWithObject("-productVersion"_ns));
  if (output->length() == 0) return nullptr;
  return QZVersionNumber::versionWithString(
      NSString::initWithData_encoding(output, NSASCIIStringEncoding));
}

// The kernel names the tracing process, 0 for none: proc(5).
bool QZProcessIsBeingTraced() {
  const auto status = detail::bytesOfFile("/proc/self/status", 1024 * 1024);
  constexpr std::string_view field = "\nTracerPid:\t";
  const std::size_t at = status ? status->find(field) : std::string::npos;
  return at != std::string::npos && status->compare(at + field.size(), 2, "0\n") != 0;
}

// Geometry ----------------------------------------------------------------------------------------

NSRect QZFitCenteredRect(NSSize size, const NSRect& rect) noexcept {
  const float proportion = size.height / size.width;
  const auto finite = [](float extent) { return std::isfinite(extent) ? extent : 0.0f; };
  if (proportion <= rect.size.height / rect.size.width) {
    const float height = finite(rect.size.width * proportion);
    // Half the new height, not half of what is left over: deliberate, callers count on it.
    return {{rect.origin.x, rect.origin.y + height * 0.5f}, {rect.size.width, height}};
  }
  const float width = finite(rect.size.height / proportion);
  return {{rect.origin.x + (rect.size.width - width) * 0.5f, rect.origin.y},
          {width, rect.size.height}};
}

// Replacing operations ----------------------------------------------------------------------------

detail::Imp QZReplaceMethodImplementation(Class* aClass, Selector selector,
                                          detail::Imp implementation) {
  if (implementation == nullptr)
    detail::raise(NSInvalidArgumentException, "QZReplaceMethodImplementation: no implementation");
  return aClass != nullptr ? aClass->replaceInstanceMethod(selector, implementation) : nullptr;
}

detail::Imp QZReplaceMethodImplementationWithSelector(Class* aClass, Selector selector,
                                                      Selector donorSelector) {
  return QZReplaceMethodImplementationWithSelectorOnClass(aClass, selector, aClass, donorSelector);
}

detail::Imp QZReplaceMethodImplementationWithSelectorOnClass(Class* aClass, Selector selector,
                                                             Class* donorClass,
                                                             Selector donorSelector) {
  const auto refuse = [&](const char* why) {
    detail::raise(NSInvalidArgumentException,
                  "QZReplaceMethodImplementation: " +
                      std::string(donorClass != nullptr ? donorClass->name() : "nil") + " " +
                      std::string(donorSelector.name()) + why);
  };
  const detail::Method* donor =
      donorClass != nullptr ? donorClass->instanceMethod(donorSelector) : nullptr;
  if (donor == nullptr) refuse(" does not exist");
  const detail::Method* old = aClass != nullptr ? aClass->instanceMethod(selector) : nullptr;
  if (old == nullptr) return nullptr;
  if (old->shape != donor->shape) refuse(" takes or answers something else");
  return aClass->replaceInstanceMethod(selector, donor->imp);
}

}  // namespace qz
