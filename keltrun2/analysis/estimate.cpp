#include "keltrun2/analysis/estimate.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

#include "keltrun2/analysis/estimate_internal.h"
#include "keltrun2/analysis/group_estimate.h"
#include "keltrun2/base/automation_error.h"
#include "keltrun2/model/class_data_internal.h"
#include "keltrun2/model/lap_data_internal.h"
#include "keltrun2/text/letters.h"

namespace keltrun {
namespace {

constexpr double kPerhaps = 0.2;
constexpr double kSure = 0.95;

DateTime Days(double seconds) { return seconds / kSecondsPerDay; }

// The runners of a class in its order, which the groups have taken apart.
void OrderAsInClass(const clsClassData& klass,
                    std::vector<std::shared_ptr<clsEstimatedRunnerData>>& runners) {
  std::unordered_map<const clsLapData*, std::size_t> places;
  for (const auto& record : ClassDataInternal::Runners(klass)) {
    places.try_emplace(record.get(), places.size());
  }
  std::stable_sort(runners.begin(), runners.end(), [&places](const auto& a, const auto& b) {
    return places.at(a->OtherData().get()) < places.at(b->OtherData().get());
  });
}

}  // namespace

std::string_view MistakeWordName(MistakeWord Word) {
  switch (Word) {
    case MistakeWord::kPerhaps:
      return "perhaps";
    case MistakeWord::kLikely:
      return "likely";
    case MistakeWord::kSure:
      return "sure";
    case MistakeWord::kNone:
      break;
  }
  return "";
}

MistakeWord clsEstimatedRunnerData::MistakeWord(std::int32_t Index) const {
  const double chance = Leg(Index).mistake_chance;
  if (chance >= kSure) return MistakeWord::kSure;
  if (chance >= kMistakeLimit) return MistakeWord::kLikely;
  return chance >= kPerhaps ? MistakeWord::kPerhaps : MistakeWord::kNone;
}

bool clsEstimatedRunnerData::IsMistake(std::int32_t Index) const {
  return Leg(Index).mistake_chance > kMistakeLimit;
}

const clsEstimatedRunnerData::LegFigures& clsEstimatedRunnerData::Leg(std::int32_t index) const {
  static const LegFigures unknown;
  CheckIndex(index, 0, clsAnalyzedRunnerData::kMostAnalyzedLegs, "clsEstimatedRunnerData");
  const auto leg = static_cast<std::size_t>(index);
  return leg >= 1 && leg <= legs_.size() ? legs_[leg - 1] : unknown;
}

std::shared_ptr<clsEstimatedRunnerData> clsEstimatedClassData::Item(std::int32_t Index) const {
  if (Index < 1 || Index > Count()) return nullptr;
  return runners_[static_cast<std::size_t>(Index) - 1];
}

const clsEstimatedClassData::LegFigures& clsEstimatedClassData::Leg(std::int32_t index) const {
  static const LegFigures unknown;
  CheckIndex(index, 0, clsAnalyzedRunnerData::kMostAnalyzedLegs, "clsEstimatedClassData");
  return index >= 1 && index <= LegCount() ? legs_[static_cast<std::size_t>(index) - 1] : unknown;
}

std::shared_ptr<clsEstimatedClassData> clsEstimate::ClassData(std::int32_t ClassID) const {
  if (ClassID < 1 || ClassID > ClassCount()) return nullptr;
  return classes_[static_cast<std::size_t>(ClassID) - 1];
}

std::shared_ptr<clsEstimatedClassData> clsEstimate::ClassData(std::string_view ClassID) const {
  const std::string wanted = FoldCase(ClassID);
  const auto found = std::find_if(classes_.begin(), classes_.end(), [&](const auto& klass) {
    return FoldCase(klass->ClassName()) == wanted;
  });
  return found != classes_.end() ? *found : nullptr;
}

std::shared_ptr<clsEstimatedRunnerData> clsEstimate::RunnerData(std::int32_t SerialNum) const {
  const auto found = std::lower_bound(
      by_serial_.begin(), by_serial_.end(), SerialNum,
      [](const auto& runner, auto serial) { return runner->SerialNum() < serial; });
  return found != by_serial_.end() && (*found)->SerialNum() == SerialNum ? *found : nullptr;
}

std::shared_ptr<clsEstimate> EstimateInternal::Make(const EventModel& model,
                                                    const UntimedLegsChoice& untimed) {
  const std::vector<CourseGroup> groups = CourseGroups(model);
  const std::vector<LegSet> legs = UntimedLegsOf(groups, untimed);
  const std::vector<ClassEstimate> figures = EstimateGroups(groups, legs);
  std::shared_ptr<clsEstimate> estimate(new clsEstimate);
  for (std::size_t i = 0; i < groups.size(); ++i) {
    const CourseGroup& group = groups[i];
    const bool is_first = i == 0 || groups[i - 1].klass != group.klass;
    if (is_first) estimate->classes_.push_back(MakeClass(group, legs[i], figures[i]));
    auto& of_class = estimate->classes_.back()->runners_;
    const std::size_t leg_count = figures[i].legs.size();
    for (std::size_t runner = 0; runner < group.runners.size(); ++runner) {
      of_class.push_back(MakeRunner(group.runners[runner], figures[i].runners[runner],
                                    figures[i].laps.data() + runner * leg_count, leg_count,
                                    legs[i]));
      estimate->by_serial_.push_back(of_class.back());
    }
    const bool is_last = i + 1 == groups.size() || groups[i + 1].klass != group.klass;
    if (is_last && !is_first) OrderAsInClass(*group.klass, of_class);
  }
  std::stable_sort(estimate->by_serial_.begin(), estimate->by_serial_.end(),
                   [](const auto& a, const auto& b) { return a->SerialNum() < b->SerialNum(); });
  return estimate;
}

std::shared_ptr<clsEstimatedClassData> EstimateInternal::MakeClass(const CourseGroup& group,
                                                                   const LegSet& untimed,
                                                                   const ClassEstimate& figures) {
  std::shared_ptr<clsEstimatedClassData> made(new clsEstimatedClassData);
  made->class_name_ = group.klass->ClassName();
  for (std::size_t leg = 0; leg < figures.legs.size(); ++leg) {
    const keltrun::LegFigures& of_leg = figures.legs[leg];
    made->legs_.push_back(
        {Days(of_leg.normal), of_leg.spread, of_leg.mistake_rate, !untimed[leg + 1]});
  }
  return made;
}

std::shared_ptr<clsEstimatedRunnerData> EstimateInternal::MakeRunner(
    const std::shared_ptr<clsLapData>& record, const RunnerFigures& figures, const LapFigures* laps,
    std::size_t legs, const LegSet& untimed) {
  std::shared_ptr<clsEstimatedRunnerData> made(new clsEstimatedRunnerData(record));
  made->speed_ = figures.speed;
  made->speed_error_ = figures.speed_error;
  made->spread_ = figures.spread;
  made->time_lost_ = Days(figures.time_lost);
  made->least_time_lost_ = Days(figures.least_time_lost);
  made->largest_time_lost_ = Days(figures.largest_time_lost);
  made->mistake_size_ = Days(figures.mistake_size);
  made->mistake_count_ = figures.mistakes;
  made->legs_.reserve(legs);
  for (std::size_t leg = 0; leg < legs; ++leg) {
    const LapFigures& lap = laps[leg];
    made->legs_.push_back({Days(lap.normal), Days(lap.loss), Days(lap.least_loss),
                           Days(lap.largest_loss), Days(lap.time_lost), lap.large_mistake,
                           lap.known, !untimed[leg + 1]});
  }
  return made;
}

std::vector<LegSet> UntimedLegsOf(const std::vector<CourseGroup>& groups,
                                  const UntimedLegsChoice& choice) {
  if (choice.IsAutomatic()) return FindUntimedLegs(groups);
  return std::vector<LegSet>(groups.size(), choice.Legs());
}

}  // namespace keltrun
