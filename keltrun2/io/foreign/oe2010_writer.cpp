#include <algorithm>
#include <array>

#include "keltrun2/io/foreign/iof_elements.h"
#include "keltrun2/io/foreign/table_cells.h"
#include "keltrun2/io/foreign/table_writers.h"
#include "keltrun2/model/person_name.h"
#include "keltrun2/text/cells.h"
#include "keltrun2/text/numbers.h"

namespace keltrun {
namespace {

// The head of the program's English version. Its columns after the 60th are those of the controls.
constexpr std::string_view kHead =
    "OE0016;Stno;XStno;Chipno;Database Id;Surname;First name;YB;S;Block;nc;Start;Finish;Time;"
    "Classifier;Credit -;Penalty +;Comment;Club no.;Cl.name;City;Nat;Location;Region;Cl. no.;Short;"
    "Long;Entry cl. No;Entry class (short);Entry class (long);Rank;Ranking points;Num1;Num2;Num3;"
    "Text1;Text2;Text3;Addr. surname;Addr. first name;Street;Line2;Zip;Addr. city;Phone;Mobile;Fax;"
    "EMail;Rented;Start fee;Paid;Team;Course no.;Course;km;m;Course controls;Place;Start punch;"
    "Finish punch;Control1;Punch1;Control2;Punch2;Control3;Punch3;Control4;Punch4;Control5;Punch5;"
    "Control6;Punch6;Control7;Punch7;Control8;Punch8;Control9;Punch9;Control10;Punch10;"
    "(may be more) ...;";

constexpr std::string_view kMissing = "-----";

// The columns that are written, in their order.
enum Column : std::int32_t {
  kStno = 1,
  kChipno = 3,
  kDatabaseId = 4,
  kSurname = 5,
  kFirstName = 6,
  kSex = 8,
  kNotCompeting = 10,
  kStart = 11,
  kFinish = 12,
  kTime = 13,
  kClassifier = 14,
  kCity = 20,  // of the club, which is its name
  kNation = 21,
  kClassNumber = 24,
  kClassShort = 25,
  kClassLong = 26,
  kCourseNumber = 52,
  kCourse = 53,
  kKilometers = 54,
  kMeters = 55,
  kCourseControls = 56,
  kPlace = 57,
  kStartPunch = 58,
  kFinishPunch = 59,
  kFirstControl = 60,
};

// 0 classified, 1 not started, 2 not finished, 3 missing punch, 4 disqualified, 5 over time.
int Classifier(RunnerStatus status) {
  switch (status) {
    case RunnerStatus::kUnknown:
    case RunnerStatus::kOk:
    case RunnerStatus::kFinished:
    case RunnerStatus::kNotCompeting:
      return 0;
    case RunnerStatus::kMissingPunch:
      return 3;
    case RunnerStatus::kDisqualified:
      return 4;
    case RunnerStatus::kActive:
    case RunnerStatus::kDidNotFinish:
    case RunnerStatus::kSportingWithdrawal:
      return 2;
    case RunnerStatus::kOverTime:
      return 5;
    default:
      return 1;
  }
}

class Writer {
 public:
  Writer(std::string& out, const EventModel& model) : out_(out), model_(model), facts_(model) {}

  void WriteEvent() {
    out_.append(kHead).append(kCrLf);
    for (const auto& klass : model_.Classes()) {
      ++class_number_;
      for (const RunnerFacts& runner : facts_.RunnersOf(*klass)) WriteRunner(*klass, runner);
    }
  }

 private:
  void WriteRunner(const clsClassData& klass, const RunnerFacts& runner) {
    column_ = 0;
    WritePerson(*runner.record);
    WriteTimes(runner);
    Text(kCity, runner.record->ClubName);
    Text(kNation, runner.record->Nationality);
    Number(kClassNumber, class_number_);
    Text(kClassShort, klass.ClassName());
    Text(kClassLong, klass.ClassName());
    WriteCourse(klass, *runner.course);
    if (runner.place > 0) Number(kPlace, runner.place);
    WriteClocks(kStartPunch, kFinishPunch, runner);
    WritePunches(runner);
    out_.append(";").append(kCrLf);
  }

