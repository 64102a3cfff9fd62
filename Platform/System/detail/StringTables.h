/// @file
/// Private: a bundle's string tables.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Platform/Collections/NSDictionary.h"
#include "Platform/Values/NSString.h"

namespace qz::detail {

/// Finds texts by key. What is asked for most, the default table in the user's language, takes no
/// lock and one look-up: the tables of all localizations in question are merged into one when it is
/// first needed. Any thread.
class StringTables {
 public:
  /// `files` answers the files in which a table's texts may stand, the best first. It is called
  /// again after the languages have changed; with no lock held, perhaps by several threads.
  using Files = std::function<std::vector<std::string>(const std::string& table)>;
  explicit StringTables(Files files) : files_(std::move(files)) {}

  /// The text; nil when there is none.
  Ref<NSString> textForKey(NSString* key, NSString* table) {
    NSDictionary* texts = usual_.load(std::memory_order_acquire);
    if (texts == nullptr || (table != nullptr && table->length() != 0)) [[unlikely]]
      return textInTable(key, table);
    return textOf(texts->objectForKey(key));
  }

  /// Later look-ups ask for the files anew.
  void forgetOrder();

 private:
  using Table = Ref<NSDictionary>;

  // Every table holds nothing but Strings.
  static Ref<NSString> textOf(Ref<NSObject> object) noexcept {
    return Ref<NSString>(static_cast<NSString*>(object.leak()), adopt);
  }

  Ref<NSString> textInTable(NSString* key, NSString* table);
  Table merged(const std::vector<std::string>& files, std::vector<std::string>& complaints);
  Table read(const std::string& file, std::vector<std::string>& complaints);

  const Files files_;
  std::atomic<NSDictionary*> usual_{nullptr};  // the default table, kept by merged_

  std::mutex mutex_;
  std::uint64_t order_ = 0;                           // counts the times it was forgotten
  std::map<std::string, Table> current_;              // by table name
  std::map<std::string, Table> byFile_;               // read, once
  std::map<std::vector<std::string>, Table> merged_;  // for ever: readers take no lock
};

}  // namespace qz::detail
