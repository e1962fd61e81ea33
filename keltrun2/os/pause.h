// Waiting and random numbers, both replaceable in tests.
#pragma once

#include <functional>

namespace keltrun {

/// Suspends the calling thread.
void Pause(double seconds);

/// A random number of at least 0 and below 1.
double Random();

/// Replaces Pause, for tests; an empty function restores the system's.
void SetPause(std::function<void(double seconds)> pause);
/// Replaces Random, for tests; an empty function restores the system's.
void SetRandom(std::function<double()> random);

}  // namespace keltrun
