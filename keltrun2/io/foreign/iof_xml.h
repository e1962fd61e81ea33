// What the readers of the two versions of IOF XML share.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/codec/xml.h"
#include "keltrun2/io/foreign/foreign_event.h"
#include "keltrun2/io/foreign/refusal.h"
#include "keltrun2/io/lap_records.h"
#include "keltrun2/io/text_reading.h"
#include "keltrun2/model/runner_status.h"
#include "keltrun2/text/datetime.h"

namespace keltrun {

/// What an IOF XML document is.
struct IofList {
  std::string root;                // the name of its root element, such as "ResultList"
  std::string version;             // "3.0", "2.0.3", "1.0"
  std::optional<Refusal> refusal;  // nullopt for a result list that is read

  bool IsVersion3() const { return version.starts_with('3'); }
  std::string Format() const { return "IOF XML " + version; }
};

/// The kind of an IOF XML document, from its root element and its version; nullopt for every other
/// text. The beginning of the text suffices.
std::optional<IofList> FindIofList(std::string_view text);

/// The point in time of xsd:dateTime, of a date, of a time of day, or of both in any order with a
/// blank between them. What is missing or unreadable is nullopt. The clock is as written, in the
/// time zone of the text.
struct IofMoment {
  std::optional<DateTime> date;
  std::optional<Milliseconds> clock;
  std::optional<Milliseconds> zone;  // that the text says, east of Greenwich
  bool is_utc = false;               // the zone is "Z"

  /// The date, with the clock if there is one.
  std::optional<DateTime> AsDateTime() const;
};
IofMoment ReadMoment(std::string_view text);

/// A time in seconds, with decimals after a point or comma, or in the notations of ForeignTime.
std::optional<Milliseconds> ReadSeconds(std::string_view text);

/// A status in the words of either version; nullopt for any other text.
std::optional<RunnerStatus> ReadIofStatus(std::string_view text);

/// Whether a word that the file uses stands for controls in any order.
bool SaysScore(std::string_view text);

/// A course without its controls; 0 for what the file does not say.
struct IofCourse {
  std::int32_t length = 0;  // meters
  std::int32_t climb = 0;   // meters
  std::int32_t controls = 0;
  std::int32_t race = 0;  // 0 when the file does not number it

  bool IsEmpty() const { return length == 0 && climb == 0 && controls == 0; }
};

/// A person as they run for a club.
struct IofPerson {
  std::string given, family, name, sex, nationality, id, club;

  bool HasName() const;
};

/// What remarks tell about the values of results.
struct IofValues {
  bool utc_clocks = false;
  std::size_t other_zones = 0;  // clocks
  std::size_t additional = 0;   // punches
  std::size_t bad_times = 0;
  std::size_t bad_statuses = 0;

  void Add(const IofValues& other);
};

/// The result of a person in one race.
struct IofResult {
  std::string bib, card, rank;
  std::optional<RunnerStatus> status;
  std::optional<Milliseconds> start, finish, time;
  std::optional<DateTime> start_date, finish_date;
  std::vector<Punch> punches;
  IofCourse course;
  std::int32_t leg = 0;  // of a relay, from 1
  IofValues values;

  /// Whether the person took part: a time or a punch is known, or how the race ended.
  bool IsOfStarter() const;
};

/// A person and their result in the race that is read.
struct IofEntry {
  IofPerson person;
  IofResult result;
  bool has_result = false;   // in the race that is read
  std::int32_t results = 0;  // in all races
  std::int32_t line = 0;
};

/// A deque gives each entry's memory back as soon as it is a runner of the event.
using IofEntries = std::deque<IofEntry>;

/// The results of a class.
struct IofClass {
  std::string name, short_name, id;
  std::vector<IofCourse> courses;      // one for each race, or for each course of the class
  std::vector<IofCourse> leg_courses;  // of a relay, for each leg
  IofEntries entries;
  bool is_score = false;  // controls in any order
  std::int32_t line = 0;
};

/// The races of a file, and the one that is read. While a file is read that one is the race that
/// was asked for, or else the first one that occurs.
class IofRaces {
 public:
  explicit IofRaces(std::int32_t asked_for) : read_(asked_for) {}

  /// The number of a race that has an identifier: a small number itself, otherwise the place in the
  /// order in which the identifiers occur.
  std::int32_t NumberOf(std::string_view id);
  /// Whether the results of a race are the ones to read. Every result of the file is asked for.
  bool Reads(std::int32_t race);
  void CountStarter(std::int32_t race) { ++starters_[race]; }

  std::int32_t Read() const { return read_; }
  /// The first race in which anybody started, once the whole file has been read.
  std::int32_t FirstWithStarters() const;
  bool Has(std::int32_t race) const { return starters_.contains(race); }
  bool IsEmpty() const { return starters_.empty(); }
  std::size_t Count() const { return starters_.size(); }
  /// "1, 2, 4"; the first ones when there are many.
  std::string Numbers() const;

