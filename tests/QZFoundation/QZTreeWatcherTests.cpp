#include "QZFoundation/QZTreeWatcher.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/Diagnostics.h"
#include "tests/support/FaultySystem.h"
#include "tests/support/Files.h"
#include "tests/support/Serving.h"

namespace qz::test {
namespace {

class TreeDelegate : public Derives<TreeDelegate, NSObject> {
 public:
  static void describe(ClassDescription<TreeDelegate>& is) {
    is.named("TreeDelegate").method<&TreeDelegate::changed>("treeWatcher:didDetectChanges:");
  }
  void changed(QZTreeWatcher* watcher, NSArray* changes) {
    EXPECT_TRUE(NSThread::isMainThread());
    told += to_string(watcher->path()) + " " + to_string(changes->objectAtIndex(0)) + ";";
  }
  std::string told;
};

class QZTreeWatcherTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(NSThread::isMainThread()); }
  void watch(QZTreeWatcherOptions options = {}) {
    watcher = QZTreeWatcher::initWithPath(
        ns(directory.path()),
        [this](NSArray* changes) {
          EXPECT_TRUE(NSThread::isMainThread());
          if (listener) listener(changes);
        },
        options);
    ASSERT_NE(watcher, nullptr);
  }
  const TemporaryDirectory directory = TemporaryDirectory::inMemory();
  Ref<QZTreeWatcher> watcher;
  std::function<void(NSArray*)> listener;
};

TEST_F(QZTreeWatcherTest, TellsListenerAndDelegate) {
  Ref<NSError> error;
  EXPECT_EQ(QZTreeWatcher::initWithPath_error("/no/such/folder"_ns, &error), nullptr);
  EXPECT_EQ(error->code(), ENOENT);
  EXPECT_EQ(textOf(error), "The directory /no/such/folder could not be read");
  EXPECT_TRUE(error->localizedFailureReason());
  EXPECT_EQ(QZTreeWatcher::initWithPath_error(nullptr, nullptr), nullptr);
  watch({.latency = 0});
  auto delegate = make<TreeDelegate>();
  watcher->setDelegate(delegate);
  const std::string top = directory.path();
  fs::create_directory(top + "/a");
  ASSERT_TRUE(serveUntil([&] { return !delegate->told.empty(); }));
  EXPECT_EQ(delegate->told, top + " created " + top + "/a;");
  delegate->told.clear();
  // A listener that fails ends nothing.
  listener = [&](NSArray*) {
    listener = nullptr;
    NSException::raise_reason(NSGenericException, "a failing listener"_ns);
  };
  const Diagnostics diagnostics;
  fs::rename(top + "/a", top + "/b");
  ASSERT_TRUE(serveUntil([&] { return listener == nullptr; }));
  EXPECT_EQ(diagnostics.said(), "A listener to changes in " + top +
                                    " failed: NSGenericException: a failing listener\n");
  fs::rename(top + "/b", top + "/\xFF");
  ASSERT_TRUE(serveUntil([&] { return !delegate->told.empty(); }));
  EXPECT_EQ(delegate->told, top + " deleted renamed " + top + "/b (" + top + "/\uFFFD);");
  EXPECT_EQ(watcher->error(), nullptr);
}

TEST_F(QZTreeWatcherTest, CollectsForAWhile) {
  watch({.latency = 0.3, .namesToLeaveOut = arrayOf({"*.tmp"_ns})});
  std::string told;
  std::string below;
  listener = [&](NSArray* changes) {
    told = to_string(changes->componentsJoinedByString("; "_ns));
    below = to_string(
        as<NSArray>(changes->valueForKey("relativePath"_ns))->componentsJoinedByString(" "_ns));
  };
  const auto start = NSDate::date();
  const std::string path = directory.write("b", "1");
  directory.write("a", "1");
  directory.write("brief", "1");
  directory.write("x.tmp", "1");
  NSThread::sleepForTimeInterval(0.02);
  directory.write("b", "22");
  fs::remove(directory.path() + "/brief");
  ASSERT_TRUE(serveUntil([&] { return !told.empty(); }));
  EXPECT_GE(-start->timeIntervalSinceNow(), 0.3);
  EXPECT_EQ(told, "created " + directory.path() + "/a; created " + directory.path() + "/b");
  EXPECT_EQ(below, "a b");
}

