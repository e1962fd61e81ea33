// Waiting, and chance.
#pragma once

#include <functional>

namespace keltrun {

/// Suspends the thread.
void Pause(double seconds);

/// A number from 0 to below 1, by chance.
double Random();

/// Replace them; an empty function puts the system's back. For tests.
void SetPause(std::function<void(double seconds)> pause);
void SetRandom(std::function<double()> random);

}  // namespace keltrun
