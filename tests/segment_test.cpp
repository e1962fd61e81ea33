// Segments: the runs of controls that courses share, and their data sets.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <set>

#include "keltrun2/text/split.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using Strings = std::vector<std::string>;
using Codes = std::vector<std::int32_t>;

// Courses 1, 2, ... with these codes, and a class A, B, ... on each.
std::shared_ptr<clsKeltrun2> RootWith(const std::vector<Codes>& courses) {
  auto root = NewRoot();
  std::int32_t number = 0;
  for (const Codes& codes : courses) {
    const auto course = root->AddCourse(++number);
    course->SetControlCount(static_cast<std::int32_t>(codes.size()));
    for (std::size_t i = 0; i < codes.size(); ++i) {
      course->SetControlNum(static_cast<std::int32_t>(i) + 1, codes[i]);
    }
    root->AddClass(std::string(1, static_cast<char>('@' + number % 128)) + std::to_string(number))
        ->CourseNum = number;
  }
  root->MakeSegmentSet();
  return root;
}

// "name: course@position ..." for each segment.
Strings Described(const clsKeltrun2& root) {
  Strings texts;
  for (std::int32_t i = 1; i <= root.SegmentCount(); ++i) {
    std::string text = root.SegmentData(i)->SegmentName() + ":";
    for (const std::string& entry : root.SegmentData(i)->TargetCourseTable()) {
      text += " " + CclsSplit("\t", entry).Expression("@");
    }
    texts.push_back(text);
  }
  return texts;
}

// The definition taken literally: every pair of starting places, then the two passes.
class Model {
 public:
  explicit Model(const std::vector<Codes>& courses) {
    for (std::size_t a = 0; a < courses.size(); ++a) {
      Codes codes = courses[a];
      codes.insert(codes.begin(), 0);
      codes.push_back(9999);
      courses_.push_back(codes);
    }
    FindRuns();
    RemoveContained();
    std::reverse(segments_.begin(), segments_.end());
    RemoveContained();
  }

  Strings Described() const {
    Strings texts;
    for (const Segment& segment : segments_) {
      std::string text;
      for (const std::int32_t code : segment.codes) {
        text += "-" + (code == 0 ? "S" : code == 9999 ? "F" : std::to_string(code));
      }
      text = text.substr(1) + ":";
      for (const auto& [course, position] : segment.entries) {
        text += " " + std::to_string(course + 1) + "@" + std::to_string(position);
      }
      texts.push_back(text);
    }
    return texts;
  }

 private:
  using Entry = std::pair<std::size_t, std::size_t>;
  struct Segment {
    Codes codes;
    std::vector<Entry> entries;
    void Add(Entry entry) {
      if (std::find(entries.begin(), entries.end(), entry) == entries.end()) {
        entries.push_back(entry);
      }
    }
  };

  void FindRuns() {
    for (std::size_t a = 0; a < courses_.size(); ++a) {
      for (std::size_t i = 0; i < courses_[a].size(); ++i) {
        for (std::size_t b = a + 1; b < courses_.size(); ++b) {
          for (std::size_t j = 0; j < courses_[b].size(); ++j) Compare(a, i, b, j);
        }
      }
    }
  }

  void Compare(std::size_t a, std::size_t i, std::size_t b, std::size_t j) {
    Codes run;
    while (i + run.size() < courses_[a].size() && j + run.size() < courses_[b].size() &&
           courses_[a][i + run.size()] == courses_[b][j + run.size()]) {
      run.push_back(courses_[a][i + run.size()]);
    }
    if (run.size() < 3) return;
    auto found = std::find_if(segments_.begin(), segments_.end(),
                              [&](const Segment& s) { return s.codes == run; });
    if (found == segments_.end()) found = segments_.insert(found, {run, {}});
    found->Add({a, i});
    found->Add({b, j});
  }

  static bool Inside(const Segment& y, const Segment& x) {
    if (x.entries.size() != y.entries.size()) return false;
    const auto at = std::search(x.codes.begin(), x.codes.end(), y.codes.begin(), y.codes.end());
    if (at == x.codes.end()) return false;
    const auto offset = static_cast<std::size_t>(at - x.codes.begin());
    return std::all_of(y.entries.begin(), y.entries.end(), [&](const Entry& e) {
      return std::find(x.entries.begin(), x.entries.end(), Entry{e.first, e.second - offset}) !=
             x.entries.end();
    });
  }

