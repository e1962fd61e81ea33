#include "keltrun2/print/grid.h"

#include <string>

#include "keltrun2/analysis/analyzer_internal.h"
#include "keltrun2/config/leg_labels.h"
#include "keltrun2/config/settings.h"
#include "keltrun2/text/width.h"

namespace keltrun {
namespace {

using Runner = clsAnalyzedRunnerData;

constexpr std::int32_t kLabelWidth = 1230;   // twips
constexpr std::int32_t kRunnerWidth = 1080;  // twips
constexpr std::size_t kTimeColumns = 7;
constexpr std::size_t kRankColumns = 4;
constexpr std::string_view kTimePattern = "hh:nn:ss";

/// A row that depends on the number of legs L: L * PerLegs + Plus.
struct Row {
  std::int32_t per_legs, plus;
  std::int32_t At(std::int32_t legs) const { return per_legs * legs + plus; }
};

constexpr Row kNameRow = {0, 0}, kClubRow = {0, 1}, kResultRow = {0, 2}, kPlaceRow = {0, 3};
// Rows of titles; the rows of the legs follow.
constexpr Row kLapRow = {0, 4}, kSplitRow = {1, 5}, kRelativeRow = {2, 9}, kMissRow = {3, 11};
constexpr Row kAnalysisRow = {2, 6}, kCruiseRow = {2, 7}, kMissRateRow = {2, 8};
constexpr Row kRelativeTotalRow = {3, 10}, kMissTotalRow = {4, 12};
constexpr Row kNoMissTitleRow = {4, 13}, kNoMissRow = {4, 14};
constexpr Row kRowCount = {4, 15};

struct Band {
  Row first, last;
  KrColorTypeConst label_color, cell_color;
  KrAlignTypeConst alignment;
};

constexpr Band kBands[] = {
    {kNameRow, kClubRow, KR_COLOR_NAME_TITLE, KR_COLOR_NAME, KR_ALIGN_LEFT},
    {kResultRow, kPlaceRow, KR_COLOR_RESULT_TITLE, KR_COLOR_RESULT, KR_ALIGN_RIGHT},
    {kLapRow, {1, 4}, KR_COLOR_LAP_TITLE, KR_COLOR_LAP, KR_ALIGN_RIGHT},
    {kSplitRow, {2, 5}, KR_COLOR_SPLIT_TITLE, KR_COLOR_SPLIT, KR_ALIGN_RIGHT},
    {kAnalysisRow, kMissRateRow, KR_COLOR_CRUISE_MISSRATE_TITLE, KR_COLOR_CRUISE_MISSRATE,
     KR_ALIGN_RIGHT},
    {kRelativeRow, {3, 9}, KR_COLOR_RELATIVE_TITLE, KR_COLOR_RELATIVE, KR_ALIGN_RIGHT},
    {kRelativeTotalRow, kRelativeTotalRow, KR_COLOR_RELATIVETOTAL_TITLE, KR_COLOR_RELATIVETOTAL,
     KR_ALIGN_RIGHT},
    {kMissRow, {4, 11}, KR_COLOR_MISS_TITLE, KR_COLOR_MISS, KR_ALIGN_RIGHT},
    {kMissTotalRow, kMissTotalRow, KR_COLOR_MISSTOTAL_TITLE, KR_COLOR_MISSTOTAL, KR_ALIGN_RIGHT},
    {kNoMissTitleRow, kNoMissRow, KR_COLOR_NOMISS_TITLE, KR_COLOR_NOMISS, KR_ALIGN_RIGHT},
};

struct Label {
  Row row;
  const char* key;
  const char* unit;
};

constexpr Label kLabels[] = {
    {kNameRow, "RES_META_NAME", ""},
    {kClubRow, "RES_META_CLUB", ""},
    {kResultRow, "RES_META_RESULT", ""},
    {kPlaceRow, "RES_META_PLACE", ""},
    {kLapRow, "RES_META_SPLITS", ""},
    {kSplitRow, "RES_META_ELAPSE", ""},
    {kAnalysisRow, "RES_META_ANALYSIS_RESULT", "(%)"},
    {kCruiseRow, "RES_META_CRUISE_SPEED", ""},
    {kMissRateRow, "RES_META_MISTAKE_RATE", ""},
    {kRelativeRow, "RES_META_LEG_SPEED_INDEX", "(%)"},
    {kRelativeTotalRow, "RES_META_TOTAL", ""},
    {kMissRow, "RES_META_MISTAKE", ""},
    {kMissTotalRow, "RES_META_TOTAL", ""},
    {kNoMissTitleRow, "RES_META_WITHOUT_MISTAKE_1", ""},
    {kNoMissRow, "RES_META_WITHOUT_MISTAKE_2", ""},
};

class Grid {
 public:
  Grid(const clsAnalyzer& analyzer, clsGridObject& grid)
      : analyzer_(analyzer),
        grid_(grid),
        runners_(AnalyzerInternal::Selected(analyzer)),
        count_(analyzer.Count()),
        legs_(AnalyzerInternal::LegCount(analyzer)) {}

  void Fill() {
    grid_.SetVisible(false);
    grid_.Clear();
    if (count_ == 0) return;
    SetSize();
    ColorBands();
    FillLabels();
    for (std::int32_t column = 1; column <= count_; ++column) FillRunner(column);
    grid_.SelectCell(kLapRow.At(legs_) + 1, 1);
    grid_.SetVisible(true);
  }

