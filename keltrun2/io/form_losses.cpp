#include "keltrun2/io/form_losses.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>

#include "keltrun2/codec/encodings.h"
#include "keltrun2/codec/xml.h"
#include "keltrun2/io/foreign/exchange_losses.h"
#include "keltrun2/io/text_reading.h"
#include "keltrun2/model/class_data_internal.h"
#include "keltrun2/model/lap_data_internal.h"
#include "keltrun2/model/time_text.h"
#include "keltrun2/text/cells.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/numbers.h"
#include "keltrun2/text/width.h"

namespace keltrun {
namespace {

constexpr std::string_view kNoPlace = "not written, the format has no place for them";

// Something about a runner that a type of file does not hold.
struct RunnerLoss {
  std::string_view things;
  bool (*has)(const clsLapData& runner);
  std::string_view consequence = kNoPlace;
};

template <typename Has>
bool AnyLap(const clsLapData& runner, Has has) {
  for (std::int32_t leg = 1; leg <= LapDataInternal::HeldLegs(runner); ++leg) {
    if (has(LapDataInternal::Lap(runner, leg))) return true;
  }
  return false;
}

bool HasFraction(DateTime time) {
  return time > 0 && time < kLongestTime && std::llround(time * kMillisecondsPerDay) % 1000 != 0;
}

constexpr RunnerLoss kAge = {"ages", [](const clsLapData& r) { return !r.Age.empty(); }};
constexpr RunnerLoss kCompetitor = {"competitor identifiers",
                                    [](const clsLapData& r) { return !r.CompetitorId.empty(); }};
constexpr RunnerLoss kFixedRank = {"fixed ranks",
                                   [](const clsLapData& r) { return !r.RankFix.empty(); }};
constexpr RunnerLoss kCard = {"card numbers", [](const clsLapData& r) { return r.Ecard != 0; }};
constexpr RunnerLoss kSeed = {"seeds", [](const clsLapData& r) { return !r.Seed.empty(); }};
constexpr RunnerLoss kFraction = {"runners with laps in fractions of a second",
                                  [](const clsLapData& r) { return AnyLap(r, HasFraction); },
                                  "rounded to whole seconds"};
// Where laps are written in whole seconds, the shortest ones are no data for the next reader.
constexpr RunnerLoss kLostLap = {"runners with laps under half a second",
                                 [](const clsLapData& r) { return AnyLap(r, RoundsToNothing); },
                                 "written as legs without data"};
constexpr RunnerLoss kRoundedLap = {
    "runners with laps in fractions of a second",
    [](const clsLapData& r) {
      return AnyLap(r, [](DateTime lap) { return HasFraction(lap) && !RoundsToNothing(lap); });
    },
    "rounded to whole seconds"};
constexpr RunnerLoss kStart = {"start times in fractions of a second or of 24 hours and more",
                               [](const clsLapData& r) {
                                 return r.StartTime()->Value() >= 1 ||
                                        HasFraction(r.StartTime()->Value());
                               },
                               "written as a time of day in whole seconds"};
constexpr RunnerLoss kDisqualifiedLegs = {
    "runners with disqualified legs",
    [](const clsLapData& r) { return AnyLap(r, [](DateTime lap) { return lap == kTimeDisq; }); },
    "written as legs without data"};
constexpr RunnerLoss kUntimedLegs = {
    "runners with legs that were skipped, have no data or are disqualified",
    [](const clsLapData& r) { return AnyLap(r, [](DateTime lap) { return !(lap > 0); }); },
    "the format does not say which"};
constexpr RunnerLoss kStatus = {"results other than times and DNS",
                                [](const clsLapData& r) {
                                  return r.Result() != "DNS" &&
                                         r.Result().find(':') == std::string::npos;
                                },
                                "all written as Disqualified"};
constexpr RunnerLoss kWordRank = {
    "ranks that are not numbers",
    [](const clsLapData& r) { return !r.Rank.empty() && !NumericValue(r.Rank); },
    "all written as NotCompeting"};
constexpr RunnerLoss kLongName = {
    "names of more than two parts",
    [](const clsLapData& r) {
      constexpr std::string_view kSeparators = " ,";
      const std::string parts =
          ToHalfWidth(r.RunnerName, {.Letters = false, .Digits = false, .Symbols = false});
      const std::size_t second = parts.find_first_of(kSeparators);
      return second != std::string::npos &&
             parts.find_first_of(kSeparators, second + 1) != std::string::npos;
    },
    "only the first two parts are written"};

constexpr RunnerLoss kNativeLosses[] = {kRoundedLap};
constexpr RunnerLoss kKeltrun1Losses[] = {
    kCard, kCompetitor, kAge, kFixedRank, kDisqualifiedLegs, kLostLap, kRoundedLap, kStart};
constexpr RunnerLoss kIofLosses[] = {kSeed,        kCompetitor, kAge,      kFixedRank, kStatus,
                                     kUntimedLegs, kWordRank,   kLongName, kFraction,  kStart};

using Runners = std::vector<const clsLapData*>;

// The remarks for one event and one type of file.
class Losses {
 public:
  void Lose(std::string_view subject, std::string_view cell, std::string_view consequence) {
    remarks_.Add(RemarkSeverity::kWarning, 0, 0, subject, cell, consequence);
  }
  // "things: 3, consequence", unless there are none.
  void Count(std::ptrdiff_t count, std::string_view things, std::string_view consequence) {
    if (count > 0) Lose(things, "", std::to_string(count) + ", " + std::string(consequence));
  }
  template <std::size_t N>
  void CountRunners(const Runners& runners, const RunnerLoss (&losses)[N]) {
    for (const RunnerLoss& loss : losses) {
      const auto has = [&](const clsLapData* runner) { return loss.has(*runner); };
      Count(std::count_if(runners.begin(), runners.end(), has), loss.things, loss.consequence);
    }
  }
  std::vector<LoadRemark> Take() { return remarks_.Take(); }