  void WritePerson(const clsLapData& record) {
    const PersonName name = NameParts(record);
    Plain(kStno, BibText(record));
    Plain(kChipno, CardText(record));
    Plain(kDatabaseId, record.CompetitorId);
    Text(kSurname, name.family.empty() ? kNoName : name.family);
    Text(kFirstName, name.given);
    Text(kSex, SexLetter(record));
  }

  void WriteTimes(const RunnerFacts& runner) {
    Number(kNotCompeting, runner.status == RunnerStatus::kNotCompeting ? 1 : 0);
    WriteClocks(kStart, kFinish, runner);
    To(kTime);
    if (runner.time != kNoMilliseconds) {
      AppendTimeCell(out_, RoundedSeconds(runner.time), ':', false);
    } else {
      out_ += kMissing;
    }
    Number(kClassifier, Classifier(runner.status));
  }

  void WriteClocks(std::int32_t start, std::int32_t finish, const RunnerFacts& runner) {
    if (runner.start == kNoMilliseconds) return;
    constexpr std::int64_t kSecondsOfDay = 86'400;
    const std::int64_t clock = RoundedSeconds(runner.start);
    To(start);
    AppendTimeCell(out_, clock % kSecondsOfDay, ':', false);
    if (runner.time == kNoMilliseconds) return;
    To(finish);
    AppendTimeCell(out_, (clock + RoundedSeconds(runner.time)) % kSecondsOfDay, ':', false);
  }

  void WriteCourse(const clsClassData& klass, const CourseFacts& course) {
    if (course.number != 0) Number(kCourseNumber, course.number);
    Text(kCourse,
         course.number != 0 ? "Course " + std::to_string(course.number) : klass.ClassName());
    if (course.length > 0) {
      To(kKilometers);
      AppendThousandths(out_, course.length);
    }
    if (course.climb > 0) Number(kMeters, course.climb);
    Number(kCourseControls, course.ControlCount());
  }

  void WritePunches(const RunnerFacts& runner) {
    splits_.Find(runner);
    for (std::int32_t i = 0; i < splits_.ControlCount(); ++i) {
      To(kFirstControl + 2 * i);
      AppendWithout(out_, runner.course->codes[static_cast<std::size_t>(i)], ";\"");
      To(kFirstControl + 2 * i + 1);
      if (splits_[i] == kNoMilliseconds) {
        out_ += kMissing;
      } else {
        AppendTimeCell(out_, RoundedSeconds(splits_[i]), ':', false);
      }
    }
  }

  // Writes the delimiters up to a column.
  void To(std::int32_t column) {
    out_.append(static_cast<std::size_t>(column - column_), ';');
    column_ = column;
  }

  void Number(std::int32_t column, std::int64_t number) {
    To(column);
    AppendInteger(out_, number);
  }

  // A text that is a number as a rule.
  void Plain(std::int32_t column, std::string_view text) {
    if (text.empty()) return;
    To(column);
    AppendWithout(out_, text, ";\"");
  }

  void Text(std::int32_t column, std::string_view text) {
    if (text.empty()) return;
    To(column);
    out_ += '"';
    for (const char c : text) {
      if (c == '"') out_ += '"';
      out_ += static_cast<unsigned char>(c) < ' ' ? ' ' : c;
    }
    out_ += '"';
  }

  std::string& out_;
  const EventModel& model_;
  ResultFacts facts_;
  SplitTimes splits_;
  std::int32_t class_number_ = 0;
  std::int32_t column_ = 0;
};

}  // namespace

void AppendOe2010(std::string& out, const EventModel& model) { Writer(out, model).WriteEvent(); }

}  // namespace keltrun