  void RemoveContained() {
    for (std::size_t x = 0; x < segments_.size(); ++x) {
      for (std::size_t y = segments_.size(); --y > x;) {
        if (Inside(segments_[y], segments_[x])) {
          segments_.erase(segments_.begin() + static_cast<std::ptrdiff_t>(y));
        }
      }
    }
  }

  std::vector<Codes> courses_;
  std::vector<Segment> segments_;
};

TEST(Segments, SharedRuns) {
  const Rows<std::vector<Codes>, Strings> cases = {
      {{{31, 32, 33}, {31, 32, 40}}, {"S-31-32: 1@0 2@0"}},
      {{{31, 32, 33, 34}, {50, 31, 32, 33, 34}}, {"31-32-33-34-F: 1@1 2@2"}},
      {{{31, 32, 33}, {41, 42, 43}}, {}},
      {{{31}, {31}}, {"S-31-F: 1@0 2@0"}},
      {{{31, 32, 33}}, {}}};
  for (const auto& [courses, expected] : cases) EXPECT_EQ(Described(*RootWith(courses)), expected);
}

TEST(Segments, AgreeWithTheDefinition) {
  std::mt19937 random(7);
  const auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  for (int round = 0; round < 300; ++round) {
    std::vector<Codes> courses(static_cast<std::size_t>(2 + below(4)));
    for (std::size_t c = 0; c < courses.size(); ++c) {
      if (c > 0 && below(3) == 0) {
        courses[c] = courses[static_cast<std::size_t>(below(static_cast<int>(c)))];
        if (below(2) == 0) continue;  // equal courses, and nearly equal ones
      }
      while (courses[c].size() < 3 || below(6) > 0) courses[c].push_back(31 + below(4));
    }
    ASSERT_EQ(Described(*RootWith(courses)), Model(courses).Described()) << "round " << round;
  }
}

TEST(Segments, ManyEqualCourses) {
  Codes codes(49);
  std::iota(codes.begin(), codes.end(), 31);
  const auto root = RootWith(std::vector<Codes>(5000, codes));
  ASSERT_EQ(root->SegmentCount(), 1);
  EXPECT_EQ(root->SegmentData(1)->ControlCount(), 49);
  EXPECT_EQ(root->SegmentData(1)->TargetClassList().size(), 5000u);
  EXPECT_EQ(root->SegmentRemark(), "");
}

// A relay: every team has its own order of forks, and any two teams share runs of controls.
TEST(Segments, ManyDifferentCourses) {
  std::vector<Codes> courses(2048, Codes(20));
  for (std::size_t team = 0; team < courses.size(); ++team) {
    for (std::size_t i = 0; i < 20; ++i) {
      const bool fork = i % 2 == 0 && i / 2 < 11 && (team >> (i / 2) & 1) != 0;
      courses[team][i] = static_cast<std::int32_t>(i + (fork ? 131 : 31));
    }
    courses[team][19] = team < 1024 ? 50 : 150;  // the eleventh fork
  }
  const auto root = RootWith(courses);
  EXPECT_EQ(root->SegmentRemark(), "");
  const Strings found = Described(*root);
  const auto courses_of = [&](const std::string& name) {
    const auto at = std::find_if(found.begin(), found.end(),
                                 [&](const auto& text) { return text.starts_with(name + ":"); });
    return at == found.end() ? 0 : std::count(at->begin(), at->end(), '@');
  };
  // Half of the teams take one side of a fork, a quarter the same sides of two.
  EXPECT_EQ(courses_of("S-31-32"), 1024);
  EXPECT_EQ(courses_of("32-33-34"), 1024);
  EXPECT_EQ(courses_of("32-33-34-35-36"), 512);
}

