#include "QZFoundation/QZLog.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <ctime>
#include <utility>

#include "Platform/Collections/NSMutableSet.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/Send.h"
#include "Platform/System/NSFileManager.h"
#include "Platform/System/detail/PathBytes.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/detail/DataStorage.h"
#include "Platform/Values/detail/StringStorage.h"
#include "Platform/Values/detail/Utf.h"
#include "QZFoundation/detail/DebugKeys.h"

namespace qz {
namespace {

struct ::timespec now(clockid_t clock) {
  struct ::timespec time {};
  ::clock_gettime(clock, &time);
  return time;
}

std::int64_t nanosecondsNow() {
  const auto time = now(CLOCK_REALTIME);
  return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

Ref<NSData> utf8(NSString* text) {
  if (text == nullptr) return NSData::data();
  const std::u16string_view units = text->view();
  constexpr std::size_t shortLine = 200;
  if (units.size() <= shortLine) {
    // One pass instead of two.
    std::array<char, 3 * shortLine> bytes;
    const char* const end = detail::encodeUtf8(units, bytes.data());
    return NSData::dataWithBytes(
        std::string_view(bytes.data(), static_cast<std::size_t>(end - bytes.data())));
  }
  return detail::fillData(detail::utf8Length(units), [units](std::byte* out) {
    detail::encodeUtf8(units, reinterpret_cast<char*>(out));
  });
}

NSData* lineFeed() {
  static NSData* const shared = NSData::dataWithBytes(std::string_view("\n")).leak();
  return shared;
}

bool isSameFile(int descriptor, NSString* path) {
  struct stat open;
  struct stat found;
  return ::fstat(descriptor, &open) == 0 && ::stat(detail::PathBytes(path).c_str(), &found) == 0 &&
         open.st_dev == found.st_dev && open.st_ino == found.st_ino;
}

}  // namespace

QZLog::QZLog() : enabledKeys_(make<NSMutableSet>()) {}

QZLog::~QZLog() {
  if (logOutputHandle_) logOutputHandle_->closeFile();
}

Ref<QZLog> QZLog::initWithFilePath(NSString* path) {
  auto log = make<QZLog>();
  if (path != nullptr) log->logFilePath_ = as<NSString>(path->copy());
  log->enabledKeys_->addObjectsFromArray(detail::debugKeys());
  return log;
}

bool QZLog::isKeyEnabled(NSString* key) const { return enabledKeys_->containsObject(key); }

void QZLog::setKey_enabled(NSString* key, bool enabled) {
  detail::requireString(key, "setKey:enabled:");
  if (enabled)
    enabledKeys_->addObject(as<NSString>(key->copy()));
  else
    enabledKeys_->removeObject(key);
}

bool QZLog::isWritten(NSString* key) const {
  return enabledKeys_->count() != 0 &&
         (enabledKeys_->containsObject(key) || enabledKeys_->containsObject("all"_ns));
}

// Writing -----------------------------------------------------------------------------------------

void QZLog::logWithKey_format_args(NSString* key, NSString* format, FormatArguments arguments) {
  if (!isWritten(key)) return;
  const auto message = NSString::stringWithFormat_arguments(format, arguments);
  send<void>(this, "logWithKey:message:"_sel, key, message);
}

void QZLog::logWithKey_message(NSString* key, NSString* message) {
  if (!isWritten(key)) return;
  const Selector logData = "logData:"_sel;
  // A line within a line, by an implementation that logs itself, belongs to the outer one.
  const bool isOuter = !std::exchange(collects_, true);
  try {
    send<void>(this, logData, NSData::dataWithBytes(stamp_.textAt(nanosecondsNow())));
    send<void>(this, logData, utf8(message));
    send<void>(this, logData, lineFeed());
  } catch (...) {
    if (isOuter) takeLine();
    throw;
  }
  if (!isOuter) return;
  std::string line = takeLine();
  if (!line.empty()) write(std::as_bytes(std::span(line)));
  // The next line needs no memory of its own. Opening the log may have logged in between.
  constexpr std::size_t mostKept = 16 * 1024;
  line.clear();
  if (line_.empty() && line.capacity() <= mostKept) line_ = std::move(line);
}

std::string QZLog::takeLine() {
  collects_ = false;
  return std::exchange(line_, {});
}

void QZLog::logMessage(NSString* message) {
  send<void>(this, "logWithKey:message:"_sel, "all"_ns, message);
}

void QZLog::logData(NSData* data) {
  if (data == nullptr) return;
  if (collects_)
    line_ += data->view();
  else
    write(data->span());
}

void QZLog::write(std::span<const std::byte> bytes) {
  if (logOutputHandle_)
    followFile();
  else
    send<void>(this, "openLog"_sel);
  if (logOutputHandle_) logOutputHandle_->writeBytes_error(bytes, nullptr);
}

// The file ----------------------------------------------------------------------------------------

void QZLog::openLog() {
  if (!logOutputHandle_) open(appendToLog_);
}

void QZLog::open(bool keepsContents) {
  const detail::PathBytes path(logFilePath_);
  if (path.error() != 0) return;
  // A pipe that nobody reads must not make the program wait, here or later.
  const int flags = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
  const int descriptor = ::open(path.c_str(), flags | (keepsContents ? 0 : O_TRUNC), 0666);
  if (descriptor < 0) return;
  ::fcntl(descriptor, F_SETFL, O_APPEND);
  logOutputHandle_ = NSFileHandle::initWithFileDescriptor_closeOnDealloc(descriptor, true);
  followed_ = now(CLOCK_REALTIME_COARSE).tv_sec;
}

/// Once a second, makes sure that the file is still the one at the path. A new one is never
/// emptied: who moved the old one away may have put it there.
void QZLog::followFile() {
  const std::int64_t second = now(CLOCK_REALTIME_COARSE).tv_sec;
  if (second == followed_ || !logFilePath_) return;
  followed_ = second;
  if (isSameFile(logOutputHandle_->fileDescriptor(), logFilePath_)) return;
  const auto old = std::exchange(logOutputHandle_, nullptr);
  open(true);
  // Where there can be none, as when the folder went too, the old one serves on.
  if (!logOutputHandle_) logOutputHandle_ = old;
}

void QZLog::closeLog() {
  if (!logOutputHandle_) return;
  logOutputHandle_->closeFile();
  logOutputHandle_ = nullptr;
}

void QZLog::clearLog() {
  send<void>(this, "closeLog"_sel);
  NSFileManager::defaultManager()->removeFileAtPath_handler(logFilePath_, nullptr);
}

void QZLog::describe(ClassDescription<QZLog>& is) {
  is.named("QZLog")
      .initializer<&QZLog::initWithFilePath>("initWithFilePath:")
      .property<&QZLog::logFilePath>("logFilePath")
      .property<&QZLog::appendToLog, &QZLog::setAppendToLog>("appendToLog")
      .property<&QZLog::logOutputHandle>("logOutputHandle")
      .method<&QZLog::isKeyEnabled>("isKeyEnabled:")
      .method<&QZLog::setKey_enabled>("setKey:enabled:")
      .method<&QZLog::logWithKey_format_args>("logWithKey:format:args:")
      .method<&QZLog::logWithKey_format<>>("logWithKey:format:")
      .method<&QZLog::logWithKey_message>("logWithKey:message:")
      .method<&QZLog::logMessage>("logMessage:")
      .method<&QZLog::logFormat<>>("logFormat:")
      .method<&QZLog::logData>("logData:")
      .method<&QZLog::openLog>("openLog")
      .method<&QZLog::closeLog>("closeLog")
      .method<&QZLog::clearLog>("clearLog");
}

}  // namespace qz
