#include "keltrun2/analysis/segment_sets.h"

#include <algorithm>
#include <array>
#include <compare>
#include <cstddef>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "keltrun2/model/class_data_internal.h"

namespace keltrun {
namespace {

constexpr std::size_t kShortestRun = 3;
// Bytes of a class name in an entry of a list; a longer one counts as several entries.
constexpr std::size_t kUsualNameSize = 200;
constexpr std::size_t kLongestRun = clsCourseData::kMostControls + 2;  // with start and finish

using Codes = std::vector<std::int32_t>;

// A position in a course.
struct Place {
  std::uint32_t course;    // its index in the course list
  std::uint32_t position;  // 0 is the start

  friend auto operator<=>(const Place&, const Place&) = default;
};

// A run of codes that courses share.
struct Run {
  Codes codes;
  std::vector<Place> places;  // where it occurs, in the order in which the places are found
};

Codes CodesOf(const clsCourseData& course) {
  const std::int32_t controls = std::clamp(course.ControlCount(), 0, clsCourseData::kMostControls);
  Codes codes;
  for (std::int32_t i = 0; i <= controls; ++i) codes.push_back(course.ControlNum(i));
  codes.push_back(clsCourseData::kFinishCode);
  return codes;
}

using ClassesByCourse = std::unordered_map<std::int32_t, std::vector<const clsClassData*>>;

// Finds the runs by parting the places of all courses code by code: two places have the codes in
// common up to where they part. This takes as much work as reading each course from each of its
// positions, however many courses agree.
class RunFinder {
 public:
  RunFinder(const EventModel& model, const ClassesByCourse& classes) {
    for (const auto& course : model.Courses()) {
      codes_.push_back(CodesOf(*course));
      const auto found = classes.find(course->CourseIndex());
      entries_of_course_.push_back(1);
      if (found == classes.end()) continue;
      for (const clsClassData* const klass : found->second) {
        entries_of_course_.back() += 1 + klass->ClassName().size() / kUsualNameSize;
      }
    }
  }

  // All shared runs with their places, in the order of a walk through the courses: by course,
  // position, later course and position there.
  std::vector<Run> Find() {
    std::vector<Place> all;
    for (std::size_t course = 0; course < codes_.size(); ++course) {
      for (std::size_t position = 0; position < codes_[course].size(); ++position) {
        all.push_back({static_cast<std::uint32_t>(course), static_cast<std::uint32_t>(position)});
      }
    }
    Part(std::move(all), 0);
    std::sort(runs_.begin(), runs_.end(), [](const Run& x, const Run& y) {
      return std::tie(x.places[0], x.places[1]) < std::tie(y.places[0], y.places[1]);
    });
    return std::move(runs_);
  }

  // The length of the shortest runs that were kept. Shorter runs were left out because of the
  // limit.
  std::size_t FewestCodes() const { return fewest_codes_; }

 private:
  bool HasCode(const Place& place, std::size_t ahead) const {
    return place.position + ahead < codes_[place.course].size();
  }
  std::int32_t Code(const Place& place, std::size_t ahead) const {
    return codes_[place.course][place.position + ahead];
  }

  bool GoOnAlike(const std::vector<Place>& places, std::size_t length) const {
    return std::all_of(places.begin(), places.end(), [&](const Place& place) {
      return HasCode(place, length) && HasCode(places.front(), length) &&
             Code(place, length) == Code(places.front(), length);
    });
  }

  // Takes places in ascending order that have `length` codes in common and parts them by the next
  // code. A place where the course ends has no next code and is a branch of its own.
  void Part(std::vector<Place> places, std::size_t length) {
    if (places.empty() || places.front().course == places.back().course) return;
    while (GoOnAlike(places, length)) ++length;
    std::vector<std::vector<Place>> branches;
    std::vector<std::size_t> branch_of_place;
    std::unordered_map<std::int32_t, std::size_t> branch_of_code;
    for (const Place& place : places) {
      std::size_t branch = branches.size();
      if (HasCode(place, length)) {
        branch = branch_of_code.emplace(Code(place, length), branch).first->second;
      }
      if (branch == branches.size()) branches.emplace_back();
      if (HasCode(place, length)) branches[branch].push_back(place);
      branch_of_place.push_back(branch);
    }
    if (length >= fewest_codes_) AddRun(places, branch_of_place, length);
    places = {};  // the branches have them now
    for (auto& branch : branches) Part(std::move(branch), length + 1);
  }