// Courses that repeat one code agree at every place. A run of n codes occurs at 50 - n places of
// each course and, with the finish, at one more; with 120 classes a place has 121 entries. Runs of
// n to 51 codes have (51 - n) (52 - n) / 2 * 20 * 121 entries: 1,984,400 from n = 11 on, 2,083,620
// from n = 10 on.
TEST(Segments, TooManyEntriesLeaveShortRunsOut) {
  const auto root = RootWith(std::vector<Codes>(20, Codes(49, 31)));
  for (std::int32_t i = 20; i < 20 * 120; ++i) {
    root->AddClass("Class " + std::to_string(i))->CourseNum = i % 20 + 1;
  }
  root->MakeSegmentSet();
  EXPECT_EQ(root->SegmentCount(), 39) << "of 11 to 48 codes, and the whole course";
  const std::string remark =
      "segments: the courses share too many runs of controls; those of fewer than 11 codes, start "
      "and finish included, are left out";
  EXPECT_EQ(root->SegmentRemark(), remark);
  const TemporaryFolder folder;
  clsFileControl& files = *root->FileControl();
  ASSERT_TRUE(files.SaveLapFile(folder.Path("a.lxm")) && files.LoadLapFile(folder.Path("a.lxm")));
  ASSERT_FALSE(files.LoadRemarks().empty());
  EXPECT_EQ(files.LoadRemarks().back().Text, remark);
  root->ClearCourse();
  EXPECT_EQ(root->SegmentRemark(), "");
}

// 50 controls make 51 legs, but a record has at most 50.
TEST(Segments, TheLegThatNoRecordHoldsIsLeftOut) {
  Codes codes(50);
  std::iota(codes.begin(), codes.end(), 31);
  const auto root = RootWith({codes, codes});
  ASSERT_EQ(root->SegmentCount(), 1);
  EXPECT_EQ(root->SegmentData(1)->ControlCount(), 50);
  AddRunner(*root->ClassData(1), "A", "0:25:30", std::vector<double>(50, 30));
  AddRunner(*root->ClassData(2), "B", "0:25:30", {30, 31});
  const auto analyzer = root->SegmentData(1)->Analyzer();
  ASSERT_EQ(analyzer->FullSetCount(), 2);
  const auto whole = analyzer->FullSetItem(1)->OtherData();
  EXPECT_EQ(whole->LegCount(), 50);
  EXPECT_EQ(whole->Result(), "0:25:00");
  EXPECT_EQ(analyzer->FullSetItem(2)->OtherData()->Result(), "N/A");
  analyzer->Execute();
  EXPECT_EQ(analyzer->Item(1)->RankInDataSet(), "1");
}

TEST(Segments, DataSetsHoldTheRunOnly) {
  const auto root = RootWith({{31, 32, 33}, {40, 31, 32, 33}});
  ASSERT_EQ(Described(*root), Strings{"31-32-33-F: 1@1 2@2"});
  const auto first = AddRunner(*root->ClassData(1), "A", "0:10:00", {60, 100, 110, 30});
  first->StartTime()->SetValue(Seconds(36000));
  first->Sex = "F";
  first->CompetitorId = "x";
  AddRunner(*root->ClassData(2), "B", "0:12:00", {50, 70, 120, -1, 40})->Sex = "M";
  const auto segment = root->SegmentData(1);
  EXPECT_EQ(segment->SegmentBinaryName(), "0031003200339999");
  const auto all = segment->Analyzer();
  EXPECT_EQ(all->DataSetName(), "31-32-33-F");
  ASSERT_EQ(all->FullSetCount(), 2);
  const auto a = all->FullSetItem(1)->OtherData();
  EXPECT_EQ(a->Result(), "0:04:00");
  EXPECT_EQ(a->LapToString(1) + a->LapToString(3), "00:01:4000:00:30");
  EXPECT_EQ(a->StartTime()->ToString(), "10:01:00");
  EXPECT_EQ(a->SerialNum(), first->SerialNum());
  EXPECT_EQ(a->CompetitorId, "");
  EXPECT_EQ(all->FullSetItem(2)->OtherData()->Result(), "N/A");
  const auto women = segment->ResultsHolder("F");
  EXPECT_EQ(women->DataSetName(), "31-32-33-F - F");
  EXPECT_EQ(women->Count(), 1);
  root->RemoveClass("B2");
  EXPECT_EQ(segment->Analyzer()->FullSetCount(), 1);
}

}  // namespace
}  // namespace keltrun::test
