#include "Platform/System/NSFileHandle.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include "Platform/System/NSPipe.h"
#include "tests/support/Files.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

Ref<NSData> bytes(std::string_view text) { return NSData::dataWithBytes(text); }
std::string text(NSData* data) { return data != nullptr ? std::string(data->view()) : "nil"; }

TEST(NSFileHandle, ReadsWritesMovesAndCutsAFile) {
  const TemporaryDirectory directory;
  const std::string file = directory.write("f", "0123456789");
  auto handle = NSFileHandle::fileHandleForUpdatingAtPath(ns(file));
  EXPECT_EQ(text(handle->readDataOfLength(3)), "012");
  EXPECT_EQ(text(handle->availableData()), "3456789");
  EXPECT_EQ(text(handle->availableData()), "");
  handle->seekToFileOffset(2);
  handle->writeData(bytes("xy"));
  EXPECT_EQ(handle->offsetInFile(), 4u);
  EXPECT_EQ(handle->seekToEndOfFile(), 10u);
  handle->writeData(bytes("!"));
  handle->synchronizeFile();
  EXPECT_EQ(contentsOf(file), "01xy456789!");
  handle->truncateFileAtOffset(3);
  handle->writeData(bytes("z"));
  EXPECT_EQ(contentsOf(file), "01xz");
  handle->closeFile();
  handle->closeFile();
  EXPECT_EQ(handle->fileDescriptor(), -1);
}

TEST(NSFileHandle, FailuresAreErrorsOrExceptions) {
  const TemporaryDirectory directory;
  const std::string missing = directory.path() + "/none/f";
  Ref<NSError> error;
  EXPECT_EQ(NSFileHandle::fileHandleForWritingAtPath_error(ns(missing), &error), nullptr);
  EXPECT_EQ(error->code(), ENOENT);
  EXPECT_NE(textOf(error).find(missing), std::string::npos);

  for (NSString* never : {"a\0b"_ns, ""_ns, static_cast<NSString*>(nullptr)}) {
    EXPECT_EQ(NSFileHandle::fileHandleForReadingAtPath_error(never, &error), nullptr);
    EXPECT_EQ(error->code(), never != nullptr && never->length() != 0 ? EINVAL : ENOENT);
  }

  auto reading = NSFileHandle::fileHandleForReadingAtPath(ns(directory.write("f", "abc")));
  error = nullptr;
  EXPECT_FALSE(reading->writeData_error(bytes("x"), &error));
  EXPECT_EQ(error->code(), EBADF);
  auto full = NSFileHandle::fileHandleForWritingAtPath("/dev/full"_ns);
  EXPECT_TRUE(raises(NSFileHandleOperationException, [&] { full->writeData(bytes("x")); },
                     {"writeData:", "No space left"}));
  auto folder = NSFileHandle::fileHandleForReadingAtPath(ns(directory.path()));
  EXPECT_EQ(folder->readDataToEndOfFileAndReturnError(&error), nullptr);
  EXPECT_EQ(error->code(), EISDIR);

  reading->closeFile();
  const std::function<void()> closed[] = {
      [&] { reading->availableData(); },     [&] { reading->readDataToEndOfFile(); },
      [&] { reading->readDataOfLength(1); }, [&] { reading->writeData(bytes("x")); },
      [&] { reading->offsetInFile(); },      [&] { reading->seekToEndOfFile(); },
      [&] { reading->seekToFileOffset(0); }, [&] { reading->truncateFileAtOffset(0); },
      [&] { reading->synchronizeFile(); },
  };
  for (const auto& use : closed) EXPECT_TRUE(raises(NSFileHandleOperationException, use));
}

TEST(NSFileHandle, OwnsTheDescriptorOnlyWhenItShould) {
  const int descriptor = ::open("/dev/null", O_RDWR | O_CLOEXEC);
  NSFileHandle::initWithFileDescriptor(descriptor);
  EXPECT_NE(::fcntl(descriptor, F_GETFD), -1);
  NSFileHandle::initWithFileDescriptor_closeOnDealloc(descriptor, true);
  EXPECT_EQ(::fcntl(descriptor, F_GETFD), -1);
  EXPECT_EQ(NSFileHandle::fileHandleWithStandardError()->fileDescriptor(), 2);
  EXPECT_EQ(text(NSFileHandle::fileHandleWithNullDevice()->availableData()), "");
}

TEST(NSPipe, CarriesBytesAndTellsTheEnd) {
  auto pipe = NSPipe::pipe();
  for (const auto& each : {pipe->fileHandleForReading(), pipe->fileHandleForWriting()})
    EXPECT_EQ(::fcntl(each->fileDescriptor(), F_GETFD), FD_CLOEXEC);
  pipe->fileHandleForWriting()->writeData(bytes("abc"));
  EXPECT_EQ(text(pipe->fileHandleForReading()->availableData()), "abc");
  // A reader that is set not to wait is waited for all the same.
  ::fcntl(pipe->fileHandleForReading()->fileDescriptor(), F_SETFL, O_NONBLOCK);
  const std::string large(1 << 20, 'x');
  std::thread writer([&] {
    pipe->fileHandleForWriting()->writeData(bytes(large));
    pipe->fileHandleForWriting()->closeFile();
  });
  EXPECT_EQ(text(pipe->fileHandleForReading()->readDataOfLength(5)), "xxxxx");
  EXPECT_EQ(pipe->fileHandleForReading()->readDataToEndOfFile()->length(), large.size() - 5);
  writer.join();
}

TEST(NSPipe, AReaderThatWentAwayIsAFailureAndNoSignal) {
  static volatile sig_atomic_t signals;
  signals = 0;
  auto* before = ::signal(SIGPIPE, [](int) { signals = signals + 1; });
  auto pipe = NSPipe::pipe();
  pipe->fileHandleForReading()->closeFile();
  Ref<NSError> error;
  EXPECT_FALSE(pipe->fileHandleForWriting()->writeData_error(bytes("x"), &error));
  EXPECT_EQ(error->code(), EPIPE);
  EXPECT_EQ(signals, 0);
  // The program's own signals come through as before.
  ::raise(SIGPIPE);
  EXPECT_EQ(signals, 1);
  ::signal(SIGPIPE, before);
}

}  // namespace
}  // namespace qz::test
