/// @file
/// Observing as we do it, for rows whose reference is a peer's.
#pragma once

#include <benchmark/benchmark.h>

namespace qz::bench {

/// A property is set, and one observer is told with a Dictionary of the old and the new value.
void observerToldWithDictionary(benchmark::State& state);

/// An observer is added to a property of an Object and removed again.
void addAndRemoveObserver(benchmark::State& state);

}  // namespace qz::bench
