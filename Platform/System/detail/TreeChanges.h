/// @file
/// Private: what has happened in a tree of folders, all in all.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#pragma GCC visibility push(default)

namespace qz::detail {

/// Kinds of changes, as bits.
enum TreeChangeKind : std::uint32_t {
  treeCreated = 0x01,     ///< The path is there and was not.
  treeChanged = 0x02,     ///< Contents changed, or the name was another file's or free meanwhile.
  treeDeleted = 0x04,     ///< The path was there and is not.
  treeRenamed = 0x08,     ///< What is there was elsewhere in the tree, or what was there is.
  treeAttributes = 0x10,  ///< Mode, owner, times or the number of links changed.
  treeRescan = 0x20,      ///< Anything in the tree may have changed besides.
};

/// Adds up changes: a file that came and went again is none, one that went and came is a changed
/// one, one that was moved twice was moved once.
///
/// `come`, `gone` and `touched` are news in the order in which they became known; `merge` takes the
/// news of a later time.
class TreeChanges {
 public:
  struct Change {
    std::string path;
    std::uint32_t kinds;
    bool isFolder;
    std::string other;  ///< Of a renaming: the old path at the new one, and the other way round.
  };

  /// The path is there now. `origin` is where its contents were when the first news came, "" when
  /// they are new; `kinds` is what happened to them since.
  void come(const std::string& path, bool isFolder, std::string origin = {},
            std::uint32_t kinds = 0);
  void gone(const std::string& path, bool isFolder);
  void touched(const std::string& path, bool isFolder, std::uint32_t kinds);

  /// What has been told of what is at the path: the kinds, and whether it came there meanwhile.
  struct State {
    std::uint32_t kinds = 0;
    bool isNew = false;
  };
  State stateOf(const std::string& path) const;

  void merge(TreeChanges later);

  /// Everything that counts, each path once, ordered by the bytes of the paths; and begins anew.
  std::vector<Change> take();

  /// False may turn out to be nothing.
  bool isEmpty() const noexcept { return entries_.empty(); }

 private:
  struct Entry {
    bool was = false;    // at the beginning
    bool is = false;     // now
    bool isNew = false;  // what is there now was not there at the beginning
    bool isFolder = false;
    std::uint32_t kinds = 0;
    std::string origin;
  };
  using Entries = std::map<std::string, Entry>;

  static void add(Entry& entry, Entry later);
  static void settleIfBack(const std::string& path, Entry& entry);
  static std::uint32_t kindsOf(const Entry& entry) noexcept;

  Entries entries_;
};

}  // namespace qz::detail

#pragma GCC visibility pop