 private:
  RemarkList remarks_;
};

// The runners of a class that are written. The others are lost.
Runners WrittenRunners(const clsClassData& klass, bool (*is_written)(const clsLapData&),
                       std::string_view things, Losses& losses) {
  Runners written;
  for (const auto& runner : ClassDataInternal::Runners(klass)) {
    if (is_written(*runner)) written.push_back(runner.get());
  }
  const std::size_t left_out = ClassDataInternal::Runners(klass).size() - written.size();
  if (left_out > 0) {
    losses.Lose("class", klass.ClassName(),
                std::string(things) + ": " + std::to_string(left_out) + ", not written");
  }
  return written;
}

void LoseHeader(const EventModel& model, Losses& losses) {
  const clsMetaData& meta = *model.Meta;
  if (!meta.CreateApplication.empty() || !meta.LastUpdateApplication.empty()) {
    losses.Lose("programs and users that made and changed the file", "", kNoPlace);
  }
  const auto& classes = model.Classes();
  const auto count = [&](bool (*has)(const std::shared_ptr<clsClassData>& klass)) {
    return std::count_if(classes.begin(), classes.end(), has);
  };
  losses.Count(count([](const auto& klass) { return klass->CutOffRank != 0; }), "cut-off ranks",
               kNoPlace);
}

// The texts of an event and of the runners that are written.
template <typename Visit>
void ForEachText(const EventModel& model, const Runners& runners, Visit visit) {
  const clsEventData& event = *model.Event;
  for (const std::string& text :
       {event.EventName, event.Terrain, event.Memo, event.OfficialSite, event.FileName}) {
    visit(text);
  }
  for (const auto& klass : model.Classes()) visit(klass->ClassName());
  for (const clsLapData* r : runners) {
    for (const std::string* text :
         {&r->RunnerName, &r->ClubName, &r->Seed, &r->Sex, &r->Rank, &r->Result()}) {
      visit(*text);
    }
  }
}

void LoseTexts(const EventModel& model, const Runners& runners,
               std::string (*as_written)(std::string_view text), std::string_view what,
               Losses& losses) {
  std::ptrdiff_t count = 0;
  std::string first;
  ForEachText(model, runners, [&](const std::string& text) {
    if (as_written(text) == text) return;
    if (count++ == 0) first = text;
  });
  if (count == 0) return;
  losses.Lose(
      "text", first,
      std::string(what) + (count > 1 ? " (and " + std::to_string(count - 1) + " more)" : ""));
}

// --- the native format ---

void LoseInNative(const EventModel& model, Losses& losses) {
  Runners all;
  for (const auto& klass : model.Classes()) {
    for (const auto& runner : ClassDataInternal::Runners(*klass)) all.push_back(runner.get());
  }
  losses.CountRunners(all, kNativeLosses);
}

// --- the previous generation ---

std::string AsCell(std::string_view text) {
  std::string out;
  AppendCell(out, text);
  return out;
}

void LoseKeltrun1Class(const clsClassData& klass, bool has_runners, Losses& losses) {
  if (klass.ControlCount != 0) return;
  if (!has_runners) {
    losses.Lose("class", klass.ClassName(),
                "has neither controls nor runners with legs, not written");
  } else if (klass.Length != 0 || klass.Climb != 0 || klass.CourseNum != 0) {
    losses.Lose("class", klass.ClassName(),
                "has no number of controls, its length, climb and course are not written");
  }
}

// Classes whose names are written in the same way become one class when the file is read.
void LoseEqualNames(const EventModel& model, Losses& losses) {
  std::unordered_map<std::string, std::string_view> names;
  for (const auto& klass : model.Classes()) {
    const std::string written = ThroughShiftJis(AsCell(klass->ClassName()));
    const auto [first, is_new] = names.try_emplace(FoldCase(written), klass->ClassName());
    if (is_new) continue;
    losses.Lose("class", klass->ClassName(),
                "is written as \"" + written + "\" like the class \"" + std::string(first->second) +
                    "\", they will be read as one");
  }
}

void LoseInKeltrun1(const EventModel& model, bool is_unicode, Losses& losses) {
  Runners written;
  for (const auto& klass : model.Classes()) {
    const Runners runners = WrittenRunners(
        *klass, [](const clsLapData& r) { return r.LegCount() != 0; }, "runners without legs",
        losses);
    LoseKeltrun1Class(*klass, !runners.empty(), losses);
    written.insert(written.end(), runners.begin(), runners.end());
  }
  losses.Count(model.CourseCount(), "courses with their controls", kNoPlace);
  losses.CountRunners(written, kKeltrun1Losses);
  LoseHeader(model, losses);
  if (!is_unicode) {
    LoseTexts(model, written, ThroughShiftJis,
              "has characters that Shift-JIS does not have, written as \"?\"", losses);
  }
  LoseTexts(model, written, AsCell, "has commas or line breaks, written as other characters",
            losses);
  LoseEqualNames(model, losses);
}

// --- the IOF result list ---

// The first class of each course. The length that is written for the course is that of this class.
using FirstClasses = std::unordered_map<std::int32_t, const clsClassData*>;

void LoseIofClass(const EventModel& model, const clsClassData& klass, bool has_runners,
                  const FirstClasses& first_classes, Losses& losses) {
  if (klass.Length == 0 && klass.Climb == 0) return;
  const bool has_course = klass.CourseNum != 0 && model.CourseByNumber(klass.CourseNum) != nullptr;
  const clsClassData& first = *first_classes.at(klass.CourseNum);
  if (has_course && has_runners && klass.Length == first.Length && klass.Climb == first.Climb) {
    return;
  }
  losses.Lose("class", klass.ClassName(),
              "its length and climb are not written, only those of courses are");
}

void LoseInIof(const EventModel& model, Losses& losses) {
  Runners written;
  FirstClasses first_classes;
  std::set<std::int32_t> courses;
  for (const auto& klass : model.Classes()) first_classes.emplace(klass->CourseNum, klass.get());
  for (const auto& klass : model.Classes()) {
    const Runners runners = WrittenRunners(
        *klass, [](const clsLapData& r) { return !r.Result().empty(); }, "runners without a result",
        losses);
    LoseIofClass(model, *klass, !runners.empty(), first_classes, losses);
    if (!runners.empty()) courses.insert(klass->CourseNum);
    written.insert(written.end(), runners.begin(), runners.end());
  }
  for (const auto& course : model.Courses()) {
    if (course->CourseIndex() != 0 && courses.contains(course->CourseIndex())) continue;
    losses.Lose("course", std::to_string(course->CourseIndex()),
                "no class with results runs it, not written");
  }
  losses.CountRunners(written, kIofLosses);
  LoseHeader(model, losses);
  const clsEventData& event = *model.Event;
  if (!event.Terrain.empty() || !event.Memo.empty() || !event.FileName.empty()) {
    losses.Lose("terrain, memo and file name of the event", "", kNoPlace);
  }
  LoseTexts(model, written, AllowedInXml, "has characters that XML does not allow, left out",
            losses);
}

}  // namespace

std::vector<LoadRemark> FormLosses(const EventModel& model, KrLapFileTypeConst type,
                                   const std::optional<TextEncoding>& encoding) {
  if (IsExchangeType(type)) {
    return ExchangeLosses(model, type, encoding.value_or(TextEncoding{}).charset);
  }
  Losses losses;
  const bool is_unicode = encoding && encoding->charset == Charset::kUtf8;
  if (type == KR_FILETYPE_KELTRUN2) LoseInNative(model, losses);
  if (type == KR_FILETYPE_KELTRUN1) LoseInKeltrun1(model, is_unicode, losses);
  if (type == KR_FILETYPE_IOF_XML_20_RESULT) LoseInIof(model, losses);
  return losses.Take();
}

}  // namespace keltrun
