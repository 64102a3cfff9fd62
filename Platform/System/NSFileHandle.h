/// @file
/// File handles: open files, pipes, sockets and devices as Objects.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSString.h"

#pragma GCC visibility push(default)

namespace qz {

class NSData;
class NSError;

/// An open descriptor, with the bytes that go through it.
///
///     Ref<NSError> error;
///     auto handle = NSFileHandle::fileHandleForReadingAtPath_error(path, &error);
///     while (true) {
///       Ref<NSData> chunk = handle->availableData();
///       if (chunk->length() == 0) break;
///       use(chunk);
///     }
///
/// Descriptors made here are not inherited by the programs that the process starts; an NSTask hands
/// on the ones it is told to. Interrupted calls are made again, and a descriptor that is set not to
/// wait is waited for. Writing to a pipe whose reader went away fails and sends no signal.
///
/// What fails raises NSFileHandleOperationException with the operation and what the system says;
/// the forms with an `error:` answer that as an Error instead, and raise nothing. All of them fail
/// once the handle is closed. Several threads may use one handle as they may use one descriptor;
/// closing while another thread reads or writes is for the caller to prevent.
class NSFileHandle : public Derives<NSFileHandle, NSObject> {
 public:
  static void describe(ClassDescription<NSFileHandle>& is);

  /// Over no descriptor: closed.
  NSFileHandle() noexcept = default;
  ~NSFileHandle() override;

  // Making ----------------------------------------------------------------------------------------

  /// Over a descriptor that is open. It stays open when the handle goes, unless `closes`.
  static Ref<NSFileHandle> initWithFileDescriptor(std::int32_t descriptor);
  static Ref<NSFileHandle> initWithFileDescriptor_closeOnDealloc(std::int32_t descriptor,
                                                                 bool closes);

  /// An existing file, opened for reading from its start, for writing over what it has from its
  /// start, or for both. Nil when that fails, and for what no file can be called: nil and the empty
  /// path (ENOENT), one with a zero (EINVAL). Closed with the handle.
  static Ref<NSFileHandle> fileHandleForReadingAtPath(NSString* path);
  static Ref<NSFileHandle> fileHandleForWritingAtPath(NSString* path);
  static Ref<NSFileHandle> fileHandleForUpdatingAtPath(NSString* path);
  static Ref<NSFileHandle> fileHandleForReadingAtPath_error(NSString* path, Ref<NSError>* error);
  static Ref<NSFileHandle> fileHandleForWritingAtPath_error(NSString* path, Ref<NSError>* error);
  static Ref<NSFileHandle> fileHandleForUpdatingAtPath_error(NSString* path, Ref<NSError>* error);

  /// The process's own streams, always the same handles. They can be closed, but do not close by
  /// themselves.
  static Ref<NSFileHandle> fileHandleWithStandardInput();
  static Ref<NSFileHandle> fileHandleWithStandardOutput();
  static Ref<NSFileHandle> fileHandleWithStandardError();

  /// One that reads nothing and takes anything.
  static Ref<NSFileHandle> fileHandleWithNullDevice();

  // Reading ---------------------------------------------------------------------------------------

  /// Of a pipe, socket or terminal the bytes that are there, waiting until there are some; of a
  /// file what follows, to its end. Empty at the end.
  virtual Ref<NSData> availableData();

  /// What follows up to the end, or up to `length` bytes of it, waiting as long as it takes.
  Ref<NSData> readDataToEndOfFile();
  Ref<NSData> readDataOfLength(std::uint32_t length);
  Ref<NSData> readDataToEndOfFileAndReturnError(Ref<NSError>* error);
  Ref<NSData> readDataUpToLength_error(std::uint32_t length, Ref<NSError>* error);

  // Writing ---------------------------------------------------------------------------------------

  /// Writes all bytes; nothing for nil. When it fails, some of them may have been written.
  virtual void writeData(NSData* data);
  virtual bool writeData_error(NSData* data, Ref<NSError>* error);
  bool writeBytes_error(std::span<const std::byte> bytes, Ref<NSError>* error);

  // Files alone -----------------------------------------------------------------------------------

  /// Where the next byte is read or written.
  std::uint64_t offsetInFile();

  /// Moves there; `seekToEndOfFile` answers where that is. Beyond the end is possible, and writing
  /// there leaves zeros between.
  std::uint64_t seekToEndOfFile();
  void seekToFileOffset(std::uint64_t offset);

  /// Cuts the file, or extends it with zeros, and moves to its new end.
  void truncateFileAtOffset(std::uint64_t offset);
  bool truncateAtOffset_error(std::uint64_t offset, Ref<NSError>* error);

  /// Returns when the bytes are on the disk.
  void synchronizeFile();
  bool synchronizeAndReturnError(Ref<NSError>* error);

  // Closing ---------------------------------------------------------------------------------------

  /// Closes the descriptor, whoever opened it. Nothing when it is closed already.
  void closeFile() noexcept;

  /// -1 once closed.
  std::int32_t fileDescriptor() const noexcept { return descriptor_; }

  /// "<NSFileHandle: 0xaddress> descriptor 7"
  Ref<NSString> description() const override;

 private:
  enum class Breaks : std::uint8_t { Unknown, Yes, No };

  Ref<NSData> readUpTo(std::uint64_t limit, const char* operation, Ref<NSError>* error);

  bool closes_ = false;
  Breaks breaks_ = Breaks::Unknown;
  std::int32_t descriptor_ = -1;
};

/// A read, a write or another call on a descriptor that failed.
inline NSString* const NSFileHandleOperationException =
    detail::literal<"NSFileHandleOperationException">();

}  // namespace qz

#pragma GCC visibility pop
