#include "keltrun2/io/native_writer.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "keltrun2/base/version.h"
#include "keltrun2/codec/xml.h"
#include "keltrun2/model/class_data_internal.h"
#include "keltrun2/model/lap_data_internal.h"
#include "keltrun2/model/time_text.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/width.h"

namespace keltrun {
namespace {

using Element = XmlWriter::Element;

constexpr std::string_view kStamp = "yyyy/mm/dd hh:nn:ss";
constexpr DateTime kShortestTime = 1 / kMillisecondsPerDay;
constexpr MarkerTexts kLapMarkers = {"-", "+", "X"};

void WriteIfSet(XmlWriter& xml, std::string_view name, const std::string& text) {
  if (!text.empty()) xml.Attribute(name, text);
}

void WriteIfSet(XmlWriter& xml, std::string_view name, std::int32_t number) {
  if (number != 0) xml.Attribute(name, number);
}

void WriteMetaFile(XmlWriter& xml, std::string_view type, const std::string& application,
                   DateTime date, const std::string& user) {
  if (application.empty()) return;
  const Element file(xml, "file");
  xml.Attribute("type", type);
  xml.Attribute("application", application);
  xml.Attribute("date", FormatDateTime(date, kStamp));
  WriteIfSet(xml, "username", user);
}

void WriteMeta(XmlWriter& xml, const clsMetaData& data) {
  const Element meta(xml, "meta");
  WriteMetaFile(xml, "create", data.CreateApplication, data.CreateDate, data.CreateUserName);
  WriteMetaFile(xml, "last-update", data.LastUpdateApplication, data.LastUpdateDate,
                data.LastUpdateUserName);
}

void WriteEvent(XmlWriter& xml, const clsEventData& data) {
  const Element event(xml, "event");
  xml.Attribute("name", data.EventName);
  if (data.EventDate()->Value() != 0) xml.Attribute("date", data.EventDate()->ToString());
  WriteIfSet(xml, "terrain", data.Terrain);
  WriteIfSet(xml, "memo", data.Memo);
  WriteIfSet(xml, "homepage", data.OfficialSite);
  WriteIfSet(xml, "filename", data.FileName);
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

void WriteLegs(XmlWriter& xml, const clsLapData& lap) {
  std::string time;
  for (std::int32_t leg = 1; leg <= LapDataInternal::HeldLegs(lap); ++leg) {
    time.clear();
    const DateTime value = LapDataInternal::Lap(lap, leg);
    if (RoundsToNothing(value)) {
      // Such a lap keeps its fraction, because 0 means no data.
      AppendExactTime(time, std::max(value, kShortestTime));
    } else {
      AppendTime(time, RoundToSeconds(value), "hh:nn:ss", false, kLapMarkers);
    }
    const Element element(xml, "leg");
    xml.Attribute("index", leg);
    xml.Attribute("laptime", time);
  }
}

std::string StartText(DateTime start) {
  if (start < 0 || start >= kLongestTime) return FormatDateTime(start, "hh:nn:ss");
  std::string text;
  AppendExactTime(text, start);
  return text;
}

void WriteRunner(XmlWriter& xml, const clsLapData& lap, KrLapFileSaveModeCosnt mode) {
  const Element runner(xml, "runner");
  xml.Attribute("name", lap.RunnerName);
  WriteIfSet(xml, "id", lap.ID);
  WriteIfSet(xml, "ecard", lap.Ecard);
  WriteIfSet(xml, "seed", lap.Seed);
  WriteIfSet(xml, "club", lap.ClubName);
  const DateTime start = lap.StartTime()->Value();
  if (start != 0) xml.Attribute("start", StartText(start));
  WriteIfSet(xml, "result", lap.Result());
  WriteIfSet(xml, "rank", lap.Rank);
  WriteIfSet(xml, "sex", lap.Sex);
  WriteIfSet(xml, "competitor-id", lap.CompetitorId);
  WriteIfSet(xml, "status", std::string(RunnerStatusName(lap.Status)));
  WriteIfSet(xml, "bib", lap.Bib);
  WriteIfSet(xml, "card", lap.ControlCard);
  WriteIfSet(xml, "given-name", lap.GivenName);
  WriteIfSet(xml, "family-name", lap.FamilyName);
  WriteIfSet(xml, "nationality", lap.Nationality);
  WriteIfSet(xml, "course", lap.CourseNum);
  if (mode == KR_SAVEMODE_FULL) {
    WriteIfSet(xml, "rankfix", lap.RankFix);
    WriteIfSet(xml, "age", lap.Age);
  }
  WriteLegs(xml, lap);
}

std::string FoldForComparison(std::string_view name) {
  return ToHalfWidth(LowerAscii(name), {.Symbols = false});
}

void WriteClass(XmlWriter& xml, const clsClassData& data, KrLapFileSaveModeCosnt mode) {
  const Element klass(xml, "class");
  xml.Attribute("name", data.ClassName());
  WriteIfSet(xml, "length", data.Length);
  WriteIfSet(xml, "climb", data.Climb);
  WriteIfSet(xml, "controls", data.ControlCount);
  WriteIfSet(xml, "course", data.CourseNum);
  WriteIfSet(xml, "cutoffrank", data.CutOffRank);
  if (FoldForComparison(data.FileName()) != FoldForComparison(data.ClassName())) {
    xml.Attribute("filename", data.FileName());
  }
  for (const auto& lap : ClassDataInternal::Runners(data)) WriteRunner(xml, *lap, mode);
}

void WriteCourse(XmlWriter& xml, const clsCourseData& data) {
  const Element course(xml, "course");
  xml.Attribute("number", data.CourseIndex());
  xml.Attribute("controls", data.ControlCount());
  const std::int32_t held = std::min(data.ControlCount(), clsCourseData::kMostControls);
  for (std::int32_t index = 1; index <= held; ++index) {
    const Element control(xml, "control");
    xml.Attribute("index", index);
    xml.Attribute("unit-number", data.ControlNum(index));
    if (data.HasCodeText(index)) xml.Attribute("code", data.ControlCodeText(index));
  }
}

void WriteRoot(XmlWriter& xml, const EventModel& model, KrLapFileSaveModeCosnt mode,
               DateTime file_date) {
  const Element root(xml, "keltrun");
  xml.Attribute("version", VersionText(false));
  xml.Attribute("filedate", FormatDateTime(file_date, kStamp));
  xml.Attribute("type", "application/x-keltrun2");
  WriteMeta(xml, *model.Meta);
  WriteEvent(xml, *model.Event);
  {
    const Element classes(xml, "classes");
    for (const auto& klass : model.Classes()) WriteClass(xml, *klass, mode);
  }
  const Element courses(xml, "courses");
  for (const auto& course : model.Courses()) WriteCourse(xml, *course);
}

}  // namespace

std::string WriteNativeLapFile(const EventModel& model, KrLapFileSaveModeCosnt mode,
                               DateTime file_date) {
  XmlWriter xml;
  WriteRoot(xml, model, mode, file_date);
  return std::move(xml).Take();
}

}  // namespace keltrun