 private:
  std::int32_t read_;
  std::map<std::int32_t, std::size_t> starters_;
  std::map<std::string, std::int32_t, std::less<>> number_of_id_;
};

/// The event of the file. Dates are kept until the race is known that is read.
struct IofEvent {
  std::string site;
  bool has_web_site = false;  // `site` is that of the event, not a page for something else
  std::optional<DateTime> start, end, first_runner;
  std::map<std::int32_t, DateTime> races;

  void SetSite(std::string_view url, bool is_web_site);
  std::optional<DateTime> Date(std::int32_t race) const;
};

/// What remarks tell about the whole file.
struct IofNotes {
  bool changes_only = false;  // the file holds what changed since an earlier one
  bool score_event = false;
  bool has_teams = false;
  std::size_t score_classes = 0;
  std::size_t repeated = 0;     // results of a runner in one race
  std::size_t unnumbered = 0;   // runners with several results that have no race number
  std::size_t nameless = 0;     // runners
  std::size_t left_out = 0;     // results without a runner to whom they belong
  std::size_t own_courses = 0;  // runners with another length or climb than their class
  IofValues values;             // of the race that is read
  std::string bad_time, bad_status;
  std::int32_t bad_time_line = 0, bad_status_line = 0;
};

/// One pass through a document.
struct IofReading {
  IofReading(std::string_view text, std::int32_t asked_for) : races(asked_for) {
    open_error = xml.OpenText(text);
  }

  XmlReader xml;
  std::optional<XmlError> open_error;
  RemarkList remarks;
  ForeignEvent event{remarks};
  IofRaces races;
  IofEvent header;
  IofNotes notes;
  std::vector<std::string> prefixes;                    // of the elements of the list
  std::optional<Milliseconds> start_zone, finish_zone;  // of the first runner
  IofValues values;                                     // of the result that is being read
  std::size_t punches = 16;  // as many as the next result is likely to have
  std::size_t entries = 0;

  /// Texts of the open element, which is closed. What is not empty and cannot be read is counted.
  std::optional<Milliseconds> TimeText(std::string_view text);
  std::optional<RunnerStatus> StatusText(std::string_view text);
  void StartText(std::string_view text, IofResult& result);
  void FinishText(std::string_view text, IofResult& result);
  /// Whether the element opened last, which has this name, belongs to the list. Programs put
  /// elements of their own, which have another namespace, between those of the list, and these can
  /// have the same names.
  bool IsOfList(std::string_view name) const {
    const std::string_view prefix = xml.PrefixOf(name);
    return std::any_of(prefixes.begin(), prefixes.end(),
                       [&](const std::string& own) { return own == prefix; });
  }
  /// Takes the namespace of the root element, which is open, as that of the list.
  void TakeNamespace();
};

/// How a child of an element of type Target is read. What the function does not read is skipped.
template <typename Target>
struct IofRule {
  std::string_view element;
  void (*read)(IofReading& reading, Target& target);
};

/// Reads the children of the open element for which there are rules.
template <typename Target, typename Rules>
void ReadChildren(IofReading& reading, Target& target, const Rules& rules) {
  ForEachChild(reading.xml, [&] {
    for (const IofRule<Target>& rule : rules) {
      if (!reading.xml.IsNamed(rule.element)) continue;
      if (reading.IsOfList(rule.element)) rule.read(reading, target);
      return;
    }
  });
}

/// The attribute of the element opened last; empty when there is none.
std::string_view AttributeText(const XmlReader& xml, std::string_view name);

/// Sets a text that has not been set.
void SetOnce(std::string& target, std::string_view text);

/// The positive number at the start of a text, 0 if there is none.
std::int32_t ReadCount(std::string_view text);

/// The result that has been read, with the notes on its values.
IofResult TakeResult(IofReading& reading, IofResult&& result);

/// Stores a result of an entry, if it is that of the race that is read.
void StoreResult(IofReading& reading, IofEntry& entry, IofResult&& result, std::int32_t race);

/// Adds an entry, unless it is nobody, such as the leg of a relay that nobody ran, or only in other
/// races. Too many of them end the reading.
void AddEntry(IofReading& reading, IofEntries& entries, IofEntry&& entry);

/// Adds the entries of a team to a class: its name is the club of its runners.
void AddTeam(IofClass& klass, std::string_view team, std::string_view bib, IofEntries&& members);

/// Adds a class to the event. A relay has a class for each leg.
void AddClass(IofReading& reading, IofClass&& klass);

/// Reads a result list. `read_root` reads the children of the root element. If it turns out that
/// another race is the first one with results, the document is read again.
ReadResult ReadIofResultList(std::string_view text, const ForeignOptions& options,
                             void (*read_root)(IofReading& reading));

}  // namespace keltrun
