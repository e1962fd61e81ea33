#include "keltrun2/os/pause.h"

#include <chrono>
#include <random>
#include <thread>
#include <utility>

namespace keltrun {
namespace {

std::function<void(double)>& PauseReplacement() {
  static std::function<void(double)> pause;
  return pause;
}

std::function<double()>& RandomReplacement() {
  static std::function<double()> random;
  return random;
}

}  // namespace

void Pause(double seconds) {
  if (PauseReplacement()) return PauseReplacement()(seconds);
  std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
}

double Random() {
  if (RandomReplacement()) return RandomReplacement()();
  thread_local std::minstd_rand generator{std::random_device{}()};
  return std::generate_canonical<double, 32>(generator);
}

void SetPause(std::function<void(double seconds)> pause) { PauseReplacement() = std::move(pause); }
void SetRandom(std::function<double()> random) { RandomReplacement() = std::move(random); }

}  // namespace keltrun
