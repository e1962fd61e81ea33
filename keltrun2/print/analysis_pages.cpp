#include "keltrun2/print/analysis_pages.h"

#include <algorithm>
#include <string>
#include <vector>

#include "keltrun2/analysis/analyzer_internal.h"
#include "keltrun2/config/leg_labels.h"
#include "keltrun2/config/settings.h"
#include "keltrun2/drawing/drawing_limits.h"
#include "keltrun2/model/time_text.h"
#include "keltrun2/print/fitted_text.h"
#include "keltrun2/text/width.h"

namespace keltrun {
namespace {

using Runner = clsAnalyzedRunnerData;

// All lengths are in units of which the page is this many wide: mm on A4 paper with margins of 1
// cm.
constexpr float kPortraitWidth = 190;
constexpr float kLandscapeWidth = 277;

constexpr float kBandHeight = 9;
constexpr float kEventHeight = 5.5f;  // the line below the band
constexpr float kLine = 3.8f;
constexpr float kGroupGap = 0.8f;  // between groups, half above and half below the rule

constexpr float kPlaceWidth = 9;
constexpr float kNameWidth = 33;
constexpr float kFiguresWidth = 20;
constexpr float kLegsLeft = kPlaceWidth + kNameWidth + kFiguresWidth + 1;
constexpr float kWidestLeg = 22;
constexpr float kPadding = 0.5f;

// Dots of 1/300 inch.
constexpr float kFrameLine = 4, kHeadRule = 4, kGroupRule = 1.5f, kLegRule = 1;
constexpr Color kBlack = 0, kRuleColor = 0x808080, kLegRuleColor = 0xC0C0C0;

constexpr std::string_view kTimePattern = "hh:nn:ss";

// Black, or white on a dark background.
Color TextColorOn(Color background) {
  const std::int32_t brightness =
      (299 * Red(background) + 587 * Green(background) + 114 * Blue(background)) / 1000;
  return brightness < 128 ? kWhite : kBlack;
}

// The texts in the two lines of a leg's cell.
struct LegCell {
  std::string time, time_rank;    // upper line
  std::string below, below_rank;  // lower line
  std::int32_t shade = 0;         // rank 1 to 3 of the upper line, others none
};

// The texts to the left of the legs.
struct GroupHead {
  std::string place, name, club, result, cruise_speed, miss_rate;
};

class AnalysisPages {
 public:
  AnalysisPages(const clsAnalyzer& analyzer, const clsEventData& event, clsPrintBook& book,
                const AnalysisPagesOptions& options)
      : analyzer_(analyzer),
        event_(event),
        book_(book),
        options_(options),
        runners_(AnalyzerInternal::Selected(analyzer)),
        legs_(AnalyzerInternal::LegCount(analyzer)) {}

  void Print() {
    if (runners_.empty()) return;
    book_.NewPage();
    const float own_ratio = book_.VirtualZoomRatio();
    ScaleToPage();
    ArrangeColumns();
    ShrinkToFit();
    CountPages();
    StartPage();
    PrintReference();
    std::size_t room = first_page_runners_;
    for (const auto& runner : runners_) {
      if (room == 0) {
        EndPage();
        StartPage();
        room = page_runners_;
      }
      PrintRunner(*runner);
      --room;
    }
    EndPage();
    book_.SetVirtualZoomRatio(own_ratio);
    book_.SetPrintedAreaHeight(0);
  }

 private:
  bool IsMissMode() const { return options_.Mode == KR_PRINT_ANALYSIS_MISS; }
  bool HasCodes() const { return analyzer_.CourseData() != nullptr; }

  // The book's virtual size belongs to all its pages and is kept; the drawings are scaled instead.
  void ScaleToPage() {
    book_.SetVirtualZoomRatio(1);
    const bool landscape = book_.Width() > book_.Height();
    width_ = landscape ? kLandscapeWidth : kPortraitWidth;
    book_.SetVirtualZoomRatio(book_.Width() / width_);
    height_ = book_.Height();
  }

