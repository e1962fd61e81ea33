#include "keltrun2/analysis/group_estimate.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <utility>

#include "keltrun2/model/lap_data_internal.h"
#include "keltrun2/text/datetime.h"

namespace keltrun {
namespace {

// A table has at most this many times the legs of the class's course, so that a class in which
// everybody ran a different course takes no more memory than its runners.
constexpr std::size_t kMostTimesTheLegs = 4;

// Whole milliseconds, so that equal laps are equal.
double SecondsOf(DateTime lap) { return std::round(lap * kMillisecondsPerDay) / 1000; }

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

// Where the laps of a group are: the column of each leg, and the row of the first runner.
struct GroupPlace {
  std::size_t table = 0;
  std::size_t first_runner = 0;
  std::vector<std::size_t> columns;
};

// The table of a class while the courses of its groups are put into it.
class TableInProgress {
 public:
  TableInProgress(const CourseGroup& group, PairNumbers& numbers)
      : numbers_(&numbers), own_legs_(static_cast<std::size_t>(group.legs)) {}

  // Whether the group has at least half of its legs in common with those that are here.
  bool Shares(const CourseGroup& group) const {
    const auto keys = KeysOf(group.pairs);
    const auto shared = std::count_if(keys.begin(), keys.end(),
                                      [this](const auto& k) { return columns_.count(k); });
    const auto legs = static_cast<std::size_t>(group.legs);
    return 2 * static_cast<std::size_t>(shared) >= legs && !group.pairs.empty() &&
           table_.pairs.size() + legs - static_cast<std::size_t>(shared) <=
               kMostTimesTheLegs * own_legs_;
  }

  GroupPlace Add(const CourseGroup& group) {
    GroupPlace place{0, table_.runners, {}};
    table_.runners += group.runners.size();
    for (const LegKey& key : KeysOf(group.pairs)) {
      const auto [column, is_new] = columns_.try_emplace(key, table_.pairs.size());
      if (is_new) table_.pairs.push_back(numbers_->Of(key.first));
      place.columns.push_back(column->second);
    }
    while (place.columns.size() < static_cast<std::size_t>(group.legs)) {
      place.columns.push_back(table_.pairs.size());
      table_.pairs.push_back(numbers_->New());
    }
    return place;
  }

  LapTable Take() {
    table_.seconds.resize(table_.runners * table_.pairs.size());
    return std::move(table_);
  }

 private:
  // A pair that a course has twice is two legs.
  using LegKey = std::pair<ControlPair, std::size_t>;

  static std::vector<LegKey> KeysOf(const std::vector<ControlPair>& pairs) {
    std::map<ControlPair, std::size_t> times;
    std::vector<LegKey> keys;
    keys.reserve(pairs.size());
    for (const ControlPair& pair : pairs) keys.emplace_back(pair, times[pair]++);
    return keys;
  }

  PairNumbers* numbers_;
  std::size_t own_legs_;
  LapTable table_;
  std::map<LegKey, std::size_t> columns_;
};

// A lap right after a skipped or disqualified leg covers more than its leg.
void ReadLaps(const clsLapData& record, const LegSet& untimed, const GroupPlace& place,
              std::size_t runner, LapTable& table) {
  const auto last =
      std::min(static_cast<std::size_t>(LapDataInternal::HeldLegs(record)), place.columns.size());
  bool covers_more = false;
  for (std::size_t leg = 1; leg <= last; ++leg) {
    const DateTime lap = LapDataInternal::Lap(record, static_cast<std::int32_t>(leg));
    const bool counts = lap > 0 && !IsZeroLap(lap) && !covers_more && !untimed[leg];
    if (counts) table.At(runner, place.columns[leg - 1]) = SecondsOf(lap);
    covers_more = lap < 0;
  }
}

// Decides which groups share a table; the tables are still without laps.
std::vector<GroupPlace> PlaceGroups(const std::vector<CourseGroup>& groups,
                                    std::vector<LapTable>& tables) {
  PairNumbers numbers;
  std::vector<GroupPlace> places(groups.size());
  for (std::size_t first = 0; first < groups.size();) {
    TableInProgress of_class(groups[first], numbers);
    const std::size_t table_of_class = tables.size();
    tables.emplace_back();
    std::size_t i = first;
    for (; i < groups.size() && groups[i].klass == groups[first].klass; ++i) {
      if (i == first || of_class.Shares(groups[i])) {
        places[i] = of_class.Add(groups[i]);
        places[i].table = table_of_class;
      } else {
        TableInProgress alone(groups[i], numbers);
        places[i] = alone.Add(groups[i]);
        places[i].table = tables.size();
        tables.push_back(alone.Take());
      }
    }
    tables[table_of_class] = of_class.Take();
    first = i;
  }
  return places;
}

// Whether the group is all that the table has, as without forks.
bool IsWholeTable(const GroupPlace& place, std::size_t runners, const ClassEstimate& all) {
  std::size_t next = 0;
  return place.columns.size() == all.legs.size() && runners == all.runners.size() &&
         std::all_of(place.columns.begin(), place.columns.end(),
                     [&next](std::size_t column) { return column == next++; });
}

// What the figures of a table say about one of its groups.
ClassEstimate FiguresOf(const GroupPlace& place, std::size_t runners, ClassEstimate& all) {
  if (IsWholeTable(place, runners, all)) return std::move(all);
  ClassEstimate figures{{}, {}, {}, all.mistake_rate, all.mistake_size};
  for (const std::size_t column : place.columns) figures.legs.push_back(all.legs[column]);
  figures.laps.reserve(runners * place.columns.size());
  for (std::size_t i = place.first_runner; i < place.first_runner + runners; ++i) {
    figures.runners.push_back(all.runners[i]);
    const LapFigures* laps = all.laps.data() + i * all.legs.size();
    for (const std::size_t column : place.columns) figures.laps.push_back(laps[column]);
  }
  return figures;
}

}  // namespace

std::vector<ClassEstimate> EstimateGroups(const std::vector<CourseGroup>& groups,
                                          const std::vector<LegSet>& untimed) {
  std::vector<LapTable> tables;
  const std::vector<GroupPlace> places = PlaceGroups(groups, tables);
  for (std::size_t i = 0; i < groups.size(); ++i) {
    std::size_t row = places[i].first_runner;
    for (const auto& runner : groups[i].runners) {
      ReadLaps(*runner, untimed[i], places[i], row++, tables[places[i].table]);
    }
  }
  std::vector<ClassEstimate> estimates = EstimateLaps(tables);
  std::vector<ClassEstimate> figures;
  figures.reserve(groups.size());
  for (std::size_t i = 0; i < groups.size(); ++i) {
    figures.push_back(FiguresOf(places[i], groups[i].runners.size(), estimates[places[i].table]));
  }
  return figures;
}

}  // namespace keltrun
