#include <cmath>
#include <unordered_map>
#include <vector>

#include "keltrun2/io/foreign/iof_elements.h"
#include "keltrun2/io/foreign/iof_writers.h"
#include "keltrun2/model/person_name.h"
#include "keltrun2/model/result_facts.h"
#include "keltrun2/text/numbers.h"

namespace keltrun {
namespace {

constexpr std::string_view kDatePattern = "yyyy-mm-dd";
constexpr std::string_view kTimeStart = "<Time timeFormat=\"MM:SS\">";

std::int64_t WholeSeconds(std::int64_t milliseconds) { return (milliseconds + 500) / 1000; }

// Minutes, also 60 and more, and seconds.
void AppendMinutes(std::string& out, std::int64_t milliseconds) {
  const std::int64_t seconds = WholeSeconds(milliseconds);
  AppendInteger(out, seconds / 60);
  out += ':';
  AppendTwoDigits(out, static_cast<int>(seconds % 60));
}

void AppendTimeElement(std::string& out, std::int64_t milliseconds) {
  out += kTimeStart;
  AppendMinutes(out, milliseconds);
  out += "</Time>";
}

void AppendDate(std::string& out, std::string_view date) {
  out += "<Date dateFormat=\"YYYY-MM-DD\">";
  out.append(date).append("</Date>");
}

void AppendClock(std::string& out, std::int64_t seconds) {
  out += "<Clock clockFormat=\"HH:MM:SS\">";
  AppendTwoDigits(out, static_cast<int>(seconds / 3600 % 24));
  out += ':';
  AppendTwoDigits(out, static_cast<int>(seconds / 60 % 60));
  out += ':';
  AppendTwoDigits(out, static_cast<int>(seconds % 60));
  out += "</Clock>";
}

// The words that programs know; the others of the format mean nothing to some of them.
std::string_view StatusWord(RunnerStatus status) {
  switch (status) {
    case RunnerStatus::kUnknown:
    case RunnerStatus::kOk:
    case RunnerStatus::kFinished:
      return "OK";
    case RunnerStatus::kMissingPunch:
      return "MisPunch";
    case RunnerStatus::kDisqualified:
      return "Disqualified";
    case RunnerStatus::kActive:
    case RunnerStatus::kDidNotFinish:
    case RunnerStatus::kSportingWithdrawal:
      return "DidNotFinish";
    case RunnerStatus::kOverTime:
      return "OverTime";
    case RunnerStatus::kNotCompeting:
      return "NotCompeting";
    case RunnerStatus::kInactive:
    case RunnerStatus::kMoved:
    case RunnerStatus::kMovedUp:
    case RunnerStatus::kDidNotStart:
    case RunnerStatus::kDidNotEnter:
    case RunnerStatus::kCancelled:
      break;
  }
  return "DidNotStart";
}

// The SplitTime elements of a course up to their times.
std::vector<std::string> SplitStarts(const CourseFacts& course) {
  std::vector<std::string> starts;
  for (const std::string& code : course.codes) {
    std::string element = "<SplitTime sequence=\"" + std::to_string(starts.size() + 1) + "\">";
    AppendElement(element, "ControlCode", code);
    starts.push_back(std::move(element));
  }
  return starts;
}

class Writer {
 public:
  Writer(std::string& out, const EventModel& model, const IofOptions& options)
      : out_(out), model_(model), options_(options), facts_(model) {}

  void WriteList() {
    AppendXmlDeclaration(out_, options_.encoding);
    out_ +=
        "<!DOCTYPE ResultList SYSTEM \"IOFdata.dtd\">\r\n"
        "<ResultList status=\"complete\"><IOFVersion version=\"2.0.3\"/>\r\n";
    WriteEvent();
    for (const auto& klass : model_.Classes()) WriteClass(*klass);
    if (options_.now > 0) {
      const IofElement modified(out_, "ModifyDate");
      AppendDate(out_, FormatDateTime(options_.now, kDatePattern));
      AppendClock(out_, WholeSeconds(ToMilliseconds(std::fmod(options_.now, 1.0))));
    }
    out_ += "</ResultList>\r\n";
  }