  // As many cells side by side as fit; the others follow in further lines.
  void ArrangeColumns() {
    cells_ = legs_ + (IsMissMode() ? 1 : 0);  // the total of the times lost
    const std::size_t digits = std::max<std::size_t>(std::to_string(runners_.size()).size(), 2);
    rank_width_ = WidthOf("0", small_) * static_cast<float>(digits) + 4 * kPadding;
    const float cell = std::max(1.0f, WidthOf("1:23:45", standard_) + kPadding + rank_width_);
    const float room = width_ - kLegsLeft;
    cells_per_line_ = std::clamp(static_cast<std::int32_t>(room / cell), 1, cells_);
    if (options_.Heads) {
      const std::int32_t lines = (cells_ + cells_per_line_ - 1) / cells_per_line_;
      cells_per_line_ = (cells_ + lines - 1) / lines;
    }
    cell_width_ = std::min(room / static_cast<float>(cells_per_line_), kWidestLeg);
    cell_lines_ = (cells_ + cells_per_line_ - 1) / cells_per_line_;
    table_width_ = kLegsLeft + cell_width_ * static_cast<float>(cells_per_line_);
  }

  // The width in units of the layout. The fonts are those of the settings, unscaled.
  float WidthOf(std::string_view text, const Font& font) const {
    return PrintedWidth(book_, text, font);
  }

  // A page that is too low for its head and one group shows everything at a smaller size.
  void ShrinkToFit() {
    const float least = kBandHeight + kEventHeight + LabelsHeight() + GroupHeight();
    if (!(height_ > 0) || height_ >= least) return;
    book_.SetVirtualZoomRatio(book_.VirtualZoomRatio() * height_ / least);
    height_ = book_.Height();
  }

  float GroupHeight() const { return static_cast<float>(cell_lines_) * 2 * kLine + kGroupGap; }

  // The labels of a leg: its numbers, and below them its control codes.
  float LabelHeight() const { return HasCodes() ? 2 * kLine : kLine; }
  float LabelsHeight() const {
    return std::max(static_cast<float>(cell_lines_) * LabelHeight(), 2 * kLine) + kGroupGap;
  }

  void CountPages() {
    const float room = height_ - kBandHeight - kEventHeight - LabelsHeight();
    const auto groups = [this](float space, float least) {
      constexpr float kMost = 1e6f;
      return static_cast<std::size_t>(std::min(kMost, std::max(least, space / GroupHeight())));
    };
    page_runners_ = groups(room, 1);
    first_page_runners_ = groups(room - GroupHeight(), 0);  // below the reference laps
    page_count_ = 1;
    if (runners_.size() > first_page_runners_) {
      page_count_ += (runners_.size() - first_page_runners_ + page_runners_ - 1) / page_runners_;
    }
  }

  void StartPage() {
    ++page_;
    y_ = 0;
    PrintBand();
    PrintEventLine();
    table_top_ = y_;
    PrintLabels();
  }

  void EndPage() {
    for (std::int32_t column = 0; column <= cells_per_line_; ++column) {
      book_.DrawLine(ColumnLeft(column), table_top_, 0, y_ - table_top_, kLegRuleColor, kLegRule);
    }
    book_.NewPage();
  }

  void PrintBand() {
    book_.DrawBox(0, 0, width_, kBandHeight, kBlack, kFrameLine, false);
    book_.DrawBox(0, 0, width_ * 0.02f, kBandHeight, kBlack, kFrameLine, true);
    const bool full_width = IsJapaneseMode() && !analyzer_.DataSetIsMix;
    const std::string& name = analyzer_.DataSetName();
    const float left = width_ * 0.035f, middle = width_ * 0.6f;
    Text(full_width ? ToFullWidth(name) : name, class_font_, left, 0, middle - left, kBandHeight);
    const std::string info = ResourceText("RES_META_CONTROL_COUNT") + " " +
                             std::to_string(legs_ - 1) + "  " + analyzer_.ClassInfo();
    Text(info, standard_, middle, 0, width_ - middle - 2, kBandHeight, PRINTBOOK_ALIGN_RIGHT);
    y_ = kBandHeight;
  }

