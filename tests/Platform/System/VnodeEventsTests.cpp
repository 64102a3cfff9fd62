#include "Platform/System/detail/VnodeEvents.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/Test.h"

namespace qz::test {
namespace {

using namespace detail;

/// Everything that is ready, one event for each watch.
std::map<VnodeEvents::Watch, std::uint32_t> drain(VnodeEvents& events) {
  std::map<VnodeEvents::Watch, std::uint32_t> all;
  for (;;) {
    const auto some = events.wait(0ms);
    if (some.empty()) return all;
    for (const auto& event : some) all[event.watch] |= event.kinds;
  }
}

class VnodeEventsTest : public ::testing::Test {
 protected:
  std::uint32_t kindsOf(VnodeEvents::Watch watch) {
    const auto all = drain(*events);
    return all.contains(watch) ? all.at(watch) : 0;
  }
  static void append(const std::string& path, std::string_view text) {
    std::ofstream(path, std::ios::app) << text;
  }
  TemporaryDirectory directory;
  std::unique_ptr<VnodeEvents> events = VnodeEvents::open();
  static constexpr std::uint32_t everything = 0x7F;
};

TEST_F(VnodeEventsTest, RefusesWithTheReason) {
  EXPECT_EQ(events->add(directory.path() + "/missing", everything), 0u);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(events->add(std::string("/\0x", 3), everything), 0u);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(events->add(std::string(5000, 'x'), everything), 0u);
  EXPECT_EQ(errno, ENAMETOOLONG);
  EXPECT_TRUE(events->wait(1ms).empty());
}

TEST_F(VnodeEventsTest, WakingEndsAWait) {
  events->wake();
  EXPECT_TRUE(events->wait(60'000ms).empty());
  std::thread waiter([&] { EXPECT_TRUE(events->wait(60'000ms).empty()); });
  events->wake();
  waiter.join();
}

TEST_F(VnodeEventsTest, TellsADeletionWhileTheFileIsOpenAndOnce) {
  const std::string path = directory.write("a", "text");
  const auto watch = events->add(path, everything);
  const int held = ::open(path.c_str(), O_RDONLY);
  ::unlink(path.c_str());
  EXPECT_EQ(kindsOf(watch), vnodeDeleted);
  ::close(held);
  EXPECT_EQ(kindsOf(watch), 0u);
  events->remove(watch);
  EXPECT_FALSE(events->has(watch));
}

TEST_F(VnodeEventsTest, AFolderTellsOfItsNamesAndNotOfWhatIsBehindThem) {
  const auto watch = events->add(directory.path(), everything);
  const std::string path = directory.write("a", "");
  EXPECT_EQ(kindsOf(watch), vnodeWritten);
  append(path, "more");
  ::chmod(path.c_str(), 0600);
  EXPECT_EQ(kindsOf(watch), 0u);
  ::mkdir((directory.path() + "/sub").c_str(), 0700);
  EXPECT_EQ(kindsOf(watch), vnodeWritten | vnodeLinked);
  ::rmdir((directory.path() + "/sub").c_str());
  ::chmod(directory.path().c_str(), 0750);
  EXPECT_EQ(kindsOf(watch), vnodeWritten | vnodeLinked | vnodeAttributes);
}

TEST_F(VnodeEventsTest, LosingEventsIsAWriteEverywhere) {
  const auto folder = events->add(directory.path(), everything);
  const auto quiet = events->add(directory.write("quiet", ""), vnodeWritten);
  const auto blind = events->add(directory.write("blind", ""), vnodeRenamed);
  drain(*events);
  std::size_t limit = 0;
  std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> limit;
  if (limit == 0 || limit > 200'000) GTEST_SKIP() << "the queue is too long to overflow here";
  const std::string one = directory.path() + "/one";
  const std::string two = directory.path() + "/two";
  ::close(::creat(one.c_str(), 0600));
  for (std::size_t i = 0; i <= limit / 2 + 2; ++i)
    ::rename((i % 2 == 0 ? one : two).c_str(), (i % 2 == 0 ? two : one).c_str());
  const auto all = drain(*events);
  EXPECT_EQ(all.at(quiet), vnodeWritten);
  EXPECT_EQ(all.at(folder), vnodeWritten);
  EXPECT_FALSE(all.contains(blind));
}

TEST_F(VnodeEventsTest, AddingAndRemovingLosesNothing) {
  const std::string path = directory.write("a", "");
  const auto lasting = events->add(path, vnodeWritten);
  for (int i = 0; i < 20'000; ++i) {
    const auto brief = events->add(i % 2 == 0 ? path : directory.path(), everything);
    if (i % 3 == 0) ::truncate(path.c_str(), i % 7);
    events->remove(brief);
    for (const auto& event : events->wait(0ms)) EXPECT_EQ(event.watch, lasting);
  }
  append(path, "x");
  EXPECT_EQ(kindsOf(lasting), vnodeWritten);
}

/// What should be reported, worked out from the operations alone.
class Model {
 public:
  static constexpr std::size_t names = 6;

  struct Watch {
    std::size_t name;
    std::uint32_t mask;
    int inode;
    bool isOver = false;
    bool isDeleted = false;
    bool isRenamed = false;
    bool forgotLinks = false;
  };

  using Expected = std::map<VnodeEvents::Watch, std::uint32_t>;

  void attribute(int inode, bool links) {
    for (auto& [id, watch] : watches) {
      if (watch.inode != inode || watch.isOver) continue;
      if (at[watch.name] == inode) {
        expect(id, links || watch.forgotLinks ? vnodeLinked : vnodeAttributes);
        watch.isRenamed = watch.isDeleted = watch.forgotLinks = false;
        continue;
      }
      watch.forgotLinks = true;
      if (watch.isRenamed)
        expect(id, vnodeAttributes);
      else if (!std::exchange(watch.isDeleted, true))
        expect(id, vnodeDeleted);
    }
  }
  void write(int inode, bool grows) {
    for (auto& [id, watch] : watches)
      if (watch.inode == inode && !watch.isOver)
        expect(id, vnodeWritten | (grows && at[watch.name] == inode ? vnodeExtended : 0u));
  }
  void move(int inode) {
    for (auto& [id, watch] : watches) {
      if (watch.inode != inode || watch.isOver) continue;
      expect(id, vnodeRenamed);
      watch.isRenamed = at[watch.name] != inode;
      if (!watch.isRenamed) watch.isDeleted = watch.forgotLinks = false;
    }
  }
  /// A name of the inode is gone; `at` knows already.
  void unlinked(int inode) {
    attribute(inode, true);
    for (std::size_t name = 0; name < names; ++name)
      if (at[name] == inode) return;
    for (auto& [id, watch] : watches) {
      if (watch.inode != inode || watch.isOver) continue;
      if (!std::exchange(watch.isDeleted, true)) expect(id, vnodeDeleted);
      watch.isOver = true;
    }
  }
  void expect(VnodeEvents::Watch id, std::uint32_t kinds) {
    expected[id] |= kinds & watches[id].mask;
  }

  std::array<int, names> at{};  // inode by name; 0: none
  std::map<int, std::int64_t> sizes;
  std::map<VnodeEvents::Watch, Watch> watches;
  Expected expected;
  int lastInode = 0;
};

// For two minutes when QZ_STRESS_SECONDS=120 says so.
TEST_F(VnodeEventsTest, ReportsWhatAModelExpectsOfRandomOperations) {
  const char* stress = std::getenv("QZ_STRESS_SECONDS");
  const auto end =
      std::chrono::steady_clock::now() +
      (stress != nullptr ? std::chrono::milliseconds(1000 * std::atol(stress)) : 500ms);
  const unsigned seed = stress != nullptr ? std::random_device()() : 1;
  std::mt19937 random(seed);
  const auto pick = [&](std::size_t below) { return random() % below; };
  Model model;
  const auto folder = events->add(directory.path(), everything);
  model.watches[folder] = {0, everything, -1};
  const auto pathOf = [&](std::size_t name) {
    return directory.path() + "/" + std::to_string(name);
  };
  std::ostringstream log;
  for (int step = 0; std::chrono::steady_clock::now() < end; ++step) {
    const std::size_t name = pick(Model::names);
    const std::size_t other = pick(Model::names);
    const std::string path = pathOf(name);
    const int inode = model.at[name];
    const std::size_t operation = pick(10);
    log << step << ": " << operation << ' ' << name << ' ' << other << '\n';
    if (operation == 0 && inode == 0) {
      ::close(::open(path.c_str(), O_CREAT | O_EXCL | O_WRONLY, 0600));
      model.at[name] = ++model.lastInode;
      model.expect(folder, vnodeWritten);
    } else if (operation == 1 && inode != 0) {
      append(path, "text");
      model.sizes[inode] += 4;
      model.write(inode, true);
    } else if (operation == 2 && model.sizes[inode] > 0) {
      const int file = ::open(path.c_str(), O_WRONLY);
      EXPECT_EQ(::pwrite(file, "x", 1, 0), 1);
      ::close(file);
      model.write(inode, false);
    } else if (operation == 3 && model.sizes[inode] > 0) {
      model.sizes[inode] /= 2;
      EXPECT_EQ(::truncate(path.c_str(), model.sizes[inode]), 0);
      model.write(inode, false);
    } else if (operation == 4 && inode != 0) {
      ::chmod(path.c_str(), step % 2 == 0 ? 0600 : 0640);
      model.attribute(inode, false);
    } else if (operation == 5 && inode != 0 && model.at[other] == 0) {
      ASSERT_EQ(::link(path.c_str(), pathOf(other).c_str()), 0);
      model.at[other] = inode;
      model.attribute(inode, true);
      model.expect(folder, vnodeWritten);
    } else if (operation == 6 && inode != 0) {
      ASSERT_EQ(::unlink(path.c_str()), 0);
      model.at[name] = 0;
      model.unlinked(inode);
      model.expect(folder, vnodeWritten);
    } else if (operation == 7 && inode != 0 && model.at[other] != inode) {
      ASSERT_EQ(::rename(path.c_str(), pathOf(other).c_str()), 0);
      const int replaced = std::exchange(model.at[other], std::exchange(model.at[name], 0));
      model.move(inode);
      if (replaced != 0) model.unlinked(replaced);
      model.expect(folder, vnodeWritten);
    } else if (operation == 8 && inode != 0 && model.watches.size() < 12) {
      const auto mask = static_cast<std::uint32_t>(1 + pick(0x7F));
      const auto watch = events->add(path, mask);
      ASSERT_NE(watch, 0u);
      model.watches[watch] = {name, mask, inode};
    } else if (operation == 9 && model.watches.size() > 1) {
      const auto place = static_cast<std::ptrdiff_t>(1 + pick(model.watches.size() - 1));
      const auto watch = std::next(model.watches.begin(), place);
      events->remove(watch->first);
      model.watches.erase(watch);
    }
    std::erase_if(model.expected, [](const auto& each) { return each.second == 0; });
    ASSERT_EQ(drain(*events), model.expected) << "seed " << seed << '\n' << log.str();
    model.expected.clear();
    if (step % 200 == 0) log.str("");
  }
}

}  // namespace
}  // namespace qz::test
