#include "keltrun2/io/foreign/exchange_losses.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "keltrun2/codec/xml.h"
#include "keltrun2/io/foreign/iof_elements.h"
#include "keltrun2/io/text_reading.h"
#include "keltrun2/model/lap_data_internal.h"
#include "keltrun2/model/result_facts.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/numbers.h"

namespace keltrun {
namespace {

// The forms, as bits of a set.
enum Form : std::uint32_t {
  kIof3 = 1,
  kIof2 = 2,
  kSplitsBrowser = 4,
  kWinSplits = 8,
  kOe2010 = 16,
  kIof = kIof3 | kIof2,
  kTimesOnly = kSplitsBrowser | kWinSplits,  // neither codes nor statuses nor numbers
  kSeconds = kIof2 | kTimesOnly | kOe2010,
  kAll = kIof | kTimesOnly | kOe2010,
};

struct TypeForm {
  KrLapFileTypeConst type;
  Form form;
};
constexpr auto kForms = std::to_array<TypeForm>({
    {KR_FILETYPE_IOF_XML_30_RESULT, kIof3},
    {KR_FILETYPE_IOF_XML_20_EXCHANGE, kIof2},
    {KR_FILETYPE_SPLITSBROWSER_CSV, kSplitsBrowser},
    {KR_FILETYPE_WINSPLITS_TEXT, kWinSplits},
    {KR_FILETYPE_OE_CSV, kOe2010},
});

const TypeForm* FindForm(KrLapFileTypeConst type) {
  const auto* const found = std::find_if(kForms.begin(), kForms.end(),
                                         [&](const auto& form) { return form.type == type; });
  return found == kForms.end() ? nullptr : found;
}

constexpr std::string_view kNoPlace = "not written, the format has no place for them";

// A runner of the event, as the rules below see it.
struct Runner {
  const clsLapData& record;
  const RunnerFacts& facts;
  const SplitTimes& splits;
  bool has_date;          // the event has
  std::int32_t controls;  // of the class
};

template <typename Has>
bool AnyLap(const clsLapData& record, Has has) {
  for (std::int32_t leg = 1; leg <= LapDataInternal::HeldLegs(record); ++leg) {
    if (has(LapDataInternal::Lap(record, leg))) return true;
  }
  return false;
}

bool HasFraction(std::int64_t milliseconds, std::int64_t unit) {
  return milliseconds > 1 && milliseconds % unit != 0;
}

template <std::int64_t unit>
bool HasLapFinerThan(const Runner& runner) {
  return AnyLap(runner.record, [](DateTime lap) { return HasFraction(ToMilliseconds(lap), unit); });
}

bool Started(const Runner& runner) { return runner.facts.status != RunnerStatus::kDidNotStart; }

struct Loss {
  std::uint32_t forms;
  std::string_view things;
  bool (*has)(const Runner& runner);
  std::string_view consequence = kNoPlace;
};

constexpr auto kLosses = std::to_array<Loss>({
    {kAll, "seeds", [](const Runner& r) { return !r.record.Seed.empty(); }},
    {kAll, "ages", [](const Runner& r) { return !r.record.Age.empty(); }},
    {kAll, "fixed ranks", [](const Runner& r) { return !r.record.RankFix.empty(); }},
    {kTimesOnly, "competitor identifiers",
     [](const Runner& r) { return !r.record.CompetitorId.empty(); }},
    {kTimesOnly | kIof2, "nationalities",
     [](const Runner& r) { return !r.record.Nationality.empty(); }},
    {kTimesOnly, "sexes", [](const Runner& r) { return !r.record.Sex.empty(); }},
    {kTimesOnly, "start numbers", [](const Runner& r) { return !BibText(r.record).empty(); }},
    {kTimesOnly, "card numbers", [](const Runner& r) { return !CardText(r.record).empty(); }},
    {kTimesOnly, "official ranks", [](const Runner& r) { return !r.record.Rank.empty(); }},
    {kIof | kOe2010, "runners who started without a known start time",
     [](const Runner& r) { return Started(r) && r.facts.start == kNoMilliseconds; },
     "written without one; some programs refuse their class or take them for not started"},
    {kTimesOnly, "runners without a start time",
     [](const Runner& r) { return r.facts.start == kNoMilliseconds; }, "shown at 0:00"},
    {kIof3, "start times",
     [](const Runner& r) { return r.facts.start != kNoMilliseconds && !r.has_date; },
     "written on 1970-01-01, the event has no date"},
    {kSplitsBrowser, "start times in seconds",
     [](const Runner& r) { return HasFraction(r.facts.start, 60'000); }, "cut to minutes"},
    {kSeconds, "runners with laps in fractions of a second", HasLapFinerThan<1000>,
     "rounded to whole seconds"},
    {kIof3, "runners with laps in fractions of a tenth of a second", HasLapFinerThan<100>,
     "rounded to tenths"},
    {kAll, "runners with legs that were skipped, have no data or are disqualified",
     [](const Runner& r) { return r.facts.time > 0 && r.splits.HasMissing(); },
     "written as missed controls; the format does not say why"},
    {kSplitsBrowser, "runners with legs of 0 seconds",
     [](const Runner& r) {
       return AnyLap(r.record, [](DateTime lap) { return ToMilliseconds(lap) == 1; });
     },
     "written as 0:01, the next leg is a second shorter"},
    {kTimesOnly, "runners who are not classified",
     [](const Runner& r) { return !r.facts.TimeCounts(); },
     "the format has no statuses; whoever has all times is written without one at the finish"},
    {kSplitsBrowser, "runners who are classified without a time at every control",
     [](const Runner& r) {
       return r.facts.TimeCounts() && r.facts.time > 0 && r.splits.HasMissing();
     },
     "the format has no statuses, so programs take them for mispunched"},
    {kTimesOnly, "runners outside the competition",
     [](const Runner& r) { return r.facts.status == RunnerStatus::kNotCompeting; },
     "the format does not say so, they have places"},
    {kIof2 | kOe2010, "statuses",
     [](const Runner& r) {
       constexpr std::array kOthers = {
           RunnerStatus::kFinished,           RunnerStatus::kActive,   RunnerStatus::kInactive,
           RunnerStatus::kSportingWithdrawal, RunnerStatus::kMoved,    RunnerStatus::kMovedUp,
           RunnerStatus::kDidNotEnter,        RunnerStatus::kCancelled};
       return std::find(kOthers.begin(), kOthers.end(), r.facts.status) != kOthers.end();
     },
     "written as the nearest one that programs know"},
    {kAll, "runners with more legs than their course has",
     [](const Runner& r) {
       return LapDataInternal::HeldLegs(r.record) > r.facts.course->ControlCount() + 1;
     },
     "the legs after the finish are not written"},
    {kSplitsBrowser, "runners on a course with another number of controls than that of their class",
     [](const Runner& r) { return r.facts.course->ControlCount() != r.controls; },
     "written in classes of their own"},
    {kWinSplits, "runners on courses of their own",
     [](const Runner& r) { return r.facts.course->ControlCount() != r.controls; },
     "have another number of times than their class"},
    {kSplitsBrowser, "names and clubs with commas or colons",
     [](const Runner& r) {
       return r.record.RunnerName.find(':') != std::string::npos ||
              r.record.ClubName.find_first_of(",:") != std::string::npos;
     },
     "written with blanks instead"},
    {kAll, "runners without a name",
     [](const Runner& r) { return TrimSpaces(r.record.RunnerName).empty(); }, "written as \"?\""},
});

// Looks at every runner once and counts.
class Finder {
 public:
  Finder(const EventModel& model, Form form, Charset charset)
      : model_(model), form_(form), charset_(charset), facts_(model) {}

  std::vector<LoadRemark> Find() && {
    for (const auto& klass : model_.Classes()) SeeClass(*klass);
    LoseEvent();
    for (std::size_t i = 0; i < kLosses.size(); ++i) {
      if (counts_[i] == 0) continue;
      Lose(kLosses[i].things, "",
           std::to_string(counts_[i]) + ", " + std::string(kLosses[i].consequence));
    }
    LoseTexts();
    return remarks_.Take();
  }

 private:
  void Lose(std::string_view subject, std::string_view cell, std::string_view consequence) {
    remarks_.Add(RemarkSeverity::kWarning, 0, 0, subject, cell, consequence);
  }

  void SeeClass(const clsClassData& klass) {
    const auto runners = facts_.RunnersOf(klass);
    const CourseFacts& course = facts_.CourseOf(klass);
    const bool has_date = model_.Event->EventDate()->Value() != 0;
    bool has_time = false;
    SeeText(klass.ClassName());
    for (const RunnerFacts& runner : runners) {
      splits_.Find(runner);
      has_time = has_time || runner.time > 0 || splits_.HasAny();
      SeeText(runner.record->RunnerName);
      SeeText(runner.record->ClubName);
      const Runner seen = {*runner.record, runner, splits_, has_date, course.ControlCount()};
      for (std::size_t i = 0; i < kLosses.size(); ++i) {
        if ((kLosses[i].forms & form_) != 0 && kLosses[i].has(seen)) ++counts_[i];
      }
    }
    LoseClass(klass, course, runners.empty(), has_time);
  }

  void LoseClass(const clsClassData& klass, const CourseFacts& course, bool is_empty,
                 bool has_time) {
    if (klass.CutOffRank != 0) ++cut_off_ranks_;
    if (course.ControlCount() > 0) ++classes_with_controls_;
    if (klass.Length != 0 || klass.Climb != 0) ++classes_with_length_;
    if (form_ == kSplitsBrowser && !has_time) {
      Lose("class", klass.ClassName(), "nobody has a time, not written");
    }
    if (form_ == kOe2010 && is_empty) {
      Lose("class", klass.ClassName(), "has no runners, not written");
    }
    if ((form_ & (kIof | kOe2010)) != 0 && course.has_unknown_codes) {
      Lose("class", klass.ClassName(),
           "control codes that are not known are written as the numbers of the controls");
    }
    if (form_ == kSplitsBrowser && klass.ClassName().find_first_of(",:") != std::string::npos) {
      Lose("class", klass.ClassName(), "commas and colons are written as blanks");
    }
  }

  void LoseEvent() {
    const clsEventData& event = *model_.Event;
    const clsMetaData& meta = *model_.Meta;
    if (!meta.CreateApplication.empty() || !meta.LastUpdateApplication.empty()) {
      Lose("programs and users that made and changed the file", "", kNoPlace);
    }
    if (!event.Terrain.empty() || !event.Memo.empty() || !event.FileName.empty()) {
      Lose("terrain, memo and file name of the event", "", kNoPlace);
    }
    if ((form_ & (kSplitsBrowser | kOe2010)) != 0) {
      Lose("name, date and site of the event", "", kNoPlace);
    }
    if (form_ == kWinSplits && !event.OfficialSite.empty()) {
      Lose("site of the event", "", kNoPlace);
    }
    Count(cut_off_ranks_, "cut-off ranks", kNoPlace);
    if ((form_ & kTimesOnly) == 0) return;
    Count(classes_with_controls_, "classes with control codes", kNoPlace);
    Count(classes_with_length_, "classes with a length or climb", kNoPlace);
  }

  void Count(std::ptrdiff_t count, std::string_view things, std::string_view consequence) {
    if (count > 0) Lose(things, "", std::to_string(count) + ", " + std::string(consequence));
  }

  void SeeText(const std::string& text) {
    if (IsWritten(text)) return;
    if (lost_texts_++ == 0) first_lost_text_ = text;
  }

  // In XML, references stand for characters that a charset does not have.
  bool IsWritten(std::string_view text) const {
    if ((form_ & kIof) != 0) return AllowedInXml(text) == text;
    if (charset_ == Charset::kUtf8) return true;
    std::string bytes;
    AppendEncoded(bytes, text, charset_, MissingCharacter::kQuestionMark);
    return Decode(bytes, charset_).Text == text;
  }

  void LoseTexts() {
    if (lost_texts_ == 0) return;
    const std::string more =
        lost_texts_ > 1 ? " (and " + std::to_string(lost_texts_ - 1) + " more)" : "";
    Lose("text", first_lost_text_,
         ((form_ & kIof) != 0 ? "has characters that XML does not allow, left out"
                              : "has characters that the charset does not have, written as \"?\"") +
             more);
  }

  const EventModel& model_;
  const Form form_;
  const Charset charset_;
  ResultFacts facts_;
  SplitTimes splits_;
  RemarkList remarks_;
  std::array<std::ptrdiff_t, kLosses.size()> counts_{};
  std::ptrdiff_t cut_off_ranks_ = 0;
  std::ptrdiff_t classes_with_controls_ = 0;
  std::ptrdiff_t classes_with_length_ = 0;
  std::ptrdiff_t lost_texts_ = 0;
  std::string first_lost_text_;
};

}  // namespace

bool IsExchangeType(KrLapFileTypeConst type) { return FindForm(type) != nullptr; }

std::vector<LoadRemark> ExchangeLosses(const EventModel& model, KrLapFileTypeConst type,
                                       Charset charset) {
  const TypeForm* const form = FindForm(type);
  if (form == nullptr) return {};
  return Finder(model, form->form, charset).Find();
}

}  // namespace keltrun