  void PrintEventLine() {
    const float middle = width_ * 0.6f;
    Text(event_.ToString(), standard_, 1, y_, middle - 1, kEventHeight);
    const char* below = IsMissMode() ? "RES_META_MISTAKE" : "RES_META_ELAPSE";
    const std::string legend = ResourceText("RES_META_SPLITS") + " / " + ResourceText(below);
    const std::string pages = std::to_string(page_) + " / " + std::to_string(page_count_);
    Text(legend, small_, middle, y_, width_ - middle - 22, kEventHeight, PRINTBOOK_ALIGN_RIGHT);
    Text(pages, standard_, width_ - 20, y_, 19, kEventHeight, PRINTBOOK_ALIGN_RIGHT);
    y_ += kEventHeight;
  }

  void PrintLabels() {
    const float top = y_ + kGroupGap / 2;
    PrintGroupHead(
        {ResourceText("RES_META_PLACE"), ResourceText("RES_META_NAME"),
         ResourceText("RES_META_CLUB"), ResourceText("RES_META_RESULT"),
         ResourceText("RES_META_CRUISE_SPEED_SHORT"), ResourceText("RES_META_MISTAKE_RATE_SHORT")},
        small_, top);
    for (std::int32_t cell = 0; cell < cells_; ++cell) {
      PrintLegLabel(cell + 1, CellLeft(cell), top + CellLine(cell) * LabelHeight());
    }
    EndGroup(LabelsHeight(), kBlack, kHeadRule);
  }

  void PrintLegLabel(std::int32_t leg, float left, float top) {
    const std::string label =
        leg > legs_ ? ResourceText("RES_META_TOTAL") : LegLabel(legs_ - 1, true, leg);
    Text(label, standard_, left, top, cell_width_, kLine, PRINTBOOK_ALIGN_CENTER);
    if (!HasCodes() || leg > legs_) return;
    const auto [from, to] = AnalyzerInternal::CodesOfLeg(*analyzer_.CourseData(), leg, legs_);
    Text(LegLabelWithControls(legs_ - 1, true, leg, from, to), small_, left, top + kLine,
         cell_width_, kLine, PRINTBOOK_ALIGN_CENTER);
  }

  // The mean of the three best laps of each leg, and their running total.
  void PrintReference() {
    const clsAnalyzedGeneralData& general = *analyzer_.GeneralData();
    GroupHead head;
    head.name = options_.Heads ? ResourceText("RES_PRINT_REFERENCE")
                               : ResourceText("RES_META_SPLITS") + " (1-3)";
    head.result = clsTimeValue(general.UpperLapTotal()).ToString(kTimePattern, true, kNoDataText);
    DateTime total = 0;
    PrintGroup(head, [&](std::int32_t leg) {
      LegCell cell;
      if (leg > legs_) return cell;
      total += general.UpperLapAverage(leg);
      cell.time =
          clsTimeValue(general.UpperLapAverage(leg)).ToString(kTimePattern, true, kNoDataText);
      if (!IsMissMode()) cell.below = clsTimeValue(total).ToString(kTimePattern, true, kNoDataText);
      return cell;
    });
  }

  void PrintRunner(const Runner& runner) {
    GroupHead head;
    // Official ranks are ranks within a class, so a mix shows the ranks in the data set.
    head.place = analyzer_.DataSetIsMix ? runner.RankInDataSet() : runner.Rank();
    head.name = runner.RunnerName();
    head.club = runner.ClubName();
    if (analyzer_.DataSetIsMix) {
      head.club = "(" + runner.OtherData()->ClassName() + ") " + head.club;
    }
    head.result = runner.Result();
    head.cruise_speed = runner.CruiseSpeed()->ToString("#0.0", kNoDataText);
    head.miss_rate = runner.MissRate()->ToString("#0.0", kNoDataText);
    PrintGroup(head, [&](std::int32_t leg) { return CellOf(runner, leg); });
  }

