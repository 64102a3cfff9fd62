#include "Platform/System/detail/TreeChanges.h"

#include <utility>

namespace qz::detail {

void TreeChanges::come(const std::string& path, bool isFolder, std::string origin,
                       std::uint32_t kinds) {
  Entry& entry = entries_[path];
  entry.is = true;
  entry.isFolder = isFolder;
  entry.kinds = kinds;
  entry.isNew = true;
  entry.origin = std::move(origin);
  settleIfBack(path, entry);
}

void TreeChanges::gone(const std::string& path, bool isFolder) {
  const auto [at, isFirst] = entries_.try_emplace(path);
  Entry& entry = at->second;
  entry = Entry{isFirst || entry.was, false, true, isFolder, 0, {}};
}

void TreeChanges::touched(const std::string& path, bool isFolder, std::uint32_t kinds) {
  const auto [at, isFirst] = entries_.try_emplace(path);
  if (isFirst) at->second = Entry{true, true, false, isFolder, 0, {}};
  at->second.kinds |= kinds;
}

TreeChanges::State TreeChanges::stateOf(const std::string& path) const {
  const auto found = entries_.find(path);
  return found == entries_.end() ? State{} : State{found->second.kinds, found->second.isNew};
}

void TreeChanges::merge(TreeChanges later) {
  // Where things came from, seen from the beginning, before anything here changes.
  for (auto& [path, entry] : later.entries_) {
    const auto before = entry.origin.empty() ? entries_.end() : entries_.find(entry.origin);
    if (before == entries_.end()) continue;
    entry.kinds |= before->second.kinds;
    if (before->second.isNew) entry.origin = before->second.origin;
  }
  for (auto& [path, entry] : later.entries_) {
    const auto [at, isFirst] = entries_.try_emplace(path, entry);
    if (!isFirst) add(at->second, std::move(entry));
    settleIfBack(path, at->second);
    if (!at->second.was && !at->second.is) entries_.erase(at);
  }
}

// Who tried to read it while it was away must be told again.
void TreeChanges::settleIfBack(const std::string& path, Entry& entry) {
  if (!entry.was || entry.origin != path) return;
  entry.isNew = false;
  entry.origin.clear();
  entry.kinds |= treeChanged;
}

void TreeChanges::add(Entry& entry, Entry later) {
  entry.is = later.is;
  entry.isFolder = later.isFolder;
  if (!later.isNew) {
    entry.kinds |= later.kinds;
    return;
  }
  entry.isNew = true;
  entry.kinds = later.kinds;
  entry.origin = std::move(later.origin);
}

std::uint32_t TreeChanges::kindsOf(const Entry& entry) noexcept {
  constexpr std::uint32_t ofContents = treeChanged | treeAttributes;
  if (!entry.is) return entry.was ? treeDeleted : 0u;
  std::uint32_t kinds = entry.kinds;
  if (entry.isNew && entry.origin.empty()) kinds &= ~ofContents;  // new all through
  if (!entry.was) return kinds | treeCreated;
  return entry.isNew ? kinds | treeChanged : kinds;
}

std::vector<TreeChanges::Change> TreeChanges::take() {
  std::map<std::string, std::string> moved;
  for (auto& [path, entry] : entries_) {
    if (!entry.is || entry.origin.empty()) continue;
    const auto origin = entries_.find(entry.origin);
    if (origin == entries_.end() || !origin->second.was)
      entry.origin.clear();  // of a path that nobody has been told of
    else
      moved.emplace(entry.origin, path);
  }
  std::vector<Change> changes;
  for (auto& [path, entry] : entries_) {
    Change change{path, kindsOf(entry), entry.isFolder, {}};
    if (change.kinds == 0) continue;
    if (entry.is) {
      change.other = std::move(entry.origin);
    } else if (const auto to = moved.find(path); to != moved.end()) {
      change.other = to->second;
    }
    if (!change.other.empty()) change.kinds |= treeRenamed;
    changes.push_back(std::move(change));
  }
  entries_.clear();
  return changes;
}

}  // namespace qz::detail
