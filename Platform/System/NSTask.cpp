#include "Platform/System/NSTask.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <filesystem>
#include <string>

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/NSDictionary.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/System/Diagnostics.h"
#include "Platform/System/NSPipe.h"
#include "Platform/System/detail/ChildProcess.h"
#include "Platform/System/detail/FileBytes.h"
#include "Platform/Values/NSError.h"
#include "Platform/Values/detail/PosixError.h"

namespace qz {
namespace {

/// A copy that stays as it is.
template <class T>
Ref<T> copied(T* object) {
  return object != nullptr ? as<T>(object->copy()) : Ref<T>();
}

/// The bytes of a String among the arguments or the environment; others are refused.
std::string bytesOf(NSObject* object, const char* operation) {
  NSString* text = as<NSString>(object);
  if (text == nullptr)
    detail::raise(NSInvalidArgumentException,
                  std::string(operation) + ": " + to_string(object) + " is not a String");
  return text->fileSystemRepresentation();
}

std::vector<std::string> argumentsOf(NSArray* arguments) {
  std::vector<std::string> all;
  for (NSObject* each : arguments) all.push_back(bytesOf(each, "setArguments:"));
  return all;
}

std::vector<std::string> environmentOf(NSDictionary* environment) {
  std::vector<std::string> all;
  if (environment == nullptr) {
    for (char** each = environ; each != nullptr && *each != nullptr; ++each)
      all.emplace_back(*each);
    return all;
  }
  for (const auto& [key, value] : environment) {
    const std::string name = bytesOf(key, "setEnvironment:");
    if (name.empty() || name.find('=') != name.npos)
      detail::raise(NSInvalidArgumentException,
                    "setEnvironment:: \"" + name + "\" cannot be the name of a variable");
    all.push_back(name + "=" + bytesOf(value, "setEnvironment:"));
  }
  return all;
}

/// The handle that the program gets of a stream: of a pipe its far end.
Ref<NSFileHandle> farEnd(NSObject* stream, std::size_t index) {
  NSPipe* pipe = as<NSPipe>(stream);
  if (pipe == nullptr) return as<NSFileHandle>(stream);
  return index == 0 ? pipe->fileHandleForReading() : pipe->fileHandleForWriting();
}

/// The same function, which throws nothing.
std::function<void()> quiet(std::function<void()> function) {
  return [function = std::move(function)]() noexcept {
    try {
      function();
    } catch (const std::exception& exception) {
      detail::diagnose(std::string("A task's termination handler threw: ") + exception.what());
    }
  };
}

}  // namespace

NSTask::NSTask() = default;
NSTask::~NSTask() = default;

Ref<NSTask> NSTask::launchedTaskWithLaunchPath_arguments(NSString* path, NSArray* arguments) {
  auto task = make<NSTask>();
  task->setLaunchPath(path);
  task->setArguments(arguments);
  task->launch();
  return task;
}

// What to run -------------------------------------------------------------------------------------

void NSTask::requireNotLaunched(const char* operation) const {
  if (child_)
    detail::raise(NSInvalidArgumentException,
                  std::string(operation) + ": the task was launched already");
}

void NSTask::setLaunchPath(NSString* path) {
  requireNotLaunched("setLaunchPath:");
  launchPath_ = copied(path);
}

Ref<NSArray> NSTask::arguments() const { return arguments_; }

void NSTask::setArguments(NSArray* arguments) {
  requireNotLaunched("setArguments:");
  argumentsOf(arguments);
  arguments_ = copied(arguments);
}

Ref<NSDictionary> NSTask::environment() const { return environment_; }

void NSTask::setEnvironment(NSDictionary* environment) {
  requireNotLaunched("setEnvironment:");
  environmentOf(environment);
  environment_ = copied(environment);
}

void NSTask::setCurrentDirectoryPath(NSString* path) {
  requireNotLaunched("setCurrentDirectoryPath:");
  currentDirectoryPath_ = copied(path);
}

void NSTask::setStream(std::size_t index, NSObject* stream, const char* operation) {
  requireNotLaunched(operation);
  if (stream != nullptr && farEnd(stream, index) == nullptr)
    detail::raise(NSInvalidArgumentException, std::string(operation) + ": " + to_string(stream) +
                                                  " is neither an NSPipe nor an NSFileHandle");
  streams_[index] = Ref<NSObject>(stream);
}

void NSTask::setStandardInput(NSObject* stream) { setStream(0, stream, "setStandardInput:"); }
void NSTask::setStandardOutput(NSObject* stream) { setStream(1, stream, "setStandardOutput:"); }
void NSTask::setStandardError(NSObject* stream) { setStream(2, stream, "setStandardError:"); }

void NSTask::setTerminationHandler(std::function<void(NSTask*)> handler) {
  requireNotLaunched("setTerminationHandler:");
  terminationHandler_ = std::move(handler);
}

// Running -----------------------------------------------------------------------------------------

detail::ChildRequest NSTask::request() const {
  detail::ChildRequest request;
  request.path = launchPath_->fileSystemRepresentation();
  request.arguments = argumentsOf(arguments_);
  request.environment = environmentOf(environment_);
  if (currentDirectoryPath_) {
    request.directory = currentDirectoryPath_->fileSystemRepresentation();
    // The program is looked for from the new folder otherwise.
    std::error_code ignored;
    const auto absolute = std::filesystem::absolute(request.path, ignored);
    if (!ignored) request.path = absolute.string();
  }
  for (std::size_t i = 0; i < request.streams.size(); ++i)
    if (streams_[i]) {
      request.streams[i] = farEnd(streams_[i], i)->fileDescriptor();
      if (request.streams[i] < 0)
        detail::raise(NSInvalidArgumentException,
                      "launch: " + to_string(streams_[i].get()) + " is closed");
    }
  return request;
}

std::function<void()> NSTask::callAtEnd() {
  if (!terminationHandler_) return nullptr;
  return quiet(
      [self = Ref<NSTask>(this), handler = std::move(terminationHandler_)] { handler(self); });
}

void NSTask::closeFarEnds() const {
  for (std::size_t i = 0; i < 3; ++i)
    if (as<NSPipe>(streams_[i]) != nullptr) farEnd(streams_[i], i)->closeFile();
}

bool NSTask::launchAndReturnError(Ref<NSError>* error) {
  requireNotLaunched("launch");
  if (!launchPath_) detail::raise(NSInvalidArgumentException, "launch: the launch path is nil");
  const detail::ChildRequest request = this->request();
  const auto handler = terminationHandler_;
  if (const int problem = detail::ChildProcess::start(request, callAtEnd(), child_)) {
    terminationHandler_ = handler;
    // A missing folder and a missing program are the same to the system, not to the reader.
    const bool isFolder = !request.directory.empty() && !detail::isDirectory(request.directory);
    if (error != nullptr)
      *error = isFolder ? detail::posixError(problem, "launch in", currentDirectoryPath_)
                        : detail::posixError(problem, "launch", launchPath_);
    return false;
  }
  closeFarEnds();
  return true;
}

void NSTask::launch() {
  Ref<NSError> error;
  if (!launchAndReturnError(&error))
    detail::raise(NSInvalidArgumentException, error->localizedDescription()->UTF8String());
}

std::int32_t NSTask::processIdentifier() const noexcept {
  return child_ ? child_->identifier() : 0;
}

bool NSTask::isRunning() const { return child_ && child_->isRunning(); }

detail::ChildProcess& NSTask::requireLaunched(const char* operation) const {
  if (!child_)
    detail::raise(NSInvalidArgumentException,
                  std::string(operation) + ": the task was not launched yet");
  return *child_;
}

const detail::ChildProcess& NSTask::requireEnded(const char* operation) const {
  const detail::ChildProcess& child = requireLaunched(operation);
  if (child.isRunning())
    detail::raise(NSInvalidArgumentException,
                  std::string(operation) + ": the task is still running");
  return child;
}

void NSTask::interrupt() { requireLaunched("interrupt").sendSignal(SIGINT); }
void NSTask::terminate() { requireLaunched("terminate").sendSignal(SIGTERM); }
void NSTask::suspend() { requireLaunched("suspend").sendSignal(SIGSTOP); }
void NSTask::resume() { requireLaunched("resume").sendSignal(SIGCONT); }

void NSTask::callWhenEnded(std::function<void()> function) const {
  if (!function) detail::raise(NSInvalidArgumentException, "callWhenEnded: needs a function");
  requireLaunched("callWhenEnded").whenEnded(quiet(std::move(function)));
}

void NSTask::waitUntilExit() { requireLaunched("waitUntilExit").wait(); }

std::int32_t NSTask::terminationStatus() const {
  return requireEnded("terminationStatus").ending().code;
}

NSTaskTerminationReason NSTask::terminationReason() const {
  return requireEnded("terminationReason").ending().bySignal ? NSTaskTerminationReasonUncaughtSignal
                                                             : NSTaskTerminationReasonExit;
}

void NSTask::describe(ClassDescription<NSTask>& is) {
  is.named("NSTask")
      .classMethod<&NSTask::launchedTaskWithLaunchPath_arguments>(
          "launchedTaskWithLaunchPath:arguments:")
      .property<&NSTask::launchPath, &NSTask::setLaunchPath>("launchPath")
      .property<&NSTask::arguments, &NSTask::setArguments>("arguments")
      .property<&NSTask::environment, &NSTask::setEnvironment>("environment")
      .property<&NSTask::currentDirectoryPath, &NSTask::setCurrentDirectoryPath>(
          "currentDirectoryPath")
      .property<&NSTask::standardInput, &NSTask::setStandardInput>("standardInput")
      .property<&NSTask::standardOutput, &NSTask::setStandardOutput>("standardOutput")
      .property<&NSTask::standardError, &NSTask::setStandardError>("standardError")
      .method<&NSTask::launch>("launch")
      .method<&NSTask::launchAndReturnError>("launchAndReturnError:")
      .method<&NSTask::processIdentifier>("processIdentifier")
      .method<&NSTask::isRunning>("isRunning")
      .method<&NSTask::interrupt>("interrupt")
      .method<&NSTask::terminate>("terminate")
      .method<&NSTask::suspend>("suspend")
      .method<&NSTask::resume>("resume")
      .method<&NSTask::waitUntilExit>("waitUntilExit")
      .method<&NSTask::terminationStatus>("terminationStatus")
      .method<&NSTask::terminationReason>("terminationReason");
}

}  // namespace qz
