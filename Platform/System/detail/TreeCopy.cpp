#include "Platform/System/detail/TreeCopy.h"

#include <utility>
#include <vector>

#include "Platform/System/detail/CopyQueue.h"
#include "Platform/System/detail/DirectoryReader.h"
#include "Platform/System/detail/SingleCopy.h"

namespace qz::detail {
namespace {

// Whether `folder` is the directory that `about` describes, or lies below it.
bool isWithin(const std::string& folder, const struct ::statx& about) {
  const auto wanted = SharedFiles::keyOf(about);
  Descriptor place(os::openat(AT_FDCWD, folder.c_str(), O_PATH | O_DIRECTORY));
  SharedFiles::Key before{};
  struct ::statx here;
  while (place && statusOf(place.number(), here)) {
    const auto key = SharedFiles::keyOf(here);
    if (key == wanted) return true;
    if (key == before) return false;  // the root is its own parent
    before = key;
    place = Descriptor(os::openat(place.number(), "..", O_PATH | O_DIRECTORY));
  }
  return false;
}

class TreeCopy {
 public:
  explicit TreeCopy(const FailureListener& onFailure)
      : onFailure_(onFailure),
        queue_([this](CopiedFolder& folder, const std::string& name) { copyEntry(folder, name); },
               [this](CopiedFolder& folder) { finish(folder); }) {}
  ~TreeCopy();

  bool copy(const std::string& from, const std::string& to);

 private:
  struct Level {
    CopiedFolder* folder;
    std::vector<std::string> subfolders;
  };

  void copyTop(const std::string& from, const std::string& to, const struct ::statx& about);
  void copyTopFolder(const std::string& from, const std::string& to, const struct ::statx& about);
  CopyOutcome open(CopiedFolder& folder);
  void enter(CopiedFolder* folder);
  void enterSubfolder();
  void leave();
  void list(Level& level);

  void copyEntry(CopiedFolder& folder, const std::string& name) noexcept;
  CopyOutcome copyRegularEntry(const CopyStep& step, CopiedFolder& folder);
  CopyOutcome copySharedEntry(const CopyStep& step, int in, const struct ::statx& about,
                              CopiedFolder& folder);
  CopyOutcome copyOpened(const CopyStep& step, int in, const struct ::statx& about,
                         CopiedFolder& folder);
  void finish(CopiedFolder& folder) noexcept;

  void fail(std::string path, int number);
  void fail(CopiedFolder& folder, const std::string& name, CopyOutcome outcome);
  void tellFailures();
  bool isStopped() const { return isStopped_.load(std::memory_order_relaxed); }

  const FailureListener& onFailure_;
  CopyAbilities abilities_;
  SharedFiles shared_;
  CopiedFolder* top_ = nullptr;
  std::vector<Level> levels_;

  std::mutex mutex_;
  std::vector<std::pair<std::string, int>> failures_;  // not told yet
  std::atomic<bool> hasFailures_{false};
  std::atomic<bool> isStopped_{false};
  bool succeeded_ = true;

