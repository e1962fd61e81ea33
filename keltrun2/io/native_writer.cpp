#include "keltrun2/io/native_writer.h"

#include <algorithm>
#include <cmath>

#include "keltrun2/base/version.h"
#include "keltrun2/codec/xml.h"
#include "keltrun2/model/class_data_internal.h"
#include "keltrun2/model/lap_data_internal.h"
#include "keltrun2/model/time_text.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/width.h"

namespace keltrun {
namespace {

constexpr std::string_view kStamp = "yyyy/mm/dd hh:nn:ss";
constexpr DateTime kShortestTime = 1 / kMillisecondsPerDay;
constexpr MarkerTexts kLapMarkers = {"-", "+", "X"};

void Write(pugi::xml_node& element, const char* name, std::string_view text) {
  element.append_attribute(name).set_value(AllowedInXml(text).c_str());
}

void Write(pugi::xml_node& element, const char* name, std::int32_t number) {
  element.append_attribute(name).set_value(number);
}

void WriteIfSet(pugi::xml_node& element, const char* name, const std::string& text) {
  if (!text.empty()) Write(element, name, text);
}

void WriteIfSet(pugi::xml_node& element, const char* name, std::int32_t number) {
  if (number != 0) Write(element, name, number);
}

void WriteMetaFile(pugi::xml_node& meta, std::string_view type, const std::string& application,
                   DateTime date, const std::string& user) {
  if (application.empty()) return;
  pugi::xml_node file = meta.append_child("file");
  Write(file, "type", type);
  Write(file, "application", application);
  Write(file, "date", FormatDateTime(date, kStamp));
  WriteIfSet(file, "username", user);
}

void WriteMeta(pugi::xml_node& root, const clsMetaData& data) {
  pugi::xml_node meta = root.append_child("meta");
  WriteMetaFile(meta, "create", data.CreateApplication, data.CreateDate, data.CreateUserName);
  WriteMetaFile(meta, "last-update", data.LastUpdateApplication, data.LastUpdateDate,
                data.LastUpdateUserName);
}

void WriteEvent(pugi::xml_node& root, const clsEventData& data) {
  pugi::xml_node event = root.append_child("event");
  Write(event, "name", data.EventName);
  if (data.EventDate()->Value() != 0) Write(event, "date", data.EventDate()->ToString());
  WriteIfSet(event, "terrain", data.Terrain);
  WriteIfSet(event, "memo", data.Memo);
  WriteIfSet(event, "homepage", data.OfficialSite);
  WriteIfSet(event, "filename", data.FileName);
}

// "hh:mm:ss.fff" with any number of hours. The fraction is left out when it is 0.
void AppendExactTime(std::string& out, DateTime time) {
  const auto milliseconds = std::llround(time * kMillisecondsPerDay);
  const auto hours = milliseconds / 3'600'000;
  const auto rest = static_cast<int>(milliseconds % 3'600'000);
  if (hours < 10) out += '0';
  out += std::to_string(hours) + ":";
  AppendTwoDigits(out, rest / 60'000);
  out += ':';
  AppendTwoDigits(out, rest / 1000 % 60);
  if (rest % 1000 == 0) return;
  out += '.';
  out += static_cast<char>('0' + rest % 1000 / 100);
  AppendTwoDigits(out, rest % 100);
}

// A lap that rounds to 0 keeps its fraction, because 0 means no data.
bool RoundsToNothing(DateTime lap) { return lap > 0 && WholeSeconds(lap) == 0; }

void WriteLegs(pugi::xml_node& runner, const clsLapData& lap) {
  std::string time;
  for (std::int32_t leg = 1; leg <= LapDataInternal::HeldLegs(lap); ++leg) {
    time.clear();
    const DateTime value = LapDataInternal::Lap(lap, leg);
    if (RoundsToNothing(value)) {
      AppendExactTime(time, std::max(value, kShortestTime));
    } else {
      AppendTime(time, value, "hh:nn:ss", false, kLapMarkers);
    }
    pugi::xml_node element = runner.append_child("leg");
    Write(element, "index", leg);
    Write(element, "laptime", time);
  }
}

std::string StartText(DateTime start) {
  if (start < 0 || start >= kLongestTime) return FormatDateTime(start, "hh:nn:ss");
  std::string text;
  AppendExactTime(text, start);
  return text;
}

void WriteRunner(pugi::xml_node& klass, const clsLapData& lap, KrLapFileSaveModeCosnt mode) {
  pugi::xml_node runner = klass.append_child("runner");
  Write(runner, "name", lap.RunnerName);
  WriteIfSet(runner, "id", lap.ID);
  WriteIfSet(runner, "ecard", lap.Ecard);
  WriteIfSet(runner, "seed", lap.Seed);
  WriteIfSet(runner, "club", lap.ClubName);
  const DateTime start = lap.StartTime()->Value();
  if (start != 0) Write(runner, "start", StartText(start));
  WriteIfSet(runner, "result", lap.Result());
  WriteIfSet(runner, "rank", lap.Rank);
  WriteIfSet(runner, "sex", lap.Sex);
  WriteIfSet(runner, "competitor-id", lap.CompetitorId);
  if (mode == KR_SAVEMODE_FULL) {
    WriteIfSet(runner, "rankfix", lap.RankFix);
    WriteIfSet(runner, "age", lap.Age);
  }
  WriteLegs(runner, lap);
}

std::string FoldForComparison(std::string_view name) {
  return ToHalfWidth(LowerAscii(name), {.Symbols = false});
}

void WriteClass(pugi::xml_node& classes, const clsClassData& data, KrLapFileSaveModeCosnt mode) {
  pugi::xml_node klass = classes.append_child("class");
  Write(klass, "name", data.ClassName());
  WriteIfSet(klass, "length", data.Length);
  WriteIfSet(klass, "climb", data.Climb);
  WriteIfSet(klass, "controls", data.ControlCount);
  WriteIfSet(klass, "course", data.CourseNum);
  WriteIfSet(klass, "cutoffrank", data.CutOffRank);
  if (FoldForComparison(data.FileName()) != FoldForComparison(data.ClassName())) {
    Write(klass, "filename", data.FileName());
  }
  for (const auto& lap : ClassDataInternal::Runners(data)) WriteRunner(klass, *lap, mode);
}

void WriteCourse(pugi::xml_node& courses, const clsCourseData& data) {
  pugi::xml_node course = courses.append_child("course");
  Write(course, "number", data.CourseIndex());
  Write(course, "controls", data.ControlCount());
  const std::int32_t held = std::min(data.ControlCount(), clsCourseData::kMostControls);
  for (std::int32_t index = 1; index <= held; ++index) {
    pugi::xml_node control = course.append_child("control");
    Write(control, "index", index);
    Write(control, "unit-number", data.ControlNum(index));
  }
}

}  // namespace

std::string WriteNativeLapFile(const EventModel& model, KrLapFileSaveModeCosnt mode,
                               DateTime file_date) {
  pugi::xml_document document;
  pugi::xml_node root = document.append_child("keltrun");
  Write(root, "version", VersionText(false));
  Write(root, "filedate", FormatDateTime(file_date, kStamp));
  Write(root, "type", "application/x-keltrun2");
  WriteMeta(root, *model.Meta);
  WriteEvent(root, *model.Event);
  pugi::xml_node classes = root.append_child("classes");
  for (const auto& klass : model.Classes()) WriteClass(classes, *klass, mode);
  pugi::xml_node courses = root.append_child("courses");
  for (const auto& course : model.Courses()) WriteCourse(courses, *course);
  return WriteXml(document);
}

}  // namespace keltrun
