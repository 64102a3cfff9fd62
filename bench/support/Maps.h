/// @file
/// What is measured of the maps that a C++ program keeps strings in: all alike, so that only the
/// map differs. The keys are those of the Dictionaries, as std::u16string.
#pragma once

#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "bench/support/Comparison.h"
#include "bench/support/Data.h"

namespace qz::bench {

inline std::vector<std::u16string> plainKeys(std::size_t count) {
  std::vector<std::u16string> keys;
  for (const std::string& name : randomNames(count)) keys.push_back(widened(name));
  return keys;
}

template <class Map>
Map mapOf(const std::vector<std::u16string>& keys) {
  Map map;
  for (const std::u16string& key : keys) map.emplace(key, &keys);
  return map;
}

template <class Map>
void findInMap(benchmark::State& state) {
  const auto map = mapOf<Map>(plainKeys(million));
  const auto wanted = shuffled(plainKeys(million));
  for (auto _ : state) {
    std::size_t found = 0;
    for (const std::u16string& key : wanted) found += map.find(key) != map.end();
    benchmark::DoNotOptimize(found);
  }
}

template <class Map>
void insertIntoMap(benchmark::State& state) {
  const auto keys = plainKeys(million);
  for (auto _ : state) {
    auto map = std::make_unique<Map>(mapOf<Map>(keys));
    benchmark::DoNotOptimize(map);
    state.PauseTiming();
    map = nullptr;
    state.ResumeTiming();
  }
}

template <class Map>
void removeFromMap(benchmark::State& state) {
  const auto keys = plainKeys(million);
  const auto all = mapOf<Map>(keys);
  for (auto _ : state) {
    state.PauseTiming();
    auto map = std::make_unique<Map>(all);
    state.ResumeTiming();
    for (std::size_t i = 0; i < million; i += 2) map->erase(keys[i]);
    std::size_t length = 0;
    for (const auto& [key, value] : *map) length += key.size();
    benchmark::DoNotOptimize(length);
    state.PauseTiming();
    map = nullptr;
    state.ResumeTiming();
  }
}

template <class Map>
void keepMap(std::size_t count) {
  new Map(mapOf<Map>(plainKeys(count)));
}

/// Enters a map into all rows of Dictionaries of Strings.
template <class Map>
void compareMapPeer(const std::string& peer) {
  comparePeer("LookUpStrings", peer, &findInMap<Map>);
  comparePeer("InsertStrings", peer, &insertIntoMap<Map>);
  comparePeer("RemoveAndEnumerate", peer, &removeFromMap<Map>);
  compareMemoryPeer("InsertStrings", peer, &keepMap<Map>);
}

}  // namespace qz::bench