TEST_F(QZTreeWatcherTest, MayEndAnywhere) {
  watch({.latency = 0});
  int calls = 0;
  listener = [&](NSArray*) {
    ++calls;
    watcher = nullptr;
    directory.write("b", "");
  };
  directory.write("a", "");
  ASSERT_TRUE(serveUntil([&] { return calls != 0 && threadsNamed("QZTreeWatcher") == 0; }));
  watch({.latency = 0});
  directory.write("c", "");
  std::thread([&] { watcher = nullptr; }).join();
  const auto start = NSDate::date();
  ASSERT_TRUE(serveUntil([&] { return threadsNamed("QZTreeWatcher") == 0; }));
  EXPECT_LT(-start->timeIntervalSinceNow(), 3);
  EXPECT_EQ(calls, 1);
}

TEST_F(QZTreeWatcherTest, SaysWhatItMustPoll) {
  FaultySystem system;
  system.failAll(SystemCall::AddWatch, ENOSPC);
  watch({.latency = 0, .pollInterval = 0.02});
  EXPECT_EQ(watcher->polledFolders(), 1u);
  EXPECT_EQ(watcher->error()->code(), ENOSPC);
  EXPECT_EQ(textOf(watcher->error()), "Some folders in " + directory.path() +
                                          " cannot be watched and are checked regularly instead");
  bool isTold = false;
  listener = [&](NSArray*) { isTold = true; };
  directory.write("a", "");
  EXPECT_TRUE(serveUntil([&] { return isTold; }));
  system.heal();
  EXPECT_TRUE(serveUntil([&] { return watcher->polledFolders() == 0; }));
  EXPECT_EQ(watcher->error(), nullptr);
}

/// What somebody knows who has nothing but what the watcher tells: of each path its contents, or
/// "/" for a folder. Files are read when they are told to be new or changed, and taken along when
/// they are told to be renamed and nothing else.
class Knowledge {
 public:
  struct File {
    std::string contents;
    ino_t inode = 0;  // of the file that was read, which may have been another one by then
  };
  using Files = std::map<std::string, File>;
  explicit Knowledge(Files files) : known(std::move(files)) {}

  void apply(NSArray* changes) {
    const Files before = known;
    std::string last;
    for (NSObject* each : *changes) {
      auto* change = as<QZTreeChange>(each);
      const std::string path = change->path()->UTF8String();
      EXPECT_LT(std::exchange(last, path), path);
      const std::string below = change->relativePath()->UTF8String();
      EXPECT_TRUE(below.empty() || path.ends_with("/" + below)) << path;
      EXPECT_EQ(before.count(path), change->isCreated() ? 0u : 1u) << to_string(change);
      const std::string other = change->otherPath() ? change->otherPath()->UTF8String() : "";
      EXPECT_TRUE(change->isDeleted() || other.empty() || before.count(other) == 1)
          << to_string(change);
      if (change->isDeleted())
        known.erase(path);
      else if (change->kinds() != QZTreeChangeAttributes)
        known[path] = read(path);
      if (change->kinds() != (QZTreeChangeCreated | QZTreeChangeRenamed)) continue;
      const File& old = before.at(other);
      if (old.inode == known[path].inode) known[path] = old;
    }
  }
  static Files listing(const std::string& top) {
    Files all{{top, read(top)}};
    for (const auto& each : fs::recursive_directory_iterator(top)) {
      const std::string path = each.path().string();
      all[path] = read(path);
    }
    return all;
  }
  std::string differences(const Files& listing) const {
    std::string all;
    for (const auto& [path, file] : listing)
      if (known.count(path) == 0) all += "not told: " + path + '\n';
    for (const auto& [path, file] : known)
      if (listing.count(path) == 0)
        all += "not there: " + path + '\n';
      else if (listing.at(path).contents != file.contents)
        all += path + ": " + listing.at(path).contents + ", not " + file.contents + '\n';
    return all;
  }
  Files known;

