// Qt 6: hashes of strings.
#include <QHash>
#include <QString>
#include <memory>
#include <string>
#include <vector>

#include "bench/support/Comparison.h"
#include "bench/support/Data.h"
#include "bench/support/Families.h"

namespace qz::bench {
namespace {

using Hash = QHash<QString, const void*>;

std::vector<QString> keysOf(std::size_t count) {
  std::vector<QString> keys;
  for (const std::string& name : randomNames(count)) keys.push_back(QString::fromStdString(name));
  return keys;
}

Hash hashOf(const std::vector<QString>& keys) {
  Hash hash;
  for (const QString& key : keys) hash.insert(key, &keys);
  return hash;
}

void lookUp(benchmark::State& state) {
  const Hash hash = hashOf(keysOf(million));
  const auto wanted = shuffled(keysOf(million));
  for (auto _ : state) {
    std::size_t found = 0;
    for (const QString& key : wanted) found += hash.contains(key);
    benchmark::DoNotOptimize(found);
  }
}

void insert(benchmark::State& state) {
  const auto keys = keysOf(million);
  for (auto _ : state) {
    auto hash = std::make_unique<Hash>(hashOf(keys));
    benchmark::DoNotOptimize(hash);
    state.PauseTiming();
    hash = nullptr;
    state.ResumeTiming();
  }
}

void keepHash(std::size_t count) { new Hash(hashOf(keysOf(count))); }

}  // namespace

void compareQtDictionaries() {
  comparePeer("LookUpStrings", "Qt", &lookUp);
  comparePeer("InsertStrings", "Qt", &insert);
  compareMemoryPeer("InsertStrings", "Qt", &keepHash);
}

}  // namespace qz::bench
