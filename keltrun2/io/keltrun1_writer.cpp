#include "keltrun2/io/keltrun1_writer.h"

#include <algorithm>

#include "keltrun2/config/leg_labels.h"
#include "keltrun2/config/settings.h"
#include "keltrun2/io/limits.h"
#include "keltrun2/model/class_data_internal.h"
#include "keltrun2/model/lap_data_internal.h"
#include "keltrun2/model/time_text.h"
#include "keltrun2/text/cells.h"

namespace keltrun {
namespace {

constexpr std::string_view kNotAvailable = "n/a";
constexpr std::string_view kTimePattern = "hh:nn:ss";

// A cell after the first one of its line.
void AppendNextCell(std::string& out, std::string_view text) {
  out += ',';
  AppendCell(out, text);
}

void WriteEvent(std::string& out, const clsEventData& event) {
  const std::string date = event.EventDate()->ToString("yyyy/mm/dd");
  const std::pair<std::string_view, std::string_view> lines[] = {
      {"RES_META_EVENT_NAME", event.EventName}, {"RES_META_EVENT_DATE", date},
      {"RES_META_EVENT_VENUE", event.Terrain},  {"RES_META_EVENT_MEMO", event.Memo},
      {"RES_META_WEBSITE", event.OfficialSite}, {"RES_META_EVENT_FILENAME", event.FileName},
  };
  for (const auto& [key, value] : lines) {
    out += "$" + ResourceText(key) + "=";
    AppendInLine(out, value);
    out += kCrLf;
  }
}

void WriteCourseFacts(std::string& out, const clsClassData& klass) {
  if (klass.ControlCount == 0) return;
  const std::pair<std::string_view, std::int32_t> lines[] = {
      {"RES_META_COURCE_LENGTH", klass.Length},
      {"RES_META_CLIMB_HEIGHT", klass.Climb},
      {"RES_META_CONTROL_COUNT", klass.ControlCount},
      {"RES_META_COURSE_NUMBER", klass.CourseNum},
  };
  for (const auto& [key, value] : lines) {
    out += '$';
    AppendCell(out, klass.ClassName());
    out += ":" + ResourceText(key) + "=" + std::to_string(value);
    out += kCrLf;
  }
}

// The legs in the lines of a class and in its header line: one more than the class has controls.
std::int32_t LegsOf(const clsClassData& klass) {
  return std::clamp(klass.ControlCount, 0, kMostClassControls) + 1;
}

// Texts that the lines of many runners need.
struct Words {
  std::string cross = ResourceText("RES_META_CROSS_SYMBOL");
  std::string arrow = ResourceText("RES_META_RIGHT_ARROW");
};

void WriteLegs(std::string& out, const clsLapData& runner, std::int32_t class_legs,
               const Words& words) {
  const MarkerTexts markers = {kNotAvailable, words.arrow, kNotAvailable};
  const std::int32_t held = LapDataInternal::HeldLegs(runner);
  for (std::int32_t leg = 1; leg <= held; ++leg) {
    out += ',';
    AppendTime(out, RoundToSeconds(LapDataInternal::Lap(runner, leg)), kTimePattern, false,
               markers);
  }
  for (std::int32_t leg = held; leg < class_legs; ++leg) AppendNextCell(out, kNotAvailable);
}

void WriteRunner(std::string& out, const clsClassData& klass, const clsLapData& runner,
                 const Words& words) {
  AppendCell(out, klass.ClassName());
  AppendNextCell(out, std::to_string(runner.ID));
  AppendNextCell(out, runner.RunnerName);
  AppendNextCell(out, runner.ClubName);
  AppendNextCell(out, runner.Seed);
  AppendNextCell(out, runner.Sex);
  out += ',';
  AppendDateTime(out, runner.StartTime()->Value(), kTimePattern);
  AppendNextCell(out, runner.Result() == words.cross ? kNotAvailable : runner.Result());
  AppendNextCell(out, runner.Rank);
  WriteLegs(out, runner, LegsOf(klass), words);
  out += kCrLf;
}

void WriteClass(std::string& out, const clsClassData& klass, const Words& words) {
  out += kCrLf;
  out += ResourceText("RES_META_LAPFILE_HEADER");
  const std::int32_t legs = LegsOf(klass);
  for (std::int32_t leg = 1; leg <= legs; ++leg) out += "," + LegLabel(legs - 1, false, leg);
  out += kCrLf;
  for (const auto& runner : ClassDataInternal::Runners(klass)) {
    if (runner->LegCount() != 0) WriteRunner(out, klass, *runner, words);
  }
}

}  // namespace

std::string WriteKeltrun1LapFile(const EventModel& model) {
  std::string out = "$LAPFILE Ver=2\r\n$LAPFILE Rev=4\r\n";
  WriteEvent(out, *model.Event);
  for (const auto& klass : model.Classes()) WriteCourseFacts(out, *klass);
  const Words words;
  for (const auto& klass : model.Classes()) WriteClass(out, *klass, words);
  return out;
}

}  // namespace keltrun
