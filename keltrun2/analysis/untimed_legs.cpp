#include "keltrun2/analysis/untimed_legs.h"

#include <algorithm>
#include <charconv>
#include <map>

#include "keltrun2/base/automation_error.h"
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

std::vector<ZeroLaps> CountGroup(const CourseGroup& group) {
  std::vector<ZeroLaps> counts(static_cast<std::size_t>(group.legs));
  for (const auto& runner : group.runners) CountZeroLaps(*runner, counts);
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
    for (const CourseGroup& group : CourseGroups(model, *klass, static_cast<std::size_t>(left))) {
      const bool knows = std::any_of(group.pairs.begin(), group.pairs.end(),
                                     [&](const auto& pair) { return asked.contains(pair); });
      if (knows) AddToPairs(CountGroup(group), group.pairs, asked);
    }
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

std::vector<LegSet> FindUntimedLegs(const std::vector<CourseGroup>& groups) {
  std::vector<std::vector<ZeroLaps>> counts;
  PairCounts of_event;
  for (const CourseGroup& group : groups) {
    counts.push_back(CountGroup(group));
    AddToPairs(counts.back(), group.pairs, of_event);
  }
  std::vector<LegSet> untimed;
  for (std::size_t i = 0; i < groups.size(); ++i) {
    untimed.push_back(FromCounts(counts[i], groups[i].pairs, of_event));
  }
  return untimed;
}

}  // namespace keltrun
