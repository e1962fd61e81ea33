#include "keltrun2/analysis/estimate.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "keltrun2/analysis/estimate_internal.h"
#include "keltrun2/base/automation_error.h"
#include "keltrun2/model/class_data_internal.h"
#include "keltrun2/model/lap_data_internal.h"
#include "keltrun2/text/letters.h"

namespace keltrun {
namespace {

constexpr double kPerhaps = 0.2;
constexpr double kSure = 0.95;

// Whole milliseconds, so that equal laps are equal.
double SecondsOf(DateTime lap) { return std::round(lap * kMillisecondsPerDay) / 1000; }

DateTime Days(double seconds) { return seconds / kSecondsPerDay; }

// The numbers of the pairs of controls of an event.
class PairNumbers {
 public:
  std::int32_t Of(const ControlPair& pair) {
    const auto [place, is_new] = numbers_.try_emplace(pair, next_);
    if (is_new) ++next_;
    return place->second;
  }
  std::int32_t New() { return next_++; }

 private:
  std::map<ControlPair, std::int32_t> numbers_;
  std::int32_t next_ = 0;
};

std::size_t LegCountOf(const clsClassData& klass) {
  return static_cast<std::size_t>(
      std::clamp(klass.ControlCount, 0, clsAnalyzedRunnerData::kMostAnalyzedLegs - 1) + 1);
}

// A lap right after a skipped or disqualified leg covers more than its leg.
void ReadLaps(const clsLapData& record, const LegSet& untimed, std::size_t runner,
              LapTable& table) {
  const auto last =
      std::min(static_cast<std::size_t>(LapDataInternal::HeldLegs(record)), table.pairs.size());
  bool covers_more = false;
  for (std::size_t leg = 1; leg <= last; ++leg) {
    const DateTime lap = LapDataInternal::Lap(record, static_cast<std::int32_t>(leg));
    const bool counts = lap > 0 && !IsZeroLap(lap) && !covers_more && !untimed[leg];
    if (counts) table.At(runner, leg - 1) = SecondsOf(lap);
    covers_more = lap < 0;
  }
}

LapTable ReadClass(const EventModel& model, const clsClassData& klass, const LegSet& untimed,
                   PairNumbers& numbers) {
  LapTable table;
  const auto pairs = LegPairs(model, klass);
  for (std::size_t leg = 0; leg < LegCountOf(klass); ++leg) {
    table.pairs.push_back(leg < pairs.size() ? numbers.Of(pairs[leg]) : numbers.New());
  }
  const auto& runners = ClassDataInternal::Runners(klass);
  table.runners = runners.size();
  table.seconds.resize(runners.size() * table.pairs.size());
  for (std::size_t i = 0; i < runners.size(); ++i) ReadLaps(*runners[i], untimed, i, table);
  return table;
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
  const std::vector<LegSet> legs = UntimedLegsOf(model, untimed);
  const std::vector<ClassEstimate> figures = EstimateLaps(LapTables(model, legs));
  const std::shared_ptr<clsEstimate> estimate(new clsEstimate);
  for (std::size_t i = 0; i < figures.size(); ++i) {
    estimate->classes_.push_back(MakeClass(*model.Classes()[i], legs[i], figures[i]));
    const auto& runners = estimate->classes_.back()->runners_;
    estimate->by_serial_.insert(estimate->by_serial_.end(), runners.begin(), runners.end());
  }
  std::stable_sort(estimate->by_serial_.begin(), estimate->by_serial_.end(),
                   [](const auto& a, const auto& b) { return a->SerialNum() < b->SerialNum(); });
  return estimate;
}

std::shared_ptr<clsEstimatedClassData> EstimateInternal::MakeClass(const clsClassData& klass,
                                                                   const LegSet& untimed,
                                                                   const ClassEstimate& figures) {
  const std::shared_ptr<clsEstimatedClassData> made(new clsEstimatedClassData);
  made->class_name_ = klass.ClassName();
  for (std::size_t leg = 0; leg < figures.legs.size(); ++leg) {
    const keltrun::LegFigures& of_leg = figures.legs[leg];
    made->legs_.push_back(
        {Days(of_leg.normal), of_leg.spread, of_leg.mistake_rate, !untimed[leg + 1]});
  }
  const auto& records = ClassDataInternal::Runners(klass);
  for (std::size_t i = 0; i < records.size(); ++i) {
    made->runners_.push_back(MakeRunner(records[i], figures.runners[i],
                                        figures.laps.data() + i * figures.legs.size(),
                                        figures.legs.size()));
  }
  return made;
}

std::shared_ptr<clsEstimatedRunnerData> EstimateInternal::MakeRunner(
    const std::shared_ptr<clsLapData>& record, const RunnerFigures& figures, const LapFigures* laps,
    std::size_t legs) {
  const std::shared_ptr<clsEstimatedRunnerData> made(new clsEstimatedRunnerData(record));
  made->speed_ = figures.speed;
  made->speed_error_ = figures.speed_error;
  made->spread_ = figures.spread;
  made->time_lost_ = Days(figures.time_lost);
  made->mistake_size_ = Days(figures.mistake_size);
  made->mistake_count_ = figures.mistakes;
  made->legs_.reserve(legs);
  for (std::size_t leg = 0; leg < legs; ++leg) {
    const LapFigures& lap = laps[leg];
    made->legs_.push_back({Days(lap.normal), Days(lap.loss), Days(lap.least_loss),
                           Days(lap.largest_loss), Days(lap.time_lost), lap.large_mistake,
                           lap.known});
  }
  return made;
}

std::vector<LapTable> LapTables(const EventModel& model, const std::vector<LegSet>& untimed) {
  PairNumbers numbers;
  std::vector<LapTable> tables;
  tables.reserve(model.Classes().size());
  for (std::size_t i = 0; i < model.Classes().size(); ++i) {
    tables.push_back(ReadClass(model, *model.Classes()[i], untimed[i], numbers));
  }
  return tables;
}

std::vector<LegSet> UntimedLegsOf(const EventModel& model, const UntimedLegsChoice& choice) {
  if (choice.IsAutomatic()) return FindUntimedLegs(model);
  return std::vector<LegSet>(model.Classes().size(), choice.Legs());
}

}  // namespace keltrun