  LegCell CellOf(const Runner& runner, std::int32_t leg) const {
    LegCell cell;
    if (leg > legs_) {
      cell.below = runner.MissTimeTotal()->ToString(kTimePattern, true, kNoDataText);
      return cell;
    }
    cell.time = runner.LapTimeToString(leg, kTimePattern, true, kNoDataText);
    cell.time_rank = runner.LapRankToString(leg, false);
    cell.shade = runner.LapRank(leg);
    if (IsMissMode()) {
      cell.below = runner.MissTime(leg)->ToString(kTimePattern, true, kNoDataText);
    } else {
      cell.below = runner.SplitTimeToString(leg, kTimePattern, true, kNoDataText);
      cell.below_rank = runner.ModifiedSplitRankToString(leg, false);
    }
    return cell;
  }

  // The texts of a runner in the order of their looks: most of the time that a document takes goes
  // into changes from one look to another.
  template <typename MakeCell>
  void PrintGroup(const GroupHead& head, MakeCell make_cell) {
    const float top = y_ + kGroupGap / 2;
    std::vector<LegCell> cells;
    for (std::int32_t leg = 1; leg <= cells_; ++leg) cells.push_back(make_cell(leg));
    const auto for_each = [&](auto print) {
      for (std::int32_t i = 0; i < cells_; ++i) {
        print(cells[static_cast<std::size_t>(i)], CellLeft(i), top + CellLine(i) * 2 * kLine);
      }
    };
    for_each([&](const LegCell& cell, float left, float cell_top) {
      if (HasShade(cell)) book_.DrawBox(left, cell_top, cell_width_, kLine, ShadeOf(cell), 0, true);
    });
    PrintGroupNames(head, standard_, top);
    for_each([&](const LegCell& cell, float left, float cell_top) {
      PrintTime(cell.time, left, cell_top, ColorOf(cell));
    });
    for_each([&](const LegCell& cell, float left, float cell_top) {
      PrintTime(cell.below, left, cell_top + kLine, kBlack);
    });
    PrintGroupDetails(head, top);
    for_each([&](const LegCell& cell, float left, float cell_top) {
      PrintRank(cell.time_rank, left, cell_top, ColorOf(cell));
    });
    for_each([&](const LegCell& cell, float left, float cell_top) {
      PrintRank(cell.below_rank, left, cell_top + kLine, kBlack);
    });
    for (std::int32_t line = 1; line < cell_lines_; ++line) {
      book_.DrawLine(kLegsLeft, top + static_cast<float>(line) * 2 * kLine,
                     table_width_ - kLegsLeft, 0, kLegRuleColor, kLegRule);
    }
    EndGroup(GroupHeight(), kRuleColor, kGroupRule);
  }

  void PrintGroupHead(const GroupHead& head, const Font& font, float top) {
    PrintGroupNames(head, font, top);
    PrintGroupDetails(head, top);
  }

  void PrintGroupNames(const GroupHead& head, const Font& font, float top) {
    Text(head.place, font, 0, top, kPlaceWidth - 1.5f, kLine, PRINTBOOK_ALIGN_RIGHT);
    Text(head.name, NameFont(head.name, font), kPlaceWidth, top, kNameWidth, kLine);
    Text(head.result, font, kPlaceWidth + kNameWidth, top, kFiguresWidth, kLine,
         PRINTBOOK_ALIGN_RIGHT);
  }