 private:
  static File read(const std::string& path) {
    struct stat is {};
    const int file = ::open(path.c_str(), O_RDONLY | O_NOFOLLOW);
    if (file < 0) return {::lstat(path.c_str(), &is) == 0 ? "link" : "", is.st_ino};
    ::fstat(file, &is);
    char text[16] = "/";
    const ssize_t size = S_ISDIR(is.st_mode) ? 1 : ::read(file, text, sizeof text);
    ::close(file);
    return {std::string(text, static_cast<std::size_t>(size)), is.st_ino};
  }
};

/// Random operations in a tree, and between it and a folder outside.
class Disorder {
 public:
  Disorder(std::string top, std::string outside, unsigned seed)
      : top_(std::move(top)), outside_(std::move(outside)), random_(seed) {}

  void step() {
    std::error_code ignored;
    const std::string path = anyPath();
    const auto kind = random_() % 12;
    if (kind < 2) fs::create_directories(path + "/" + name() + "/" + name(), ignored);
    if (kind < 5)
      write(path + "/" + name());
    else if (kind == 5)
      write(path);
    else if (kind < 8)
      ::rename(path.c_str(), anyPath().c_str());
    else if (kind == 8)
      ::rename(path.c_str(), (outside_ + "/" + name()).c_str());
    else if (kind == 9)
      ::rename((outside_ + "/" + name()).c_str(), path.c_str());
    else if (kind == 10 && random_() % 2 == 0)
      fs::remove_all(path, ignored);
    else if (kind == 11 && random_() % 2 == 0)
      fs::create_symlink(top_, path, ignored);
    else if (kind == 11)
      ::chmod(path.c_str(), 0700 + static_cast<mode_t>(random_() % 8));
  }

 private:
  std::string name() { return std::string(1, static_cast<char>('a' + random_() % 4)); }
  std::string anyPath() {
    std::string path = top_;
    for (unsigned depth = 1 + static_cast<unsigned>(random_() % 4); depth > 0; --depth)
      path += "/" + name();
    return path;
  }
  void write(const std::string& path) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW, 0600);
    if (file < 0) return;
    const std::string text = std::to_string(++written_);
    EXPECT_EQ(::write(file, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    ::close(file);
  }

  const std::string top_;
  const std::string outside_;
  std::mt19937 random_;
  int written_ = 0;
};

// For two minutes when QZ_STRESS_SECONDS=120 says so.
TEST_F(QZTreeWatcherTest, WhoAppliesWhatIsToldHasWhatIsThere) {
  const TemporaryDirectory outside = TemporaryDirectory::inMemory();
  const char* stress = std::getenv("QZ_STRESS_SECONDS");
  const unsigned seed = stress != nullptr ? std::random_device()() : 1;
  const auto end = inSeconds(stress ? std::atof(stress) : 1.0);
  Disorder disorder(directory.path(), outside.path(), seed);
  watch({.latency = 0.004});
  Knowledge knowledge(Knowledge::listing(directory.path()));
  listener = [&](NSArray* changes) { knowledge.apply(changes); };
  do {
    std::atomic<bool> isDone{false};
    std::thread other([&] {
      for (int i = 0; i < 300; ++i) {
        disorder.step();
        if (i % 16 == 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
      }
      isDone = true;
    });
    serveUntil([&] { return isDone.load(); });
    other.join();
    const auto listing = Knowledge::listing(directory.path());
    ASSERT_TRUE(serveUntil([&] { return knowledge.differences(listing).empty(); }))
        << "seed " << seed << '\n'
        << knowledge.differences(listing);
  } while (end->timeIntervalSinceNow() > 0 && !HasFailure());
}

}  // namespace
}  // namespace qz::test