  CopyQueue queue_;  // last: its threads use all of the above
};

// The listener may have thrown: whoever works is to stop, and what is in line is only let go.
TreeCopy::~TreeCopy() {
  isStopped_ = true;
  while (queue_.doOne()) {
  }
  queue_.join();
  for (; !levels_.empty(); levels_.pop_back()) queue_.release(levels_.back().folder);
}

// Failures ----------------------------------------------------------------------------------------

void TreeCopy::fail(std::string path, int number) {
  const std::lock_guard guard(mutex_);
  failures_.emplace_back(std::move(path), number);
  hasFailures_.store(true, std::memory_order_relaxed);
}

void TreeCopy::fail(CopiedFolder& folder, const std::string& name, CopyOutcome outcome) {
  OpenFolder& side = outcome.side == CopyOutcome::Side::Source ? folder.source : folder.target;
  fail(name.empty() ? side.path() : side.path(name), outcome.number);
}

// Only on the thread that called: the listener belongs to it, and so does `errno`.
void TreeCopy::tellFailures() {
  if (!hasFailures_.load(std::memory_order_relaxed)) return;
  std::vector<std::pair<std::string, int>> failures;
  {
    const std::lock_guard guard(mutex_);
    failures.swap(failures_);
    hasFailures_.store(false, std::memory_order_relaxed);
  }
  for (const auto& [path, number] : failures) {
    succeeded_ = false;
    if (isStopped()) return;
    errno = number;
    if (!onFailure_(path, number)) isStopped_.store(true, std::memory_order_relaxed);
  }
}

// The walk ----------------------------------------------------------------------------------------

bool TreeCopy::copy(const std::string& from, const std::string& to) {
  struct ::statx about;
  if (os::statx(AT_FDCWD, from.c_str(), AT_SYMLINK_NOFOLLOW, statusMask, &about) != 0)
    fail(from, errno);
  else if (S_ISDIR(about.stx_mode))
    copyTopFolder(from, to, about);
  else
    copyTop(from, to, about);
  while (!levels_.empty()) {
    tellFailures();
    if (!isStopped() && !levels_.back().subfolders.empty())
      enterSubfolder();
    else
      leave();
  }
  while (queue_.doOne()) tellFailures();
  queue_.join();
  tellFailures();
  return succeeded_;
}

void TreeCopy::copyTop(const std::string& from, const std::string& to,
                       const struct ::statx& about) {
  const CopyStep step{AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str()};
  CopyOutcome outcome;
  struct ::statx opened = about;
  Descriptor in;
  if (S_ISREG(about.stx_mode)) in = openToCopy(step, opened, outcome);
  if (in)
    outcome = copyRegularAtOnce(step, in.number(), opened, abilities_);
  else if (!outcome.failed())
    outcome = copySpecial(step, opened);
  if (outcome.failed()) fail(outcome.side == CopyOutcome::Side::Source ? from : to, outcome.number);
}

void TreeCopy::copyTopFolder(const std::string& from, const std::string& to,
                             const struct ::statx& about) {
  if (isWithin(folderOf(to), about)) {
    fail(to, EINVAL);
    return;
  }
  top_ = new CopiedFolder(from, to);
  enter(top_);
}

// Opens both directories; that of the copy is made.
CopyOutcome TreeCopy::open(CopiedFolder& folder) {
  const bool isTop = folder.parent == nullptr;
  const int from = isTop ? AT_FDCWD : folder.parent->source.number();
  if (from == -1) return CopyOutcome::source();
  const int to = isTop ? AT_FDCWD : folder.parent->target.number();
  if (to == -1) return CopyOutcome::target();
  if (!folder.source.open(from)) return CopyOutcome::source();
  if (!statusOf(folder.source.number(), folder.about)) return CopyOutcome::source();
  const char* name = folder.target.name().c_str();
  if (os::mkdirat(to, name, S_IRWXU) != 0) return CopyOutcome::target();
  struct ::statx made;
  if (!folder.target.open(to) || !statusOf(folder.target.number(), made)) {
    const auto outcome = CopyOutcome::target();
    os::unlinkat(to, name, AT_REMOVEDIR);
    return outcome;
  }
  folder.owner = {made.stx_uid, made.stx_gid};
  return {};
}

void TreeCopy::enter(CopiedFolder* folder) {
  if (levels_.size() > OpenFolder::levelsOpen) {
    CopiedFolder* far = levels_[levels_.size() - OpenFolder::levelsOpen].folder;
    if (far->batches.load(std::memory_order_acquire) == 0) {
      far->source.park();
      far->target.park();
    }
  }
  const auto outcome = open(*folder);
  if (outcome.failed()) {
    fail(*folder, "", outcome);
    folder->isLost = true;
    queue_.release(folder);
    return;
  }
  levels_.push_back({folder, {}});
  list(levels_.back());
}

void TreeCopy::enterSubfolder() {
  Level& level = levels_.back();
  const std::string name = std::move(level.subfolders.back());
  level.subfolders.pop_back();
  level.folder->uses.fetch_add(1, std::memory_order_relaxed);
  enter(new CopiedFolder(*level.folder, name));
}

// From here on only other threads use the directory, and they do not open what is parked.
void TreeCopy::leave() {
  CopiedFolder* folder = levels_.back().folder;
  // What is in line far below keeps every directory on the way open.
  if (folder->source.isParked())
    while (queue_.doOne()) tellFailures();
  if (folder->source.number() == -1) {
    folder->isLost = true;
    fail(*folder, "", CopyOutcome::source());
  } else if (folder->target.number() == -1) {
    folder->isLost = true;
    fail(*folder, "", CopyOutcome::target());
  }
  levels_.pop_back();
  queue_.release(folder);
}

void TreeCopy::list(Level& level) {
  constexpr std::size_t batchSize = 64;
  CopiedFolder* folder = level.folder;
  DirectoryReader reader(folder->source.number());
  CopyBatch batch{folder, {}};
  while (const auto* entry = isStopped() ? nullptr : reader.next()) {
    if (isFolderIn(folder->source.number(), *entry)) {
      level.subfolders.emplace_back(entry->name());
      continue;
    }
    batch.names.emplace_back(entry->name());
    if (batch.names.size() == batchSize) {
      queue_.add(std::exchange(batch, CopyBatch{folder, {}}));
      tellFailures();
    }
  }
  if (reader.error() != 0) fail(*folder, "", {reader.error(), CopyOutcome::Side::Source});
  if (!batch.names.empty()) queue_.add(std::move(batch));
}

// Entries -----------------------------------------------------------------------------------------

void TreeCopy::copyEntry(CopiedFolder& folder, const std::string& name) noexcept try {
  if (isStopped()) return;
  const CopyStep step{folder.source.number(), name.c_str(), folder.target.number(), name.c_str()};
  const auto outcome = copyRegularEntry(step, folder);
  if (outcome.failed()) fail(folder, name, outcome);
} catch (const std::bad_alloc&) {
  fail({}, ENOMEM);
}

CopyOutcome TreeCopy::copyRegularEntry(const CopyStep& step, CopiedFolder& folder) {
  CopyOutcome outcome;
  struct ::statx about;
  const Descriptor in = openToCopy(step, about, outcome);
  if (outcome.failed()) return outcome;
  if (about.stx_nlink > 1) return copySharedEntry(step, in.number(), about, folder);
  return copyOpened(step, in.number(), about, folder);
}

CopyOutcome TreeCopy::copySharedEntry(const CopyStep& step, int in, const struct ::statx& about,
                                      CopiedFolder& folder) {
  const auto key = SharedFiles::keyOf(about);
  const auto lock = shared_.lock();
  const std::string* copied = shared_.find(key);
  if (copied != nullptr) {
    const bool isLinked =
        os::linkat(top_->target.number(), copied->c_str(), step.toFolder, step.to) == 0;
    // A file system that gives a file no further name gets a file for each.
    const bool isUnable = !isLinked && (errno == EPERM || errno == EMLINK || errno == EXDEV ||
                                        errno == ENAMETOOLONG || errno == EOPNOTSUPP);
    if (!isLinked && !isUnable) return CopyOutcome::target();
    shared_.used(key);
    if (isLinked) return {};
    return copyOpened(step, in, about, folder);
  }
  const auto outcome = copyOpened(step, in, about, folder);
  if (outcome.failed()) return outcome;
  const std::string below = folder.target.pathBelowTop();
  shared_.add(key, below.empty() ? step.to : below + '/' + step.to, about.stx_nlink);
  return outcome;
}

CopyOutcome TreeCopy::copyOpened(const CopyStep& step, int in, const struct ::statx& about,
                                 CopiedFolder& folder) {
  if (in < 0) return copySpecial(step, about);
  return copyRegular(step, in, about, folder.owner, abilities_);
}

// Owner, attributes and times of a directory come last: what happens in it would change them.
void TreeCopy::finish(CopiedFolder& folder) noexcept try {
  if (folder.isLost || isStopped()) return;
  const auto outcome =
      copyProperties(folder.source.number(), folder.target.number(), folder.about, folder.owner);
  if (outcome.failed()) fail(folder, "", outcome);
} catch (const std::bad_alloc&) {
  fail({}, ENOMEM);
}

}  // namespace

bool copyTree(const std::string& from, const std::string& to, const FailureListener& onFailure) {
  return TreeCopy(onFailure).copy(from, to);
}

}  // namespace qz::detail
