#include "keltrun2/model/class_data.h"

#include <algorithm>
#include <optional>

#include "keltrun2/base/automation_error.h"
#include "keltrun2/config/settings.h"
#include "keltrun2/model/class_data_internal.h"
#include "keltrun2/model/lap_data_internal.h"
#include "keltrun2/model/length_and_climb.h"
#include "keltrun2/model/process_state.h"
#include "keltrun2/model/result_status.h"
#include "keltrun2/model/sort.h"
#include "keltrun2/text/file_names.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/width.h"

namespace keltrun {
namespace {

constexpr std::int32_t kMatchMask = 4095;

std::string FileBaseName(std::string_view name) {
  return EncodeWideCharacters(ToHalfWidth(LowerAscii(CleanFileName(name))));
}

// Names that differ only in blanks, in the case of A to Z or in the width of digits and lower-case
// letters have the same key. Full-width capitals stay capitals, so they never equal half-width
// letters.
std::string NameKey(std::string_view name) {
  return ToHalfWidth(NormalizeName(LowerAscii(name)), {.Space = false, .Symbols = false});
}

// The new value replaces an empty one; with `overwrite` it replaces any, unless it is itself empty.
template <typename T>
void MergeField(T& existing, const T& added, bool overwrite) {
  const T empty{};
  if (existing == empty || (overwrite && added != empty)) existing = added;
}

void MergeLaps(clsLapData& existing, const clsLapData& added, bool overwrite) {
  if (existing.LegCount() != 0 && !(overwrite && added.LegCount() != 0)) return;
  for (std::int32_t leg = 1; leg <= LapDataInternal::HeldLegs(added); ++leg) {
    existing.SetLap(leg, LapDataInternal::Lap(added, leg));
  }
  existing.CourseNum = added.CourseNum;
}

void MergeResult(clsLapData& existing, const clsLapData& added, bool overwrite) {
  if (!existing.Result().empty() && !(overwrite && !added.Result().empty())) return;
  LapDataInternal::SetResultText(existing, added.Result());
  existing.Status = added.Status;
}

void MergeInto(clsLapData& existing, const clsLapData& added, bool overwrite) {
  MergeField(existing.Age, added.Age, overwrite);
  MergeField(existing.ClubName, added.ClubName, overwrite);
  MergeField(existing.ID, added.ID, overwrite);
  MergeField(existing.Ecard, added.Ecard, overwrite);
  MergeField(existing.Rank, added.Rank, overwrite);
  MergeResult(existing, added, overwrite);
  MergeField(existing.RunnerName, added.RunnerName, overwrite);
  MergeField(existing.Seed, added.Seed, overwrite);
  MergeField(existing.Sex, added.Sex, overwrite);
  MergeField(existing.Bib, added.Bib, overwrite);
  MergeField(existing.ControlCard, added.ControlCard, overwrite);
  MergeField(existing.GivenName, added.GivenName, overwrite);
  MergeField(existing.FamilyName, added.FamilyName, overwrite);
  MergeField(existing.Nationality, added.Nationality, overwrite);
  DateTime start = existing.StartTime()->Value();
  MergeField(start, added.StartTime()->Value(), overwrite);
  existing.StartTime()->SetValue(start);
  MergeLaps(existing, added, overwrite);
}

// The key that two records of the same runner have in common in this mode; nullopt if records are
// not matched at all.
std::optional<std::string> MatchKey(const clsLapData& lap, KrLapFileLoadModeCosnt mode) {
  switch (mode & kMatchMask) {
    case KR_LOADMODE_MERGE_ID:
      return std::to_string(lap.ID);
    case KR_LOADMODE_MERGE_NAME:
      return NameKey(lap.RunnerName);
    default:
      return std::nullopt;
  }
}

// Merges the record into the matching one, or adds it. True only if it was added.
bool AddOrMerge(clsClassData& klass, const std::shared_ptr<clsLapData>& lap,
                const std::shared_ptr<clsLapData>& match, KrLapFileLoadModeCosnt mode) {
  if (match) {
    MergeInto(*match, *lap, (mode & KR_LOADMODE_PRIORITY_NEWDATA) != 0);
    return false;
  }
  const bool only_merges = (mode & KR_LOADMODE_NOTADD_NEWDATA) != 0;
  if (only_merges) return false;
  ClassDataInternal::Append(klass, lap);
  return true;
}

}  // namespace

std::string clsClassData::ClassInfo() const {
  return LengthAndClimb(Length, Climb, ResourceText("RES_META_CLIMB_SYMBOLE"));
}

void clsClassData::SetFileName(std::string_view FileName) {
  const bool derive = FileName.empty() || FileName == "0";
  file_name_ = FileBaseName(derive ? std::string_view(*class_name_) : FileName);
}

bool clsClassData::AddLapObject(const std::shared_ptr<clsLapData>& LapObject,
                                KrLapFileLoadModeCosnt LapFileLoadMode) {
  CheckObject(LapObject, "clsClassData.AddLapObject");
  ClassDataInternal::GiveClassName(*this, *LapObject);
  std::shared_ptr<clsLapData> match;
  if (const auto key = MatchKey(*LapObject, LapFileLoadMode)) {
    const auto found = std::find_if(laps_.begin(), laps_.end(), [&](const auto& runner) {
      return MatchKey(*runner, LapFileLoadMode) == key;
    });
    if (found != laps_.end()) match = *found;
  }
  return AddOrMerge(*this, LapObject, match, LapFileLoadMode);
}

LapMerger::LapMerger(clsClassData& klass, KrLapFileLoadModeCosnt mode)
    : class_(klass), mode_(mode) {
  for (const auto& runner : ClassDataInternal::Runners(klass)) Remember(runner);
}

bool LapMerger::Add(const std::shared_ptr<clsLapData>& lap) {
  ClassDataInternal::GiveClassName(class_, *lap);
  std::shared_ptr<clsLapData> match;
  if (const auto key = MatchKey(*lap, mode_)) {
    const auto found = first_by_key_.find(*key);
    if (found != first_by_key_.end()) match = found->second;
  }
  const bool added = AddOrMerge(class_, lap, match, mode_);
  if (added) Remember(lap);
  return added;
}

void LapMerger::Remember(const std::shared_ptr<clsLapData>& lap) {
  if (const auto key = MatchKey(*lap, mode_)) first_by_key_.emplace(*key, lap);
}

std::shared_ptr<clsLapData> clsClassData::AddLap() {
  auto lap = std::make_shared<clsLapData>();
  ClassDataInternal::GiveClassName(*this, *lap);
  Append(lap);
  return lap;
}

void clsClassData::Append(const std::shared_ptr<clsLapData>& lap) {
  laps_.push_back(lap);
  LapDataInternal::SetSerialNum(*lap, NextSerialNumber());
}

void clsClassData::RemoveLap(std::int32_t Index) {
  if (Index >= 1 && Index <= LapCount()) laps_.erase(laps_.begin() + (Index - 1));
}

std::shared_ptr<clsLapData> clsClassData::LapData(std::int32_t Index) const {
  if (Index < 1 || Index > LapCount()) return nullptr;
  return laps_[static_cast<std::size_t>(Index) - 1];
}

void clsClassData::SortLap() {
  CclsSort<std::shared_ptr<clsLapData>> order;
  for (const auto& lap : laps_) order.Add(ClassSortKey(lap->Result()), lap);
  laps_.clear();
  for (auto& line : order.LineSet()) laps_.push_back(std::move(line.Item));
}

}  // namespace keltrun