  void AddRun(const std::vector<Place>& places, const std::vector<std::size_t>& branches,
              std::size_t length) {
    Run run{{}, ListPlaces(places, branches)};
    if (run.places.empty()) return;
    const Place& first = run.places.front();
    const auto begin = codes_[first.course].begin() + static_cast<std::ptrdiff_t>(first.position);
    run.codes.assign(begin, begin + static_cast<std::ptrdiff_t>(length));
    for (const Place& place : run.places) {
      entries_of_length_[length] += entries_of_course_[place.course];
      entries_ += entries_of_course_[place.course];
    }
    runs_.push_back(std::move(run));
    while (entries_ > kMostSegmentEntries) DropShortestRuns();
  }

  void DropShortestRuns() {
    std::erase_if(runs_, [this](const Run& run) { return run.codes.size() == fewest_codes_; });
    entries_ -= entries_of_length_[fewest_codes_];
    ++fewest_codes_;
  }

  // A place matches the places of later courses in other branches. The list has each place with a
  // match, followed by its matches.
  static std::vector<Place> ListPlaces(const std::vector<Place>& places,
                                       const std::vector<std::size_t>& branches) {
    const auto last_other =
        std::find_if(branches.rbegin(), branches.rend(),
                     [&](std::size_t branch) { return branch != branches.back(); });
    const auto has_match = [&](std::size_t i) {
      const std::uint32_t last =
          branches[i] != branches.back()
              ? places.back().course
              : places[static_cast<std::size_t>(branches.rend() - last_other) - 1].course;
      return last > places[i].course;
    };
    std::vector<Place> list;
    std::vector<bool> listed(places.size(), false);
    const auto add = [&](std::size_t i) {
      if (!listed[i]) list.push_back(places[i]);
      listed[i] = true;
    };
    // The matches of the first such place are all later places outside its branch. Those of the
    // first place of another branch are all later places in the first branch. No other place adds
    // any.
    std::vector<std::size_t> walked;
    for (std::size_t i = 0; i < places.size(); ++i) {
      if (!has_match(i)) continue;
      add(i);
      if (walked.size() == 2 || (walked.size() == 1 && walked[0] == branches[i])) continue;
      walked.push_back(branches[i]);
      for (std::size_t j = i + 1; j < places.size(); ++j) {
        if (places[j].course > places[i].course && branches[j] != branches[i]) add(j);
      }
    }
    return list;
  }

