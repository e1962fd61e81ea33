#include "keltrun2/io/foreign/course_lists.h"

#include <algorithm>
#include <map>
#include <utility>

namespace keltrun {
namespace {

// Comparing a runner with every list of a class, and every punch with every control, has limits
// that no real class comes near.
constexpr std::size_t kMostListsTried = 16;
constexpr std::size_t kMostComparisons = 10'000;

// A list that this many runners have is not the list of a single runner with another punch.
constexpr std::size_t kManyRunners = 3;

// A runner with more additional punches than this ran another course.
constexpr std::size_t kMostAdditional = 2;

CodeList CodesOf(const ForeignRunner& runner) {
  CodeList codes;
  codes.reserve(runner.punches.size());
  for (const Punch& punch : runner.punches) codes.push_back(punch.code);
  return codes;
}

bool TimeCounts(const ForeignRunner& runner) {
  if (!runner.status) return runner.time.has_value();
  return *runner.status == RunnerStatus::kOk || *runner.status == RunnerStatus::kFinished ||
         *runner.status == RunnerStatus::kNotCompeting || *runner.status == RunnerStatus::kOverTime;
}

std::size_t ExpectedControls(const ForeignClass& klass, const ForeignRunner& runner) {
  return static_cast<std::size_t>(runner.control_count > 0 ? runner.control_count
                                                           : klass.control_count);
}

bool IsSubsequence(const CodeList& part, const CodeList& whole) {
  auto next = part.begin();
  for (auto code = whole.begin(); code != whole.end() && next != part.end(); ++code) {
    if (*code == *next) ++next;
  }
  return next == part.end();
}

// A list of codes and how many runners have exactly it.
struct Candidate {
  CodeList codes;
  std::size_t runners = 0;
};

// The lists of the runners that `is_shown` selects, the most frequent first, else in the order of
// the file.
template <typename IsShown>
std::vector<Candidate> ListsOf(const std::vector<CodeList>& codes, IsShown is_shown) {
  std::vector<Candidate> lists;
  std::map<CodeList, std::size_t> index_of;
  for (std::size_t i = 0; i < codes.size(); ++i) {
    if (codes[i].empty() || !is_shown(i)) continue;
    const auto [found, added] = index_of.emplace(codes[i], lists.size());
    if (added) lists.push_back({codes[i]});
    ++lists[found->second].runners;
  }
  std::stable_sort(lists.begin(), lists.end(),
                   [](const auto& a, const auto& b) { return a.runners > b.runners; });
  return lists;
}

// Whether `list` is `course` with an additional punch or two.
bool HasAdditional(const CodeList& list, const CodeList& course) {
  return list.size() > course.size() && list.size() <= course.size() + kMostAdditional &&
         IsSubsequence(course, list);
}

// Removes the lists of single runners that are another one with an additional punch or two, or that
// of many with any controls more or less: one that was missed can have been forgiven.
void RemoveSlips(std::vector<Candidate>& lists) {
  const auto is_slip_of = [](const Candidate& list, const Candidate& other) {
    if (HasAdditional(list.codes, other.codes)) return true;
    return other.runners >= kManyRunners &&
           (IsSubsequence(other.codes, list.codes) || IsSubsequence(list.codes, other.codes));
  };
  const auto is_slip = [&](const Candidate& list) {
    if (list.runners > 1) return false;
    for (std::size_t i = 0; i < std::min(lists.size(), kMostListsTried); ++i) {
      if (&lists[i] != &list && is_slip_of(list, lists[i])) return true;
    }
    return false;
  };
  std::vector<Candidate> kept;
  for (const Candidate& list : lists) {
    if (!is_slip(list)) kept.push_back(list);
  }
  lists = std::move(kept);
}

std::size_t RunnersOf(const std::vector<Candidate>& lists) {
  std::size_t runners = 0;
  for (const Candidate& list : lists) runners += list.runners;
  return runners;
}

std::vector<Candidate> LongestList(std::vector<Candidate> lists) {
  const auto longest = std::max_element(
      lists.begin(), lists.end(),
      [](const auto& a, const auto& b) { return a.codes.size() < b.codes.size(); });
  if (longest == lists.end()) return {};
  return {*longest};
}

// Lists that are a control or two longer than the course, without the codes that only one runner of
// the class has, where this gives the course its number of controls.
std::vector<Candidate> WithoutAdditional(const std::vector<Candidate>& lists, std::size_t controls,
                                         const std::vector<CodeList>& codes) {
  std::map<std::int32_t, std::size_t> runners_of_code;
  for (CodeList list : codes) {
    std::sort(list.begin(), list.end());
    list.erase(std::unique(list.begin(), list.end()), list.end());
    for (const std::int32_t code : list) ++runners_of_code[code];
  }
  std::vector<Candidate> shorter;
  for (Candidate list : lists) {
    if (list.codes.size() > controls + kMostAdditional) continue;
    std::erase_if(list.codes, [&](std::int32_t code) { return runners_of_code[code] == 1; });
    if (list.codes.size() == controls) shorter.push_back(std::move(list));
  }
  return shorter;
}

// Whether the file gives the controls that were missed, so that every list is that of a course.
bool ListsMissed(const ForeignClass& klass) {
  return std::any_of(klass.runners.begin(), klass.runners.end(), [](const ForeignRunner& runner) {
    return std::any_of(runner.punches.begin(), runner.punches.end(),
                       [](const Punch& punch) { return !punch.time; });
  });
}

// The lists that the runners of a class show.
std::vector<Candidate> ShownLists(const ForeignClass& klass, const std::vector<CodeList>& codes) {
  const auto counts = [&](std::size_t i) { return TimeCounts(klass.runners[i]); };
  const auto is_whole = [&](std::size_t i) {
    const std::size_t expected = ExpectedControls(klass, klass.runners[i]);
    return expected == 0 || codes[i].size() == expected;
  };
  const auto counts_whole = [&](std::size_t i) { return counts(i) && is_whole(i); };
  std::vector<Candidate> lists = ListsOf(codes, counts);
  std::vector<Candidate> whole = ListsOf(codes, counts_whole);
  const auto controls = static_cast<std::size_t>(std::max(klass.control_count, 0));
  if (whole.empty() && controls > 0) whole = WithoutAdditional(lists, controls, codes);
  // A number of controls that most runners contradict is wrong.
  if (2 * RunnersOf(whole) >= RunnersOf(lists)) lists = std::move(whole);
  if (lists.empty() && (controls > 0 || ListsMissed(klass))) lists = ListsOf(codes, is_whole);
  if (lists.empty()) lists = LongestList(ListsOf(codes, [](std::size_t) { return true; }));
  RemoveSlips(lists);
  return lists;
}

// For each control of a list, the punch that was made there, as an index; nullopt when missed.
using Matches = std::vector<std::optional<std::size_t>>;

// Takes each control's first punch after that of the control before.
Matches MatchInOrder(const CodeList& list, const CodeList& punched) {
  Matches matches(list.size());
  std::size_t next = 0;
  for (std::size_t control = 0; control < list.size(); ++control) {
    const auto found = std::find(punched.begin() + static_cast<std::ptrdiff_t>(next), punched.end(),
                                 list[control]);
    if (found == punched.end()) continue;
    matches[control] = static_cast<std::size_t>(found - punched.begin());
    next = *matches[control] + 1;
  }
  return matches;
}

// The longest common subsequence of controls and punches.
Matches MatchLongest(const CodeList& list, const CodeList& punched) {
  const std::size_t width = punched.size() + 1;
  std::vector<std::size_t> common((list.size() + 1) * width);  // of what follows both indices
  for (std::size_t i = list.size(); i-- > 0;) {
    for (std::size_t j = punched.size(); j-- > 0;) {
      common[i * width + j] =
          list[i] == punched[j] ? common[(i + 1) * width + j + 1] + 1
                                : std::max(common[(i + 1) * width + j], common[i * width + j + 1]);
    }
  }
  Matches matches(list.size());
  for (std::size_t i = 0, j = 0; i < list.size() && j < punched.size();) {
    if (list[i] == punched[j]) {
      matches[i++] = j++;
    } else if (common[(i + 1) * width + j] > common[i * width + j + 1]) {
      ++i;
    } else {
      ++j;
    }
  }
  return matches;
}

Matches Match(const CodeList& list, const CodeList& punched) {
  if (list.size() * punched.size() > kMostComparisons) return MatchInOrder(list, punched);
  return MatchLongest(list, punched);
}

std::size_t MatchedCount(const Matches& matches) {
  return static_cast<std::size_t>(
      std::count_if(matches.begin(), matches.end(), [](const auto& m) { return m.has_value(); }));
}

// Assigns the runners of a class to its lists.
class Aligner {
 public:
  Aligner(std::vector<Candidate> lists) : lists_(std::move(lists)) {
    for (std::size_t i = 0; i < lists_.size(); ++i) index_of_.emplace(lists_[i].codes, i);
  }

