// GLib: hash tables of strings.
#include <glib.h>

#include <string>
#include <vector>

#include "bench/support/Comparison.h"
#include "bench/support/Data.h"
#include "bench/support/Families.h"

namespace qz::bench {
namespace {

GHashTable* tableOf(const std::vector<std::string>& keys) {
  GHashTable* table = g_hash_table_new_full(&g_str_hash, &g_str_equal, &g_free, nullptr);
  for (const std::string& key : keys) g_hash_table_insert(table, g_strdup(key.c_str()), table);
  return table;
}

void lookUp(benchmark::State& state) {
  GHashTable* table = tableOf(randomNames(million));
  const auto wanted = shuffled(randomNames(million));
  for (auto _ : state) {
    std::size_t found = 0;
    for (const std::string& key : wanted) found += g_hash_table_contains(table, key.c_str()) != 0;
    benchmark::DoNotOptimize(found);
  }
  g_hash_table_unref(table);
}

void insert(benchmark::State& state) {
  const auto keys = randomNames(million);
  for (auto _ : state) {
    GHashTable* table = tableOf(keys);
    benchmark::DoNotOptimize(table);
    state.PauseTiming();
    g_hash_table_unref(table);
    state.ResumeTiming();
  }
}

void keepTable(std::size_t count) { tableOf(randomNames(count)); }

}  // namespace

void compareGLibDictionaries() {
  comparePeer("LookUpStrings", "GLib", &lookUp);
  comparePeer("InsertStrings", "GLib", &insert);
  compareMemoryPeer("InsertStrings", "GLib", &keepTable);
}

}  // namespace qz::bench
