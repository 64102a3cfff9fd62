#include "Platform/System/NSTask.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <future>

#include "Platform/System/NSPipe.h"
#include "Platform/System/NSProcessInfo.h"
#include "Platform/System/detail/OsRelease.h"
#include "tests/support/Shell.h"
#include "tests/support/Threads.h"

namespace qz::test {
namespace {

/// What a task prints, to its end.
std::string output(NSTask* task) {
  auto pipe = NSPipe::pipe();
  task->setStandardOutput(pipe);
  task->launch();
  Ref<NSData> data = pipe->fileHandleForReading()->readDataToEndOfFile();
  task->waitUntilExit();
  return std::string(data->view());
}

TEST(NSTask, RunsWithWhatItIsGiven) {
  const TemporaryDirectory directory;
  auto task = shell("pwd; printf '[%s]' \"$0\" \"$1\" \"$NAME\" \"$HOME\"; exit 3"_ns);
  task->setArguments(
      task->arguments()->arrayByAddingObjectsFromArray(arrayOf({"a b"_ns, "*\"'$x"_ns})));
  task->setEnvironment(NSDictionary::of({{"NAME"_ns, "vé=1"_ns}}));
  task->setCurrentDirectoryPath(ns(directory.path()));
  EXPECT_EQ(output(task), directory.path() + "\n[a b][*\"'$x][vé=1][]");
  EXPECT_EQ(task->terminationStatus(), 3);
  EXPECT_EQ(task->terminationReason(), NSTaskTerminationReasonExit);

  ::setenv("QZ_TASK_TEST", "inherited", 1);
  EXPECT_EQ(output(shell("echo $QZ_TASK_TEST"_ns)), "inherited\n");
}

TEST(NSTask, StreamsGoWhereTheyAreTold) {
  auto in = NSPipe::pipe();
  auto both = NSPipe::pipe();
  auto task = shell("cat; echo problem >&2"_ns);
  task->setStandardInput(in);
  task->setStandardOutput(both);
  task->setStandardError(both);
  task->launch();
  in->fileHandleForWriting()->writeData(NSData::dataWithBytes(std::string_view("hello\n")));
  in->fileHandleForWriting()->closeFile();
  EXPECT_EQ(both->fileHandleForReading()->readDataToEndOfFile()->view(), "hello\nproblem\n");
  // The far ends belong to the program alone.
  EXPECT_EQ(both->fileHandleForWriting()->fileDescriptor(), -1);
}

TEST(NSTask, StandardStreamsCanBeExchanged) {
  auto pipe = NSPipe::pipe();
  // The program's output is this process's error stream and the other way round.
  const int kept = ::dup(STDERR_FILENO);
  ::dup2(pipe->fileHandleForWriting()->fileDescriptor(), STDERR_FILENO);
  auto task = shell("echo out; echo error >&2"_ns);
  task->setStandardOutput(NSFileHandle::fileHandleWithStandardError());
  task->setStandardError(NSFileHandle::fileHandleWithStandardOutput());
  task->launch();
  task->waitUntilExit();
  ::dup2(kept, STDERR_FILENO);
  ::close(kept);
  pipe->fileHandleForWriting()->closeFile();
  EXPECT_EQ(pipe->fileHandleForReading()->readDataToEndOfFile()->view(), "out\n");
}

TEST(NSTask, NoDescriptorLeaksAndSignalsAreAtTheirDefault) {
  // Also one that was opened without any thought of children.
  const int careless = ::open("/dev/null", O_RDONLY);
  auto other = NSPipe::pipe();
  ::signal(SIGPIPE, SIG_IGN);
  sigset_t blocked, before;
  ::sigemptyset(&blocked);
  ::sigaddset(&blocked, SIGTERM);
  ::pthread_sigmask(SIG_BLOCK, &blocked, &before);
  auto task = make<NSTask>();
  task->setLaunchPath("/bin/ls"_ns);
  task->setArguments(arrayOf({"/proc/self/fd"_ns}));
  EXPECT_EQ(output(task), "0\n1\n2\n3\n");  // 3 is the listing's own
  const std::string masks = output(shell("sed -n 's/^Sig[BI].*\t//p' /proc/self/status"_ns));
  EXPECT_EQ(masks.substr(0, 17), "0000000000000000\n");
  EXPECT_EQ(std::stoull(masks.substr(17), nullptr, 16) & (1u << (SIGPIPE - 1)), 0u) << masks;
  ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
  ::signal(SIGPIPE, SIG_DFL);
  ::close(careless);
}

TEST(NSTask, SignalsEndItAndLeaveItsState) {
  auto task = shell("kill -STOP $$; exec sleep 100"_ns);
  EXPECT_TRUE(refuses([&] { task->terminate(); }, {"not launched"}));
  task->launch();
  EXPECT_TRUE(task->isRunning());
  EXPECT_TRUE(refuses([&] { task->terminationStatus(); }, {"still running"}));
  EXPECT_TRUE(refuses([&] { task->launch(); }, {"launched already"}));
  EXPECT_TRUE(refuses([&] { task->setArguments(nullptr); }));
  task->terminate();
  task->resume();
  task->waitUntilExit();
  EXPECT_EQ(task->terminationReason(), NSTaskTerminationReasonUncaughtSignal);
  EXPECT_EQ(task->terminationStatus(), SIGTERM);
  task->interrupt();  // too late, and hits nobody else
}

TEST(NSTask, NoZombieIsLeftByATaskThatNobodyWaitsFor) {
  std::promise<int> ended;
  pid_t identifier = 0;
  {
    auto task = shell("exit 7"_ns);
    task->setTerminationHandler(
        [&](NSTask* finished) { ended.set_value(finished->terminationStatus()); });
    task->launch();
    identifier = task->processIdentifier();
  }
  EXPECT_EQ(ended.get_future().get(), 7);
  EXPECT_EQ(::waitpid(identifier, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
}

TEST(NSTask, WhatCannotBeLaunchedRaisesWithPathAndReasonAndMayTryAgain) {
  const TemporaryDirectory directory;
  const std::string plain = directory.write("plain", "text");
  auto task = make<NSTask>();
  EXPECT_TRUE(refuses([&] { task->launch(); }, {"nil"}));
  auto pipe = NSPipe::pipe();
  task->setStandardOutput(pipe);
  task->setLaunchPath("/no/such/program"_ns);
  EXPECT_TRUE(refuses([&] { task->launch(); }, {"/no/such/program", "No such file"}));
  task->setLaunchPath(ns(plain));
  EXPECT_TRUE(refuses([&] { task->launch(); }, {plain, "Permission denied"}));
  task->setLaunchPath("/bin/echo"_ns);
  task->setCurrentDirectoryPath("/no/such/folder"_ns);
  Ref<NSError> error;
  EXPECT_FALSE(task->launchAndReturnError(&error));
  EXPECT_NE(textOf(error).find("/no/such/folder"), std::string::npos);
  task->setCurrentDirectoryPath(nullptr);
  task->launch();
  EXPECT_EQ(pipe->fileHandleForReading()->readDataToEndOfFile()->view(), "\n");

  auto odd = make<NSTask>();
  const auto number = NSNumber::numberWithInt(1);
  EXPECT_TRUE(refuses([&] { odd->setArguments(arrayOf({number})); }));
  EXPECT_TRUE(refuses([&] { odd->setStandardOutput("path"_ns); }, {"neither an NSPipe"}));
  const auto wrong = NSDictionary::dictionaryWithObject_forKey("c"_ns, "a=b"_ns);
  EXPECT_TRUE(refuses([&] { odd->setEnvironment(wrong); }, {"a=b"}));
}

TEST(NSTask, ManyAtOnceInSeveralThreads) {
  inThreads(4, [](int i) {
    for (int j = 0; j < 10; ++j) {
      auto task = shell(NSString::stringWithFormat("echo %d.%d; exit %d"_ns, i, j, j));
      EXPECT_EQ(output(task), std::to_string(i) + "." + std::to_string(j) + "\n");
      EXPECT_EQ(task->terminationStatus(), j);
    }
  });
}

TEST(NSProcessInfo, TellsOfThisProcess) {
  auto info = NSProcessInfo::processInfo();
  EXPECT_EQ(info->processIdentifier(), ::getpid());
  EXPECT_TRUE(equal(info->processName(), "platform-tests"_ns));
  ::setenv("QZ_INFO_TEST", "a=b", 1);
  EXPECT_TRUE(equal(info->environment()->objectForKey("QZ_INFO_TEST"_ns), "a=b"_ns));
  EXPECT_FALSE(equal(info->globallyUniqueString(), info->globallyUniqueString()));
}

TEST(NSProcessInfo, ReleaseFiles) {
  const std::string_view file =
      "# NAME=no\nVERSION_ID_X=0\nVERSION_ID=\"12.4\"\nNAME='a \\b'\nTEXT=\"say \\\"\\$x\\\"\" # "
      "\nBARE=arch\\ x";
  EXPECT_EQ(detail::osReleaseValue(file, "VERSION_ID"), "12.4");
  EXPECT_EQ(detail::osReleaseValue(file, "NAME"), "a \\b");
  EXPECT_EQ(detail::osReleaseValue(file, "TEXT"), "say \"$x\"");
  EXPECT_EQ(detail::osReleaseValue(file, "BARE"), "arch x");
  EXPECT_EQ(detail::osReleaseValue("NAME=\"open", "NAME"), "open");
}

}  // namespace
}  // namespace qz::test
