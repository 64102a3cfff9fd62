// A mount table of the test's own.
#pragma once

#include "Platform/System/NSMountTable.h"
#include "Platform/System/detail/MountInfo.h"
#include "tests/support/Test.h"

namespace qz::test {

/// Has exactly what is written into it, while it exists, for whoever asks.
class MountTable {
 public:
  /// The text is what the kernel would write; paths lie where their text says.
  explicit MountTable(std::string_view text = "") : table_(std::make_shared<Table>()) {
    table_->entries = detail::readMountInfo(text);
    NSMountTable::setCurrent(table_);
  }
  MountTable(const MountTable&) = delete;
  MountTable& operator=(const MountTable&) = delete;
  ~MountTable() { NSMountTable::setCurrent(nullptr); }

  void setAttributes(const std::string& mountPath, NSVolumeAttributes attributes) {
    table_->attributesOf[mountPath] = std::move(attributes);
  }
  void setFreeBytes(const std::string& mountPath, std::uint64_t bytes) {
    table_->free[mountPath] = bytes;
  }
  /// From now on the system refuses everything.
  void fail() { table_->fails = true; }

 private:
  class Table final : public NSMountTable {
   public:
    std::optional<std::vector<NSMountRecord>> records() const override {
      if (fails) return refuse();
      std::vector<NSMountRecord> all;
      for (const auto& each : entries) all.push_back(each.record);
      return all;
    }
    std::optional<NSMountRecord> recordForPath(const std::string& path) const override {
      const auto* entry = detail::deepestMount(entries, path);
      if (fails || entry == nullptr) return refuse();
      return entry->record;
    }
    std::optional<NSVolumeAttributes> attributes(const NSMountRecord& record) const override {
      const auto found = attributesOf.find(record.mountedOn);
      if (fails || found == attributesOf.end()) return refuse();
      return found->second;
    }
    std::optional<std::uint64_t> freeBytes(const std::string& path) const override {
      const auto found = free.find(path);
      if (fails || found == free.end()) return refuse();
      return found->second;
    }

    std::vector<detail::MountInfoEntry> entries;
    std::map<std::string, NSVolumeAttributes> attributesOf;
    std::map<std::string, std::uint64_t> free;
    bool fails = false;

   private:
    static std::nullopt_t refuse() {
      errno = EIO;
      return std::nullopt;
    }
  };

  std::shared_ptr<Table> table_;
};

}  // namespace qz::test