  std::vector<Codes> codes_;  // the codes of each course, start and finish included
  std::vector<std::size_t> entries_of_course_;  // for each place, in the lists of a segment
  std::vector<Run> runs_;
  std::size_t entries_ = 0;  // of all runs and, below, of the runs of each length
  std::array<std::size_t, kLongestRun + 1> entries_of_length_{};
  std::size_t fewest_codes_ = kShortestRun;
};

// The places of a run in course order, relative to the position of the first one. Two runs have the
// same outline if one of them lies inside the other at every place.
std::vector<Place> Outline(const Run& run) {
  std::vector<Place> outline = run.places;
  std::sort(outline.begin(), outline.end());
  const std::uint32_t origin = outline.front().position;
  for (Place& place : outline)
    place.position -= origin;  // wraps around below 0, in the same way for equal shifts
  return outline;
}

std::size_t FirstPosition(const Run& run) {
  return std::min_element(run.places.begin(), run.places.end())->position;
}

// Whether a run lies inside another one with the same outline. Its first occurrence among the codes
// of the outer run decides.
bool LiesInside(const Run& inner, const Run& outer) {
  const auto found =
      std::search(outer.codes.begin(), outer.codes.end(), inner.codes.begin(), inner.codes.end());
  if (found == outer.codes.end()) return false;
  const auto offset = static_cast<std::size_t>(found - outer.codes.begin());
  return FirstPosition(inner) == FirstPosition(outer) + offset;
}

// Removes each run that lies inside an earlier one of the list.
void RemoveContained(std::vector<Run>& runs) {
  std::map<std::vector<Place>, std::vector<std::size_t>> by_outline;
  for (std::size_t i = 0; i < runs.size(); ++i) by_outline[Outline(runs[i])].push_back(i);
  std::vector<bool> removed(runs.size(), false);
  for (const auto& [outline, same] : by_outline) {
    for (std::size_t x = 0; x < same.size(); ++x) {
      if (removed[same[x]]) continue;
      for (std::size_t y = x + 1; y < same.size(); ++y) {
        if (LiesInside(runs[same[y]], runs[same[x]])) removed[same[y]] = true;
      }
    }
  }
  std::vector<Run> kept;
  for (std::size_t i = 0; i < runs.size(); ++i) {
    if (!removed[i]) kept.push_back(std::move(runs[i]));
  }
  runs = std::move(kept);
}

void ReplaceAll(std::string& text, std::string_view from, std::string_view to) {
  for (std::size_t at = text.find(from); at != std::string::npos;
       at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
}

// The codes joined by "-", the start as "S" and the finish as "F".
std::string NameOf(const Codes& codes) {
  std::string framed = "-";
  for (const std::int32_t code : codes) framed += std::to_string(code) + "-";
  ReplaceAll(framed, "-0-", "-S-");
  ReplaceAll(framed, "-9999-", "-F-");
  return framed.substr(1, framed.size() - 2);
}

std::string BinaryNameOf(const Codes& codes) {
  std::string name;
  std::array<char, 16> digits;
  for (const std::int32_t code : codes) {
    std::snprintf(digits.data(), digits.size(), "%04d", code);
    name += digits.data();
  }
  return name;
}

std::shared_ptr<SegmentSet> MakeSegment(const Run& run, const EventModel& model,
                                        const ClassesByCourse& classes) {
  auto segment = std::make_shared<SegmentSet>();
  segment->ControlCount = static_cast<std::int32_t>(run.codes.size()) - 2;
  segment->SegmentName = NameOf(run.codes);
  segment->SegmentBinaryName = BinaryNameOf(run.codes);
  std::unordered_set<const clsClassData*> listed;
  for (const Place& place : run.places) {
    const std::int32_t course = model.Courses()[place.course]->CourseIndex();
    const std::string position = std::to_string(place.position);
    const std::string suffix = ";" + position;
    segment->TargetCourseTable.push_back(std::to_string(course) + "\t" + position);
    const auto found = classes.find(course);
    if (found == classes.end()) continue;
    for (const clsClassData* const klass : found->second) {
      if (!listed.insert(klass).second) continue;  // only the first entry of a class is kept
      segment->TargetClassList.push_back(klass->ClassName() + suffix);
    }
  }
  return segment;
}

}  // namespace

void MakeSegmentSets(EventModel& model) {
  ClassesByCourse classes;
  for (const auto& klass : model.Classes()) {
    for (const auto& [course, runners] : ClassDataInternal::RunnersOfCourses(*klass)) {
      classes[course].push_back(klass.get());
    }
  }
  RunFinder finder(model, classes);
  std::vector<Run> runs = finder.Find();
  RemoveContained(runs);  // either of two runs can lie inside the other
  std::reverse(runs.begin(), runs.end());
  RemoveContained(runs);

  model.Segments.clear();
  for (const Run& run : runs) model.Segments.push_back(MakeSegment(run, model, classes));
  model.SegmentRemark.clear();
  if (finder.FewestCodes() == kShortestRun) return;
  model.SegmentRemark =
      "segments: the courses share too many runs of controls; those of fewer than " +
      std::to_string(finder.FewestCodes()) + " codes, start and finish included, are left out";
}

}  // namespace keltrun
