// Dictionaries of a million Strings, and copies of whole trees.
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/NSMutableDictionary.h"
#include "Platform/Values/NSNull.h"
#include "Platform/Values/NSString.h"
#include "QZFoundation/NSDictionary-QZFoundation.h"
#include "bench/support/Comparison.h"
#include "bench/support/Data.h"
#include "bench/support/Families.h"
#include "bench/support/Maps.h"

namespace qz::bench {
namespace {

using Map = std::unordered_map<std::u16string, const void*>;
using Keys = std::vector<Ref<NSString>>;

Keys makeKeys(std::size_t count) {
  Keys keys;
  for (const std::string& name : randomNames(count))
    keys.push_back(NSString::stringWithUTF8String(name));
  return keys;
}

Ref<NSMutableDictionary> dictionaryOf(const Keys& keys) {
  auto dictionary = make<NSMutableDictionary>();
  for (NSString* key : keys) dictionary->setObject_forKey(NSNull::null(), key);
  return dictionary;
}

void lookUp(benchmark::State& state) {
  const auto dictionary = dictionaryOf(makeKeys(million));
  const Keys wanted = shuffled(makeKeys(million));
  for (auto _ : state) {
    std::size_t found = 0;
    for (NSString* key : wanted) found += dictionary->objectForKey(key) != nullptr;
    benchmark::DoNotOptimize(found);
  }
}

void insert(benchmark::State& state) {
  const Keys keys = makeKeys(million);
  for (auto _ : state) {
    auto dictionary = dictionaryOf(keys);
    benchmark::DoNotOptimize(dictionary);
    state.PauseTiming();
    dictionary = nullptr;
    state.ResumeTiming();
  }
}

void removeAndEnumerate(benchmark::State& state) {
  const Keys keys = makeKeys(million);
  const auto all = dictionaryOf(keys);
  for (auto _ : state) {
    state.PauseTiming();
    auto dictionary = as<NSMutableDictionary>(all->mutableCopy());
    state.ResumeTiming();
    for (std::size_t i = 0; i < million; i += 2) dictionary->removeObjectForKey(keys[i]);
    std::size_t length = 0;
    for (const auto& [key, value] : dictionary) length += as<NSString>(key)->length();
    benchmark::DoNotOptimize(length);
    state.PauseTiming();
    dictionary = nullptr;
    state.ResumeTiming();
  }
}

void keepDictionary(std::size_t count) {
  new Ref<NSMutableDictionary>(dictionaryOf(makeKeys(count)));
}

// Trees: each node has a name and ten children, down to a hundred thousand nodes -----------------

constexpr std::size_t nodes = 100'000;
constexpr std::size_t branches = 10;

Ref<NSDictionary> tree(const Keys& names, std::size_t at = 0) {
  detail::ArrayBuilder children;
  for (std::size_t i = 1; i <= branches && at * branches + i < names.size(); ++i)
    children.take(tree(names, at * branches + i));
  return NSDictionary::of({{"name"_ns, names[at]}, {"children"_ns, children.finish()}});
}

void copyTree(benchmark::State& state) {
  const auto root = tree(makeKeys(nodes));
  for (auto _ : state) {
    auto copy = deepCopy(root);
    benchmark::DoNotOptimize(copy);
  }
}

struct Node {
  std::u16string name;
  std::vector<std::unique_ptr<Node>> children;
};

std::unique_ptr<Node> plainTree(const std::vector<std::u16string>& names, std::size_t at = 0) {
  auto node = std::make_unique<Node>();
  node->name = names[at];
  for (std::size_t i = 1; i <= branches && at * branches + i < names.size(); ++i)
    node->children.push_back(plainTree(names, at * branches + i));
  return node;
}

std::unique_ptr<Node> copyOf(const Node& node) {
  auto copy = std::make_unique<Node>();
  copy->name = node.name;
  copy->children.reserve(node.children.size());
  for (const auto& child : node.children) copy->children.push_back(copyOf(*child));
  return copy;
}

void copyPlainTree(benchmark::State& state) {
  const auto root = plainTree(plainKeys(nodes));
  for (auto _ : state) {
    auto copy = copyOf(*root);
    benchmark::DoNotOptimize(copy);
  }
}

}  // namespace

void compareDictionaries() {
  compare("LookUpStrings",
          {"look 1,000,000 Strings up in a Dictionary", "std::unordered_map<u16string>", 0.45},
          &lookUp, &findInMap<Map>);
  compare("InsertStrings",
          {"insert 1,000,000 String keys, one by one", "std::unordered_map<u16string>", 0.25},
          &insert, &insertIntoMap<Map>);
  compare("RemoveAndEnumerate",
          {"remove half of 1,000,000 String keys and enumerate the rest in order",
           "std::unordered_map<u16string>, in no order", 0.5},
          &removeAndEnumerate, &removeFromMap<Map>);
  compare("DeepCopy",
          {"deepCopy of a tree of 100,000 nodes with a name and children, and destroy it",
           "copy of a tree of structs", 2},
          &copyTree, &copyPlainTree);
  compareMemory("InsertStrings",
                {"bytes for each of 1,000,000 entries of a Dictionary, the String keys included",
                 "std::unordered_map<u16string>", million, 100},
                &keepDictionary, &keepMap<Map>);
}

}  // namespace qz::bench