 private:
  void SetSize() {
    grid_.SetRows(kRowCount.At(legs_));
    grid_.SetCols(count_ + 1);
    grid_.SetColWidth(0, kLabelWidth);
    for (std::int32_t column = 1; column <= count_; ++column) {
      grid_.SetColWidth(column, kRunnerWidth);
    }
  }

  void ColorBands() {
    for (const Band& band : kBands) {
      const std::int32_t first = band.first.At(legs_), last = band.last.At(legs_);
      grid_.SelectCell(first, 0, last);
      grid_.SetCellBackColor(grid_.Color(band.label_color));
      grid_.SelectCell(first, 1, last, count_);
      grid_.SetCellAlignment(band.alignment);
      grid_.SetCellBackColor(grid_.Color(band.cell_color));
    }
  }

  void FillLabels() {
    for (const Label& label : kLabels) Put(label.row, 0, ResourceText(label.key) + label.unit);
    for (std::int32_t leg = 1; leg <= legs_; ++leg) {
      PutLeg(kLapRow, leg, 0, LapLabel(leg));
      PutLeg(kSplitRow, leg, 0, LegLabel(legs_ - 1, false, leg));
      PutLeg(kRelativeRow, leg, 0, LegLabel(legs_ - 1, true, leg));
      PutLeg(kMissRow, leg, 0, LegLabel(legs_ - 1, true, leg));
    }
  }

  std::string LapLabel(std::int32_t leg) const {
    const auto& course = analyzer_.CourseData();
    if (!course) return LegLabel(legs_ - 1, true, leg);
    const auto [from, to] = AnalyzerInternal::CodesOfLeg(*course, leg, legs_);
    return LegLabelFull(legs_ - 1, true, leg, from, to);
  }

  void FillRunner(std::int32_t column) {
    const Runner& runner = *runners_[static_cast<std::size_t>(column - 1)];
    Put(kNameRow, column, NormalizeName(runner.RunnerName()));
    Put(kClubRow, column, NormalizeName(runner.ClubName()));
    Put(kResultRow, column, runner.Result());
    const clsLapData& record = *runner.OtherData();
    Put(kPlaceRow, column,
        (analyzer_.DataSetIsMix ? record.ClassName() : record.RankFix) +
            PadByWidth(runner.Rank(), kRankColumns, true, true));
    Put(kCruiseRow, column, runner.CruiseSpeed()->ToString("#0.0"));
    Put(kMissRateRow, column, runner.MissRate()->ToString("#0.0"));
    Put(kRelativeTotalRow, column, runner.TotalTimeRelative()->ToString());
    Put(kMissTotalRow, column, InTimeColumns(runner.MissTimeTotal()->ToString(kTimePattern, true)));
    Put(kNoMissRow, column,
        InTimeColumns(runner.TotalTimeWithoutMiss()->ToString(kTimePattern, true)));
    for (std::int32_t leg = 1; leg <= legs_; ++leg) FillLeg(runner, leg, column);
  }

  void FillLeg(const Runner& runner, std::int32_t leg, std::int32_t column) {
    PutLeg(kLapRow, leg, column,
           TimeAndRank(runner.LapTimeToString(leg, kTimePattern, true),
                       runner.LapRankToString(leg, false, true)));
    MarkRank(kLapRow, leg, column, runner.LapRank(leg));
    PutLeg(kSplitRow, leg, column,
           TimeAndRank(runner.SplitTimeToString(leg, kTimePattern, true),
                       runner.ModifiedSplitRankToString(leg, false, true)));
    MarkRank(kSplitRow, leg, column, runner.ModifiedSplitRank(leg));
    PutLeg(kRelativeRow, leg, column, runner.LapRelative(leg)->ToString());
    PutLeg(kMissRow, leg, column,
           InTimeColumns(runner.MissTime(leg)->ToString(kTimePattern, true)));
  }

  static std::string InTimeColumns(const std::string& time) {
    return PadByWidth(time, kTimeColumns, true, true);
  }

  static std::string TimeAndRank(const std::string& time, const std::string& rank) {
    return PadByWidth(time, kTimeColumns, true, false) +
           PadByWidth(rank, kRankColumns, true, false);
  }

  void MarkRank(Row title, std::int32_t leg, std::int32_t column, std::int32_t rank) {
    if (rank < 1 || rank > 3) return;
    grid_.SelectCell(title.At(legs_) + leg, column);
    grid_.SetCellBackColor(grid_.Color(static_cast<KrColorTypeConst>(KR_COLOR_RANK1 + rank - 1)));
  }

  void Put(Row row, std::int32_t column, const std::string& text) {
    grid_.SetTextMatrix(row.At(legs_), column, text);
  }

  void PutLeg(Row title, std::int32_t leg, std::int32_t column, const std::string& text) {
    grid_.SetTextMatrix(title.At(legs_) + leg, column, text);
  }

  const clsAnalyzer& analyzer_;
  clsGridObject& grid_;
  const AnalyzerInternal::Runners& runners_;
  std::int32_t count_;
  std::int32_t legs_;
};

}  // namespace

void FillGrid(const clsAnalyzer& analyzer, clsGridObject& grid) { Grid(analyzer, grid).Fill(); }

}  // namespace keltrun
