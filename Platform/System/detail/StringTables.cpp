#include "Platform/System/detail/StringTables.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/System/Diagnostics.h"
#include "Platform/System/detail/FileBytes.h"
#include "Platform/System/detail/OldStylePropertyList.h"
#include "Platform/Values/detail/PosixError.h"

namespace qz::detail {
namespace {

constexpr std::uint64_t largestTable = std::uint64_t{256} << 20;

// Merged tables are kept for ever. So their texts may be of the kind that nobody counts, and
// handing one out writes nothing that other threads look at.
Ref<NSObject> lasting(NSObject*, NSObject* object) {
  const std::u16string_view text = *as<NSString>(object);
  auto* units = static_cast<char16_t*>(::operator new(text.size() * sizeof(char16_t)));
  std::copy(text.begin(), text.end(), units);
  return Ref<NSObject>(new LiteralString(units, static_cast<std::uint32_t>(text.size())), adopt);
}

}  // namespace

Ref<NSString> StringTables::textInTable(NSString* key, NSString* table) {
  const bool isUsual = table == nullptr || table->length() == 0;
  const std::string name = isUsual ? "Localizable" : table->UTF8String();
  std::vector<std::string> complaints;
  std::unique_lock lock(mutex_);
  Table texts;
  while (!(texts = current_[name])) {
    // What is asked for the files may complain itself, so not with the lock.
    const std::uint64_t order = order_;
    lock.unlock();
    const std::vector<std::string> files = files_(name);
    lock.lock();
    if (order == order_) current_[name] = merged(files, complaints);
  }
  if (isUsual) usual_.store(texts, std::memory_order_release);
  lock.unlock();
  // Whoever takes the complaints may come back for a message.
  for (const std::string& each : complaints) diagnose(each);
  return textOf(texts->objectForKey(key));
}

void StringTables::forgetOrder() {
  const std::lock_guard lock(mutex_);
  ++order_;
  usual_.store(nullptr, std::memory_order_release);
  current_.clear();
}

StringTables::Table StringTables::merged(const std::vector<std::string>& files,
                                         std::vector<std::string>& complaints) {
  if (const auto known = merged_.find(files); known != merged_.end()) return known->second;
  auto all = NSMutableDictionary::dictionary();
  for (auto file = files.rbegin(); file != files.rend(); ++file)
    all->addEntriesFromDictionary(read(*file, complaints));
  Table texts = all->dictionaryByMappingObjects(&lasting);
  merged_.emplace(files, texts);
  return texts;
}

StringTables::Table StringTables::read(const std::string& file,
                                       std::vector<std::string>& complaints) {
  const auto [place, isNew] = byFile_.try_emplace(file);
  if (!isNew) return place->second;
  place->second = NSDictionary::dictionary();

  const auto bytes = bytesOfFile(file, largestTable);
  if (!bytes) {
    if (errno != ENOENT && errno != ENOTDIR)
      complaints.push_back("The string table " + file +
                           " cannot be read: " + posixErrorText(errno));
    return place->second;
  }
  PropertyListFault fault;
  if (Table texts = readOldStyleDictionary(*bytes, /*onlyStrings=*/true, &fault))
    place->second = texts;
  else
    complaints.push_back("The string table " + file + " cannot be used: " + fault.text());
  return place->second;
}

}  // namespace qz::detail
