#include "keltrun2/model/class_data.h"

#include <algorithm>

#include "keltrun2/config/settings.h"
#include "keltrun2/model/lap_data_internal.h"
#include "keltrun2/model/process_state.h"
#include "keltrun2/model/result_status.h"
#include "keltrun2/model/sort.h"
#include "keltrun2/model/time_text.h"
#include "keltrun2/platform/automation_error.h"
#include "keltrun2/text/file_names.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/width.h"

namespace keltrun {
namespace {

constexpr std::int32_t kMatchMask = 4095;

std::string FileBaseName(std::string_view name) {
  return EncodeWideCharacters(ToHalfWidth(LowerAscii(CleanFileName(name))));
}

// Names that differ only in blanks, letter case or the width of letters and digits have one key.
std::string NameKey(std::string_view name) {
  return ToHalfWidth(NormalizeName(LowerAscii(name)), {.Space = false, .Symbols = false});
}

// Takes the new value over an empty one, and with `overwrite` over any unless it is empty itself.
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
}

void MergeInto(clsLapData& existing, const clsLapData& added, bool overwrite) {
  MergeField(existing.Age, added.Age, overwrite);
  MergeField(existing.ClubName, added.ClubName, overwrite);
  MergeField(existing.ID, added.ID, overwrite);
  MergeField(existing.Ecard, added.Ecard, overwrite);
  MergeField(existing.Rank, added.Rank, overwrite);
  std::string result = existing.Result();
  MergeField(result, added.Result(), overwrite);
  if (result != existing.Result()) existing.SetResult(result);
  MergeField(existing.RunnerName, added.RunnerName, overwrite);
  MergeField(existing.Seed, added.Seed, overwrite);
  MergeField(existing.Sex, added.Sex, overwrite);
  DateTime start = existing.StartTime()->Value();
  MergeField(start, added.StartTime()->Value(), overwrite);
  existing.StartTime()->SetValue(start);
  MergeLaps(existing, added, overwrite);
}

}  // namespace

std::string clsClassData::ClassInfo() const {
  return LengthAndClimb(Length, Climb, ResourceText("RES_META_CLIMB_SYMBOLE"));
}

void clsClassData::SetFileName(std::string_view FileName) {
  const bool derive = FileName.empty() || FileName == "0";
  file_name_ = FileBaseName(derive ? std::string_view(class_name_) : FileName);
}

bool clsClassData::AddLapObject(const std::shared_ptr<clsLapData>& LapObject,
                                KrLapFileLoadModeCosnt LapFileLoadMode) {
  CheckObject(LapObject, "clsClassData.AddLapObject");
  LapObject->SetClassName(class_name_);
  if (LapFileLoadMode == KR_LOADMODE_NORMAL || LapFileLoadMode == KR_LOADMODE_APPEND) {
    Append(LapObject);
    return true;
  }
  const auto match = FindMatch(*LapObject, LapFileLoadMode & kMatchMask);
  if (match) {
    MergeInto(*match, *LapObject, (LapFileLoadMode & KR_LOADMODE_PRIORITY_NEWDATA) != 0);
    return false;
  }
  if ((LapFileLoadMode & KR_LOADMODE_NOTADD_NEWDATA) != 0) return false;
  Append(LapObject);
  return true;
}

std::shared_ptr<clsLapData> clsClassData::FindMatch(const clsLapData& lap,
                                                    std::int32_t rule) const {
  const auto first = [this](auto matches) {
    const auto found = std::find_if(laps_.begin(), laps_.end(), matches);
    return found == laps_.end() ? nullptr : *found;
  };
  if (rule == KR_LOADMODE_MERGE_ID) {
    return first([&](const auto& runner) { return runner->ID == lap.ID; });
  }
  if (rule == KR_LOADMODE_MERGE_NAME) {
    const std::string key = NameKey(lap.RunnerName);
    return first([&](const auto& runner) { return NameKey(runner->RunnerName) == key; });
  }
  return nullptr;
}

std::shared_ptr<clsLapData> clsClassData::AddLap() {
  auto lap = std::make_shared<clsLapData>();
  lap->SetClassName(class_name_);
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
  for (const auto& lap : laps_) {
    const std::optional<DateTime> time = ParseFinishTime(lap->Result());
    order.Add(time ? *time : ResultStatusCode(lap->Result()), lap);
  }
  laps_.clear();
  for (auto& line : order.LineSet()) laps_.push_back(std::move(line.Item));
}

}  // namespace keltrun
