#include "keltrun2/analysis/event_remarks.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <set>

#include "keltrun2/analysis/clock_check.h"
#include "keltrun2/analysis/group_estimate.h"
#include "keltrun2/analysis/untimed_legs.h"
#include "keltrun2/model/lap_data_internal.h"

namespace keltrun {
namespace {

std::string PlaceName(std::int32_t code) {
  if (code == clsCourseData::kStartCode) return "S";
  return code == clsCourseData::kFinishCode ? "F" : std::to_string(code);
}

// An untimed leg, in all classes that run between its controls.
struct UntimedLeg {
  std::string name;
  std::set<const clsClassData*> classes;
  std::int32_t strays = 0;  // laps of runners

  std::string Remark() const {
    std::string text = "leg " + name + " is untimed";
    if (classes.size() > 1) text += " in " + std::to_string(classes.size()) + " classes";
    if (strays == 1) text += "; the time of 1 runner on it counts for nobody";
    if (strays > 1) {
      text += "; the times of " + std::to_string(strays) + " runners on it count for nobody";
    }
    return text;
  }
};

std::int32_t CountStrays(const CourseGroup& group, std::size_t leg) {
  return static_cast<std::int32_t>(
      std::count_if(group.runners.begin(), group.runners.end(), [leg](const auto& runner) {
        const DateTime lap = LapDataInternal::Lap(*runner, static_cast<std::int32_t>(leg));
        return lap > 0 && !IsZeroLap(lap);
      }));
}

class UntimedRemarks {
 public:
  void AddGroup(const CourseGroup& group, const LegSet& untimed) {
    for (std::size_t leg = 1; leg < untimed.size(); ++leg) {
      if (!untimed[leg]) continue;
      UntimedLeg& found =
          leg <= group.pairs.size() ? OfPair(group.pairs[leg - 1]) : OfClass(*group.klass, leg);
      found.classes.insert(group.klass);
      found.strays += CountStrays(group, leg);
    }
  }

  void AppendTo(std::vector<std::string>& remarks) const {
    for (const UntimedLeg& leg : legs_) remarks.push_back(leg.Remark());
  }

 private:
  UntimedLeg& OfPair(const ControlPair& pair) {
    const auto [place, is_new] = places_.try_emplace(pair, legs_.size());
    if (is_new) legs_.push_back({PlaceName(pair.first) + "-" + PlaceName(pair.second), {}});
    return legs_[place->second];
  }

  UntimedLeg& OfClass(const clsClassData& klass, std::size_t leg) {
    legs_.push_back({std::to_string(leg) + " of class " + klass.ClassName(), {}});
    return legs_.back();
  }

  std::vector<UntimedLeg> legs_;
  std::map<ControlPair, std::size_t> places_;  // of pairs in `legs_`
};

}  // namespace

std::vector<std::string> EventRemarks(const EventModel& model) {
  const std::vector<CourseGroup> groups = CourseGroups(model);
  const std::vector<LegSet> untimed = FindUntimedLegs(groups);
  UntimedRemarks untimed_remarks;
  for (std::size_t i = 0; i < groups.size(); ++i) {
    untimed_remarks.AddGroup(groups[i], untimed[i]);
  }
  std::vector<std::string> remarks = model.Corrections;
  untimed_remarks.AppendTo(remarks);
  for (const ClockFinding& clock : FindClocks(groups, EstimateGroups(groups, untimed))) {
    remarks.push_back(clock.Remark());
  }
  return remarks;
}

}  // namespace keltrun
