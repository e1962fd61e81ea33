#include "keltrun2/analysis/segment_sets.h"

#include <algorithm>
#include <array>
#include <compare>
#include <cstddef>
#include <cstdio>
#include <map>
#include <string>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace keltrun {
namespace {

constexpr std::size_t kShortestRun = 3;
constexpr std::size_t kMostCodes = clsCourseData::kMostControls + 2;  // with start and finish

using Codes = std::vector<std::int32_t>;

// A position in a course or in a group of courses.
struct Place {
  std::size_t course;
  std::size_t position;

  friend auto operator<=>(const Place&, const Place&) = default;
};

// The courses that visit the same codes: what is found for one holds for all of them.
struct Group {
  Codes codes;                       // start, controls, finish
  std::vector<std::size_t> members;  // positions in the course list, ascending
};

// Two places of groups from which the same codes follow.
struct Match {
  Place from;
  Place to;

  friend auto operator<=>(const Match&, const Match&) = default;
};

// A run of codes that courses share.
struct Run {
  Codes codes;
  std::vector<Match> matches;  // between groups; each stands for all pairs of their members
  std::vector<Place> places;   // where courses have it, in the order in which they are found
};

Codes CodesOf(const clsCourseData& course) {
  const std::int32_t controls = std::clamp(course.ControlCount(), 0, clsCourseData::kMostControls);
  Codes codes;
  for (std::int32_t i = 0; i <= controls; ++i) codes.push_back(course.ControlNum(i));
  codes.push_back(clsCourseData::kFinishCode);
  return codes;
}

std::vector<Group> GroupCourses(const EventModel& model) {
  std::vector<Group> groups;
  std::map<Codes, std::size_t> group_of_codes;
  for (std::size_t i = 0; i < model.Courses().size(); ++i) {
    Codes codes = CodesOf(*model.Courses()[i]);
    const auto [found, added] = group_of_codes.emplace(codes, groups.size());
    if (added) groups.push_back({std::move(codes), {}});
    groups[found->second].members.push_back(i);
  }
  return groups;
}

class RunFinder {
 public:
  explicit RunFinder(std::vector<Group> groups) : groups_(std::move(groups)) {}

  // All shared runs with their places, in the order in which walking through the courses finds
  // them: course, position, later course, position there.
  std::vector<Run> Find() {
    for (std::size_t a = 0; a < groups_.size(); ++a) {
      for (std::size_t b = a; b < groups_.size(); ++b) Compare(a, b);
      if (match_count_ > kMostMatches) return {};
    }
    std::sort(runs_.begin(), runs_.end(),
              [this](const Run& x, const Run& y) { return FirstFound(x) < FirstFound(y); });
    std::size_t places = 0;
    for (Run& run : runs_) {
      ListPlaces(run);
      places += run.places.size();
      if (places > kMostPlaces) return {};
    }
    return std::move(runs_);
  }

 private:
  // The number of codes that agree from each pair of positions on, found from the ends backwards.
  void Compare(std::size_t a, std::size_t b) {
    const Codes& first = groups_[a].codes;
    const Codes& second = groups_[b].codes;
    std::vector<std::size_t> below(second.size() + 1, 0);
    std::vector<std::size_t> row(second.size() + 1, 0);
    for (std::size_t i = first.size(); i-- > 0;) {
      for (std::size_t j = second.size(); j-- > 0;) {
        row[j] = first[i] == second[j] ? below[j + 1] + 1 : 0;
        if (row[j] < kShortestRun) continue;
        AddMatch({a, i}, {b, j}, row[j]);
        if (a != b) AddMatch({b, j}, {a, i}, row[j]);
      }
      std::swap(row, below);
    }
  }

  // A match counts from a course to a later one.
  void AddMatch(Place from, Place to, std::size_t length) {
    if (groups_[to.course].members.back() <= groups_[from.course].members.front()) return;
    const Codes& codes = groups_[from.course].codes;
    const auto begin = codes.begin() + static_cast<std::ptrdiff_t>(from.position);
    Codes run(begin, begin + static_cast<std::ptrdiff_t>(length));
    const std::string key(reinterpret_cast<const char*>(run.data()),
                          run.size() * sizeof(run.front()));
    const auto [found, added] = run_of_codes_.emplace(key, runs_.size());
    if (added) runs_.push_back({std::move(run), {}, {}});
    runs_[found->second].matches.push_back({from, to});
    ++match_count_;
  }

  // The courses and positions at which a match is met first.
  std::tuple<std::size_t, std::size_t, std::size_t, std::size_t> FirstMet(
      const Match& match) const {
    const std::size_t course = groups_[match.from.course].members.front();
    const auto& others = groups_[match.to.course].members;
    const std::size_t other = *std::upper_bound(others.begin(), others.end(), course);
    return {course, match.from.position, other, match.to.position};
  }

