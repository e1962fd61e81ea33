#include "keltrun2/analysis/untimed_legs.h"

#include <algorithm>
#include <charconv>
#include <map>

#include "keltrun2/base/automation_error.h"
#include "keltrun2/model/class_data_internal.h"
#include "keltrun2/model/lap_data_internal.h"

namespace keltrun {
namespace {

constexpr std::string_view kNone = "none";
constexpr std::string_view kAutomatic = "auto";

using PairCounts = std::map<ControlPair, ZeroLaps>;

// The number of a leg at the beginning of a text, which is then cut off together with the comma
// after it. nullopt for anything else.
std::optional<std::size_t> TakeLeg(std::string_view& text) {
  std::size_t leg = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), leg);
  if (error != std::errc() || leg < 1 || leg >= LegSet().size()) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  if (text.empty()) return leg;
  if (text.front() != ',' || text.size() == 1) return std::nullopt;
  text.remove_prefix(1);
  return leg;
}

// What the first runners of a class say, `most` at most.
std::vector<ZeroLaps> CountClass(const clsClassData& klass, std::size_t most) {
  std::vector<ZeroLaps> counts(static_cast<std::size_t>(
      std::clamp(klass.ControlCount + 1, 1, clsAnalyzedRunnerData::kMostAnalyzedLegs)));
  const auto& runners = ClassDataInternal::Runners(klass);
  most = std::min(most, runners.size());
  for (std::size_t i = 0; i < most; ++i) CountZeroLaps(*runners[i], counts);
  return counts;
}

void AddToPairs(const std::vector<ZeroLaps>& legs, const std::vector<ControlPair>& pairs,
                PairCounts& counts) {
  for (std::size_t i = 0; i < std::min(legs.size(), pairs.size()); ++i) {
    ZeroLaps& of_pair = counts[pairs[i]];
    of_pair.runners += legs[i].runners;
    of_pair.zeros += legs[i].zeros;
  }
}

LegSet FromCounts(const std::vector<ZeroLaps>& own, const std::vector<ControlPair>& pairs,
                  const PairCounts& of_event) {
  LegSet untimed;
  for (std::size_t i = 0; i < own.size(); ++i) {
    bool found = own[i].SaysUntimed();
    if (!found && own[i].IsInDoubt() && i < pairs.size()) {
      const auto of_pair = of_event.find(pairs[i]);
      found = of_pair != of_event.end() && of_pair->second.SaysUntimed();
    }
    untimed[i + 1] = found;
  }
  return untimed;
}

// What the event says about the pairs of legs that the runners of a data set cannot decide.
PairCounts AskEvent(const std::vector<ZeroLaps>& own, const std::vector<ControlPair>& pairs,
                    const EventModel& model) {
  PairCounts asked;
  for (std::size_t i = 0; i < std::min(own.size(), pairs.size()); ++i) {
    if (!own[i].SaysUntimed() && own[i].IsInDoubt()) asked[pairs[i]];
  }
  if (asked.empty()) return asked;
  std::int32_t left = kMostAskedRunners;
  for (const auto& klass : model.Classes()) {
    if (--left <= 0) break;
    const auto of_class = LegPairs(model, *klass);
    const bool knows = std::any_of(of_class.begin(), of_class.end(),
                                   [&](const ControlPair& pair) { return asked.contains(pair); });
    if (!knows) continue;
    AddToPairs(CountClass(*klass, static_cast<std::size_t>(left)), of_class, asked);
    left -= klass->LapCount();
  }
  return asked;
}

}  // namespace

std::optional<UntimedLegsChoice> UntimedLegsChoice::Parse(std::string_view text) {
  UntimedLegsChoice choice;
  if (text == kNone) return choice;
  if (text == kAutomatic) {
    choice.automatic_ = true;
    return choice;
  }
  while (!text.empty()) {
    const auto leg = TakeLeg(text);
    if (!leg) return std::nullopt;
    choice.legs_.set(*leg);
  }
  if (choice.legs_.none()) return std::nullopt;
  return choice;
}

