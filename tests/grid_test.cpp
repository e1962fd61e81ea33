// The grid of an analysis, as the grid of a host receives it.
#include <gtest/gtest.h>

#include <map>

#include "tests/test_support.h"

namespace keltrun::test {
namespace {

/// Stores the texts by column and row, and records every other call.
struct FakeGrid : clsGridObject {
  std::map<std::int32_t, std::map<std::int32_t, std::string>> texts;
  std::string calls;

  void Log(std::initializer_list<std::int32_t> numbers, const char* end) {
    for (const std::int32_t number : numbers) calls += std::to_string(number) + ",";
    calls.back() = *end;
  }
  // The color number is the type, so that the test can see which type was requested.
  keltrun::Color Color(KrColorTypeConst type) override { return type; }
  void Clear() override { calls += "clear "; }
  void SetVisible(bool visible) override { calls += visible ? "show" : "hide "; }
  void SetRows(std::int32_t rows) override { Log({rows}, "x"); }
  void SetCols(std::int32_t columns) override { Log({columns}, " "); }
  void SetColWidth(std::int32_t col, std::int32_t width) override { Log({col, width}, " "); }
  void SelectCell(std::int32_t r, std::int32_t c, std::int32_t r2, std::int32_t c2) override {
    r2 == -1 && c2 == -1 ? Log({r, c}, ":") : Log({r, c, r2, c2}, ":");
  }
  void SetCellBackColor(keltrun::Color color) override { Log({color}, " "); }
  void SetCellAlignment(KrAlignTypeConst align) override { calls += align == 2 ? "left" : "right"; }
  void SetTextMatrix(std::int32_t row, std::int32_t col, std::string_view text) override {
    texts[col][row] = text;
  }
  std::string Column(std::int32_t column) {
    std::string all;
    for (const auto& [row, text] : texts[column]) all += text + "|";
    return all;
  }
};

// Three runners on three legs; "Skip" missed the second control. The figures are those of the
// analysis page of the same laps.
TEST(Grid, BandsAndColumns) {
  const auto root = NewRoot();
  const auto klass = root->AddClass("M21");
  klass->ControlCount = 2;
  AddRunner(*klass, "山田 太郎", "0:17:00", {600, 200, 220})->ClubName = "Club A";
  AddRunner(*klass, "Slow", "0:18:00", {660, 180, 240})->RankFix = "*";
  AddRunner(*klass, "Skip", "0:17:30", {540, -1, 510});
  const auto analyzer = root->NewAnalyzer();
  analyzer->AddClass("M21");
  const auto course = root->AddCourse(1);
  course->SetControlCount(2);
  course->SetControlNum(1, 31);
  course->SetControlNum(2, 45);
  analyzer->SetCourseData(course);
  analyzer->Execute();
  const auto drawn = [&] {
    const auto grid = std::make_shared<FakeGrid>();
    root->GraphicControl()->DrawGrid(analyzer, grid);
    return grid;
  };
  const auto grid = drawn();
  // Labels and cells of each band; then the ranks 1 to 3 of laps (rows 5 to 7) and splits (9 to
  // 11), whose colors are 20 to 22.
  EXPECT_EQ(grid->calls,
            "hide clear 27x4 0,1230 1,1080 2,1080 3,1080 "
            "0,0,1,-1:1 0,1,1,3:left0 2,0,3,-1:3 2,1,3,3:right2 4,0,7,-1:5 4,1,7,3:right4 "
            "8,0,11,-1:7 8,1,11,3:right6 12,0,14,-1:13 12,1,14,3:right12 "
            "15,0,18,-1:9 15,1,18,3:right8 19,0,19,-1:17 19,1,19,3:right16 "
            "20,0,23,-1:11 20,1,23,3:right10 24,0,24,-1:15 24,1,24,3:right14 "
            "25,0,26,-1:19 25,1,26,3:right18 "
            "5,1:21 9,1:21 6,1:21 10,1:21 7,1:20 11,1:20 5,2:20 9,2:20 10,2:20 11,2:21 "
            "5,3:22 9,3:22 6,3:20 10,3:22 7,3:21 11,3:22 5,1:show");
  EXPECT_EQ(grid->Column(0),
            "氏名|所属|記録|順位|ラップタイム|S→1(31)|1(31)→2(45)|2(45)→F|積算タイム|→1|→2|→F|"
            "解析結果(%)|"
            "巡航速度|ミス率|相対値(%)|S→1|1→2|2→F|合計|ミスタイム|S→1|1→2|2→F|合計|"
            "ミスを除いた|タイム|");
  EXPECT_EQ(grid->Column(1),
            "山田太郎|ClubA|0:17:00|   1|  10:00  2)|   3:20  2)|   3:40  1)|  10:00  2)|"
            "  13:20  2)|  17:00  1)|98.8|1.9|100|105|96|100|   0:07|   0:12|  -0:07|   0:20|"
            "  16:40|");
  EXPECT_EQ(grid->Column(2),
            "Skip||0:17:30|   2|   9:00  1)|     ↓    |   8:30    |   9:00  1)|     ↓  1)|"
            "  17:30  2)|90.0|12.6|90|↓|121|103|   0:00|     ↓|   2:12|   2:12|  15:18|");
  EXPECT_EQ(grid->Column(3).substr(0, 17), "Slow||0:18:00|*  ") << "the fixed rank";
  analyzer->SetCourseData(nullptr);
  analyzer->DataSetIsMix = true;
  EXPECT_EQ(drawn()->texts[3][3], "M21   3") << "the class in place of the fixed rank";
  EXPECT_EQ(drawn()->texts[0][6], "1→2");
  analyzer->SelectNone();
  EXPECT_EQ(drawn()->calls, "hide clear ") << "no runners to show";
  EXPECT_THROW(root->GraphicControl()->DrawGrid(nullptr, grid), AutomationError);
  EXPECT_THROW(root->GraphicControl()->DrawGrid(analyzer, nullptr), AutomationError);
}

}  // namespace
}  // namespace keltrun::test
