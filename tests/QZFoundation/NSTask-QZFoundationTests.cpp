#include "QZFoundation/NSTask-QZFoundation.h"

#include <signal.h>

#include "Platform/System/NSFileHandle.h"
#include "tests/support/Shell.h"

namespace qz::test {
namespace {

Ref<NSArray> script(NSString* text) { return arrayOf({"-c"_ns, text}); }

std::string outputOf(NSString* text) {
  return std::string(send<Ref<NSData>>(classOf<NSData>(), "dataByRunningTask:withArguments:"_sel,
                                       "/bin/sh"_ns, script(text))
                         ->view());
}

TEST(NSTaskQZFoundation, CollectsTheOutput) {
  EXPECT_EQ(outputOf("echo out; echo not this >&2; exit 1"_ns), "out\n");
  EXPECT_EQ(dataByRunningTask_withArguments("/bin/true"_ns, nullptr)->length(), 0u);
  EXPECT_EQ(outputOf("echo before; exec >&-; sleep 0.01"_ns), "before\n");
  EXPECT_EQ(outputOf("echo before; kill -KILL $$"_ns), "before\n");
  // What the program started still has the output.
  EXPECT_EQ(outputOf("(sleep 0.05; echo late) & echo early"_ns), "early\nlate\n");
  EXPECT_TRUE(refuses([] { dataByRunningTask_withArguments("/no/such"_ns, nullptr); },
                      {"/no/such", "No such file"}));
}

TEST(NSTaskQZFoundation, OutputOfAnySize) {
  const auto data = dataByRunningTask_withArguments(
      "/usr/bin/head"_ns, arrayOf({"-c"_ns, "20000000"_ns, "/dev/zero"_ns}));
  EXPECT_EQ(data->length(), 20000000u);
  EXPECT_EQ(data->view().find_first_not_of('\0'), std::string_view::npos);
}

TEST(NSTaskQZFoundation, CopiesTheOutputToAHandle) {
  const TemporaryDirectory directory;
  const auto path = ns(directory.write("out", "kept "));
  auto handle = NSFileHandle::fileHandleForUpdatingAtPath(path);
  handle->seekToEndOfFile();
  auto task = shell("echo one; echo two"_ns);
  send<void>(task, "launchAndWriteStandardOutputToFileHandle:"_sel, handle);
  handle->seekToFileOffset(0);
  EXPECT_EQ(handle->readDataToEndOfFile()->view(), "kept one\ntwo\n");

  // A handle that takes no more ends the task as well.
  auto endless = make<NSTask>();
  endless->setLaunchPath("/usr/bin/yes"_ns);
  EXPECT_TRUE(raises(NSFileHandleOperationException, [&] {
    launchAndWriteStandardOutputToFileHandle(
        endless, NSFileHandle::fileHandleForWritingAtPath("/dev/full"_ns));
  }));
  endless->waitUntilExit();
  EXPECT_EQ(endless->terminationStatus(), SIGPIPE);
}

}  // namespace
}  // namespace qz::test