  AlignedRunner Align(const ForeignRunner& runner, const CodeList& punched) const {
    const auto exact = index_of_.find(punched);
    if (exact != index_of_.end()) return Aligned(runner, exact->second, InPlace(punched.size()));
    std::size_t best = 0;
    Matches matches;
    std::size_t most = 0;
    for (std::size_t i = 0; i < std::min(lists_.size(), kMostListsTried); ++i) {
      Matches tried = Match(lists_[i].codes, punched);
      const std::size_t count = MatchedCount(tried);
      if (i > 0 && count <= most) continue;
      best = i;
      most = count;
      matches = std::move(tried);
    }
    return Aligned(runner, best, matches);
  }

 private:
  static Matches InPlace(std::size_t size) {
    Matches matches(size);
    for (std::size_t i = 0; i < size; ++i) matches[i] = i;
    return matches;
  }

  static AlignedRunner Aligned(const ForeignRunner& runner, std::size_t list,
                               const Matches& matches) {
    AlignedRunner aligned{list, {}, runner.punches.size() - MatchedCount(matches)};
    aligned.times.reserve(matches.size());
    for (const auto& match : matches) {
      aligned.times.push_back(match ? runner.punches[*match].time : std::nullopt);
    }
    return aligned;
  }

  std::vector<Candidate> lists_;
  std::map<CodeList, std::size_t> index_of_;
};

// Punches without codes stand for the controls in their order.
CourseLists WithoutCodes(const ForeignClass& klass) {
  CourseLists result;
  result.lists.emplace_back();
  for (const ForeignRunner& runner : klass.runners) {
    AlignedRunner aligned;
    for (const Punch& punch : runner.punches) aligned.times.push_back(punch.time);
    result.runners.push_back(std::move(aligned));
  }
  return result;
}

}  // namespace

CourseLists FindCourseLists(const ForeignClass& klass, std::size_t most_lists) {
  if (!klass.has_codes) return WithoutCodes(klass);
  std::vector<CodeList> codes;
  codes.reserve(klass.runners.size());
  for (const ForeignRunner& runner : klass.runners) codes.push_back(CodesOf(runner));
  std::vector<Candidate> lists = ShownLists(klass, codes);
  if (lists.empty()) lists.emplace_back();
  CourseLists result;
  if (lists.size() > most_lists) {
    result.left_out = lists.size() - most_lists;
    lists.erase(lists.begin() + static_cast<std::ptrdiff_t>(most_lists), lists.end());
  }
  for (const Candidate& list : lists) result.lists.push_back(list.codes);
  const Aligner aligner(std::move(lists));
  for (std::size_t i = 0; i < codes.size(); ++i) {
    result.runners.push_back(aligner.Align(klass.runners[i], codes[i]));
  }
  return result;
}

}  // namespace keltrun