  // The line below, in small letters.
  void PrintGroupDetails(const GroupHead& head, float top) {
    const float figures = kPlaceWidth + kNameWidth, below = top + kLine;
    constexpr float kHalf = kFiguresWidth / 2;
    Text(head.club, NameFont(head.club, small_), kPlaceWidth, below, kNameWidth, kLine);
    Text(head.cruise_speed, small_, figures, below, kHalf, kLine, PRINTBOOK_ALIGN_RIGHT);
    Text(head.miss_rate, small_, figures + kHalf, below, kHalf, kLine, PRINTBOOK_ALIGN_RIGHT);
  }

  Font NameFont(const std::string& name, const Font& font) const {
    return options_.Heads ? FittedFont(book_, name, font, kNameWidth) : font;
  }

  static bool HasShade(const LegCell& cell) { return cell.shade >= 1 && cell.shade <= 3; }
  Color ShadeOf(const LegCell& cell) const {
    return options_.RankColors[static_cast<std::size_t>(cell.shade - 1)];
  }
  Color ColorOf(const LegCell& cell) const {
    return HasShade(cell) ? TextColorOn(ShadeOf(cell)) : kBlack;
  }

  void PrintTime(const std::string& time, float left, float top, Color color) {
    Text(time, standard_, left, top, cell_width_ - rank_width_, kLine, PRINTBOOK_ALIGN_RIGHT,
         color);
  }

  void PrintRank(const std::string& rank, float left, float top, Color color) {
    Text(rank, small_, left + cell_width_ - rank_width_, top, rank_width_ - kPadding, kLine,
         PRINTBOOK_ALIGN_RIGHT, color);
  }

  void EndGroup(float height, Color color, float draw_width) {
    y_ += height;
    book_.DrawLine(0, y_, table_width_, 0, color, draw_width);
  }

  // The place of a cell, counted from 0: the left edge of its column, and its line of cells.
  float ColumnLeft(std::int32_t column) const {
    return kLegsLeft + cell_width_ * static_cast<float>(column);
  }
  float CellLeft(std::int32_t cell) const { return ColumnLeft(cell % cells_per_line_); }
  float CellLine(std::int32_t cell) const {
    const std::int32_t line = cell / cells_per_line_;
    return static_cast<float>(line);
  }

  // The many empty texts are not recorded. Figures are right-aligned and never cut.
  void Text(const std::string& text, const Font& font, float left, float top, float width,
            float height, PrintBookAlignConst align = PRINTBOOK_ALIGN_LEFT, Color color = kBlack) {
    if (text.empty()) return;
    book_.PrintText(text, font, left, top, width, height, align, PRINTBOOK_VALIGN_MIDDLE, false, 1,
                    color, align != PRINTBOOK_ALIGN_RIGHT);
  }

  const clsAnalyzer& analyzer_;
  const clsEventData& event_;
  clsPrintBook& book_;
  const AnalysisPagesOptions& options_;
  const AnalyzerInternal::Runners& runners_;
  const Font class_font_ = MakePrintFont("ANALYSIS_CLASS");
  const Font standard_ = MakePrintFont("ANALYSIS_STANDARD");
  const Font small_ = MakePrintFont("ANALYSIS_SMALL");

  std::int32_t legs_;
  std::int32_t cells_ = 0;           // of a runner: the legs, and the total
  std::int32_t cells_per_line_ = 0;  // side by side
  std::int32_t cell_lines_ = 0;      // one below the other
  float width_ = 0, height_ = 0;     // of the page
  float cell_width_ = 0, rank_width_ = 0, table_width_ = 0;
  std::size_t first_page_runners_ = 0, page_runners_ = 0;
  std::size_t page_count_ = 0, page_ = 0;
  float table_top_ = 0;
  float y_ = 0;  // where the next line of the page goes
};

}  // namespace

void PrintAnalysisPages(const clsAnalyzer& analyzer, const clsEventData& event, clsPrintBook& book,
                        const AnalysisPagesOptions& options) {
  AnalysisPages(analyzer, event, book, options).Print();
}

}  // namespace keltrun