std::string UntimedLegsChoice::ToString() const {
  return automatic_ ? std::string(kAutomatic) : LegNumbers(legs_);
}

UntimedLegsChoice CheckedUntimedLegs(std::string_view text, const char* member) {
  if (const auto choice = UntimedLegsChoice::Parse(text)) return *choice;
  throw AutomationError(KR_ERROR_INVALID_CALL,
                        std::string(member) + ": \"" + std::string(text) +
                            "\" is not \"none\", \"auto\" or numbers of legs such as \"8,15\"");
}

std::string LegNumbers(const LegSet& legs) {
  std::string text;
  for (std::size_t leg = 1; leg < legs.size(); ++leg) {
    if (legs[leg]) text += (text.empty() ? "" : ",") + std::to_string(leg);
  }
  return text.empty() ? std::string(kNone) : text;
}

bool IsZeroLap(DateTime lap) {
  constexpr DateTime kOneAndAHalfMilliseconds = 1.5 / kMillisecondsPerDay;
  return lap >= 0 && lap < kOneAndAHalfMilliseconds;
}

std::vector<ControlPair> LegPairs(const EventModel& model, std::int32_t course_num,
                                  std::int32_t start, std::int32_t legs) {
  std::vector<ControlPair> pairs;
  const auto course = course_num != 0 ? model.CourseByNumber(course_num) : nullptr;
  if (!course || start < 0 || legs < 1 || course->ControlCount() > clsCourseData::kMostControls ||
      start + legs > course->ControlCount() + 1) {
    return pairs;
  }
  for (std::int32_t control = start; control < start + legs; ++control) {
    pairs.emplace_back(course->ControlNum(control), course->ControlNum(control + 1));
  }
  return pairs;
}

std::vector<ControlPair> LegPairs(const EventModel& model, const clsClassData& klass) {
  auto pairs = LegPairs(model, klass.CourseNum, 0, klass.ControlCount + 1);
  const bool is_whole = !pairs.empty() && pairs.back().second == clsCourseData::kFinishCode;
  return is_whole ? pairs : std::vector<ControlPair>();
}

void CountZeroLaps(const clsLapData& record, std::vector<ZeroLaps>& legs) {
  const auto last =
      std::min(static_cast<std::size_t>(LapDataInternal::HeldLegs(record)), legs.size());
  bool has_later_lap = false;
  for (std::size_t leg = last; leg >= 1; --leg) {
    const DateTime lap = LapDataInternal::Lap(record, static_cast<std::int32_t>(leg));
    const bool zero = IsZeroLap(lap);
    if (has_later_lap) {
      ++legs[leg - 1].runners;
      if (zero) ++legs[leg - 1].zeros;
    }
    has_later_lap = has_later_lap || (lap > 0 && !zero);
  }
}

LegSet FindUntimedLegs(const std::vector<ZeroLaps>& own, const std::vector<ControlPair>& pairs,
                       const EventModel* model) {
  return FromCounts(own, pairs, model != nullptr ? AskEvent(own, pairs, *model) : PairCounts());
}

std::vector<LegSet> FindUntimedLegs(const EventModel& model) {
  std::vector<std::vector<ZeroLaps>> counts;
  PairCounts of_event;
  for (const auto& klass : model.Classes()) {
    counts.push_back(CountClass(*klass, ClassDataInternal::Runners(*klass).size()));
    AddToPairs(counts.back(), LegPairs(model, *klass), of_event);
  }
  std::vector<LegSet> untimed;
  for (std::size_t i = 0; i < counts.size(); ++i) {
    untimed.push_back(FromCounts(counts[i], LegPairs(model, *model.Classes()[i]), of_event));
  }
  return untimed;
}

}  // namespace keltrun