 private:
  void WriteEvent() {
    const clsEventData& event = *model_.Event;
    {
      const IofElement element(out_, "Event");
      out_ += "<EventId/>";
      AppendElement(out_, "Name", event.EventName);
      out_ += "<EventClassificationId/>";
      {
        const IofElement start(out_, "StartDate");
        AppendDate(out_, event.EventDate()->ToString(kDatePattern));
      }
      AppendElementIfSet(out_, "WebURL", event.OfficialSite);
    }
    out_ += "\r\n";
  }

  void WriteClass(const clsClassData& klass) {
    {
      const IofElement element(out_, "ClassResult");
      AppendElement(out_, "ClassShortName", klass.ClassName());
      out_ += "\r\n";
      for (const RunnerFacts& runner : facts_.RunnersOf(klass)) {
        WritePersonResult(runner);
        out_ += "\r\n";
      }
    }
    out_ += "\r\n";
  }

  void WritePersonResult(const RunnerFacts& runner) {
    const clsLapData& record = *runner.record;
    const IofElement element(out_, "PersonResult");
    WritePerson(record);
    {
      const IofElement club(out_, "Club");
      out_ += "<ClubId/>";
      AppendElement(out_, "ShortName", record.ClubName);
      out_ += "<CountryId value=\"other\"/>";
    }
    const IofElement result(out_, "Result");
    if (record.ID != 0) AppendElement(out_, "StartNumber", record.ID);
    AppendElementIfSet(out_, "BibNumber", record.Bib);
    AppendElementIfSet(out_, "CCardId", CardText(record));
    WriteTimes(runner);
    if (runner.place > 0) AppendElement(out_, "ResultPosition", runner.place);
    out_.append("<CompetitorStatus value=\"").append(StatusWord(runner.status)).append("\"/>");
    if (runner.course->length > 0) {
      out_ += "<CourseLength unit=\"m\">";
      AppendInteger(out_, runner.course->length);
      out_ += "</CourseLength>";
    }
    WriteSplits(runner);
  }

  void WritePerson(const clsLapData& record) {
    const PersonName parts = NameParts(record);
    AppendPersonTag(out_, record);
    {
      const IofElement name(out_, "PersonName");
      AppendElement(out_, "Family", parts.family.empty() ? kNoName : parts.family);
      AppendElement(out_, "Given", parts.given);
    }
    AppendElement(out_, "PersonId", record.CompetitorId);
    out_ += "</Person>";
  }

  void WriteTimes(const RunnerFacts& runner) {
    const bool has_time = runner.time != kNoMilliseconds;
    if (runner.start != kNoMilliseconds) {
      const IofElement start(out_, "StartTime");
      AppendClock(out_, WholeSeconds(runner.start));
    }
    if (runner.start != kNoMilliseconds && has_time) {
      const IofElement finish(out_, "FinishTime");
      // Some programs take the time from the clock, so it must give the same in whole seconds.
      AppendClock(out_, WholeSeconds(runner.start) + WholeSeconds(runner.time));
    }
    if (has_time) AppendTimeElement(out_, runner.time);
  }

  void WriteSplits(const RunnerFacts& runner) {
    const auto [found, added] = split_starts_.try_emplace(runner.course);
    if (added) found->second = SplitStarts(*runner.course);
    splits_.Find(runner);
    for (std::int32_t i = 0; i < splits_.ControlCount(); ++i) {
      out_ += found->second[static_cast<std::size_t>(i)];
      if (splits_[i] != kNoMilliseconds) AppendTimeElement(out_, splits_[i]);
      out_ += "</SplitTime>";
    }
  }

  std::string& out_;
  const EventModel& model_;
  const IofOptions& options_;
  ResultFacts facts_;
  SplitTimes splits_;
  std::unordered_map<const CourseFacts*, std::vector<std::string>> split_starts_;
};

}  // namespace

void AppendIofXml2(std::string& out, const EventModel& model, const IofOptions& options) {
  Writer(out, model, options).WriteList();
}

}  // namespace keltrun