  std::tuple<std::size_t, std::size_t, std::size_t, std::size_t> FirstFound(const Run& run) const {
    auto first = FirstMet(run.matches.front());
    for (const Match& match : run.matches) first = std::min(first, FirstMet(match));
    return first;
  }

  // Every course of a place lists itself; the first course of its group lists all later courses
  // that match as well, so that its equals find nothing new after it.
  void ListPlaces(Run& run) const {
    std::map<Place, std::vector<Place>> partners;  // of courses
    std::map<Place, std::vector<Place>> matched;   // of groups
    for (const Match& match : run.matches) matched[match.from].push_back(match.to);
    for (const auto& [from, targets] : matched) {
      const auto& members = groups_[from.course].members;
      std::size_t last = 0;
      for (const Place& to : targets) last = std::max(last, groups_[to.course].members.back());
      for (const std::size_t course : members) {
        if (course >= last) break;
        auto& list = partners[{course, from.position}];
        if (course == members.front()) list = LaterPlaces(targets, course);
      }
    }
    std::unordered_set<std::size_t> listed;
    const auto list = [&](const Place& place) {
      if (listed.insert(place.course * kMostCodes + place.position).second) {
        run.places.push_back(place);
      }
    };
    for (const auto& [place, later] : partners) {
      list(place);
      for (const Place& partner : later) list(partner);
    }
  }

  std::vector<Place> LaterPlaces(const std::vector<Place>& targets, std::size_t course) const {
    std::vector<Place> places;
    for (const Place& target : targets) {
      for (const std::size_t other : groups_[target.course].members) {
        if (other > course) places.push_back({other, target.position});
      }
    }
    std::sort(places.begin(), places.end());
    return places;
  }

  std::vector<Group> groups_;
  std::vector<Run> runs_;
  std::size_t match_count_ = 0;
  std::unordered_map<std::string, std::size_t> run_of_codes_;
};

// The places of a run in course order, counted from the first of them: runs of which one lies
// inside the other at every place have the same outline.
std::vector<Place> Outline(const Run& run) {
  std::vector<Place> outline = run.places;
  std::sort(outline.begin(), outline.end());
  const std::size_t origin = outline.front().position;
  for (Place& place : outline)
    place.position -= origin;  // wraps below 0, the same for equal shifts
  return outline;
}

std::size_t FirstPosition(const Run& run) {
  return std::min_element(run.places.begin(), run.places.end())->position;
}

// Whether the inner run, of the same outline, lies inside the outer one: at the place of its first
// occurrence among the outer codes.
bool LiesInside(const Run& inner, const Run& outer) {
  const auto found =
      std::search(outer.codes.begin(), outer.codes.end(), inner.codes.begin(), inner.codes.end());
  if (found == outer.codes.end()) return false;
  const auto offset = static_cast<std::size_t>(found - outer.codes.begin());
  return FirstPosition(inner) == FirstPosition(outer) + offset;
}

// Removes each run that lies inside one listed before it.
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

using ClassesByCourse = std::unordered_map<std::int32_t, std::vector<std::string>>;

std::shared_ptr<SegmentSet> MakeSegment(const Run& run, const EventModel& model,
                                        const ClassesByCourse& classes) {
  auto segment = std::make_shared<SegmentSet>();
  segment->ControlCount = static_cast<std::int32_t>(run.codes.size()) - 2;
  segment->SegmentName = NameOf(run.codes);
  segment->SegmentBinaryName = BinaryNameOf(run.codes);
  std::unordered_set<std::string> listed;
  for (const Place& place : run.places) {
    const std::int32_t course = model.Courses()[place.course]->CourseIndex();
    const std::string position = std::to_string(place.position);
    const std::string behind_name = ";" + position;
    segment->TargetCourseTable.push_back(std::to_string(course) + "\t" + position);
    const auto found = classes.find(course);
    if (found == classes.end()) continue;
    for (const std::string& name : found->second) {
      if (!listed.insert(name).second) continue;  // a class keeps its first entry
      segment->TargetClassList.push_back(name + behind_name);
    }
  }
  return segment;
}

}  // namespace

std::vector<std::shared_ptr<SegmentSet>> FindSegmentSets(const EventModel& model) {
  std::vector<Group> groups = GroupCourses(model);
  if (groups.size() > kMostCodeLists) return {};
  std::vector<Run> runs = RunFinder(std::move(groups)).Find();
  RemoveContained(runs);  // either of two runs may lie inside the other
  std::reverse(runs.begin(), runs.end());
  RemoveContained(runs);

  ClassesByCourse classes;
  for (const auto& klass : model.Classes()) {
    classes[klass->CourseNum].push_back(klass->ClassName());
  }
  std::vector<std::shared_ptr<SegmentSet>> segments;
  segments.reserve(runs.size());
  for (const Run& run : runs) segments.push_back(MakeSegment(run, model, classes));
  return segments;
}

}  // namespace keltrun
