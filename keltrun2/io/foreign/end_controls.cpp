#include "keltrun2/io/foreign/end_controls.h"

#include <cstdlib>
#include <string>
#include <string_view>
#include <unordered_set>

namespace keltrun {
namespace {

constexpr std::size_t kFewestRunners = 2;

// Total times can be rounded where the splits are not.
bool AreEqual(Milliseconds a, Milliseconds b) { return std::abs(a - b) < kMillisecondsPerSecond; }

bool TimeCounts(const ForeignRunner& runner) {
  return runner.time && (!runner.status || *runner.status == RunnerStatus::kOk ||
                         *runner.status == RunnerStatus::kFinished ||
                         *runner.status == RunnerStatus::kNotCompeting);
}

// The first or the last punch of a runner.
struct FirstPunch {
  static Punch& Of(ForeignRunner& runner) { return runner.punches.front(); }
  static Milliseconds Expected(const ForeignRunner&) { return 0; }
};
struct LastPunch {
  static Punch& Of(ForeignRunner& runner) { return runner.punches.back(); }
  static Milliseconds Expected(const ForeignRunner& runner) { return *runner.time; }
};

// The codes of the punches at one end that have the time expected there; none when more than one
// runner in ten has another time.
template <typename End>
std::unordered_set<std::int32_t> CodesAtEnd(std::vector<ForeignClass>& classes) {
  std::unordered_set<std::int32_t> codes;
  std::size_t runners = 0;
  std::size_t expected = 0;
  for (ForeignClass& klass : classes) {
    for (ForeignRunner& runner : klass.runners) {
      if (runner.punches.empty() || !TimeCounts(runner)) continue;
      const Punch& punch = End::Of(runner);
      if (punch.code <= 0 || punch.code == ForeignEvent::kFinishNumber || !punch.time) continue;
      ++runners;
      if (!AreEqual(*punch.time, End::Expected(runner))) continue;
      ++expected;
      codes.insert(punch.code);
    }
  }
  if (expected < kFewestRunners || 10 * expected < 9 * runners) codes.clear();
  return codes;
}

template <typename End>
void Mark(std::vector<ForeignClass>& classes, std::int32_t code, RemarkList& remarks,
          std::string_view meaning) {
  const auto codes = CodesAtEnd<End>(classes);
  if (codes.empty()) return;
  std::size_t marked = 0;
  for (ForeignClass& klass : classes) {
    for (ForeignRunner& runner : klass.runners) {
      if (runner.punches.empty() || !codes.contains(End::Of(runner).code)) continue;
      End::Of(runner).code = code;
      ++marked;
    }
  }
  remarks.Add(RemarkSeverity::kNote, 0, 0, "punches", "",
              "for " + std::to_string(marked) + " runners, the " + std::string(meaning));
}

}  // namespace

void MarkEndControls(std::vector<ForeignClass>& classes, RemarkList& remarks) {
  Mark<LastPunch>(classes, ForeignEvent::kFinishCode, remarks,
                  "last one is taken as the finish, because it has the total time");
  Mark<FirstPunch>(classes, ForeignEvent::kStartCode, remarks,
                   "first one is taken as the start, because it has the time 0");
}

}  // namespace keltrun
