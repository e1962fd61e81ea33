#include "keltrun2/print/result_list.h"

#include <optional>
#include <string>

#include "keltrun2/config/settings.h"
#include "keltrun2/text/numbers.h"
#include "keltrun2/text/width.h"

namespace keltrun {
namespace {

// Heights in lines, widths and positions in virtual units.
constexpr float kLineUnits = 5;
constexpr float kBandLines = 1.8f;
constexpr float kBandLineWidth = 8;
constexpr float kLinesForAList = 4;  // a list starts on a new page when fewer are left
constexpr float kBorderLines = 1.1f;
constexpr float kPrintedWidth = 184;

constexpr float kFullWidth = 163;
constexpr float kRankWidth = 15;
constexpr float kRankFixWidth = 4;
constexpr float kClassWidth = 20;
constexpr float kIdWidth = 17;
constexpr float kSeedWidth = 6;
constexpr float kResultWidth = 22;
constexpr float kAgeWidth = 5;
constexpr float kGap = 3;

class ResultList {
 public:
  ResultList(const clsResultsHolder& results, clsPrintBook& book, const ResultListOptions& options)
      : results_(results),
        book_(book),
        options_(options),
        width_(kFullWidth - (options.PrintAge ? 0 : kAgeWidth) - (options.PrintID ? 0 : kIdWidth)),
        line_height_((options.LineInterval >= 1 ? options.LineInterval : 1) * kLineUnits) {}

  void Print() {
    if (results_.Count() == 0) return;
    if (book_.Width() != width_) {
      book_.SetVirtualSize(width_, 0, true, PRINTBOOK_ALIGN_CENTER, PRINTBOOK_VALIGN_MIDDLE);
    }
    lines_per_page_ = book_.Height() / line_height_;
    line_ = book_.PrintedAreaHeight() / line_height_;
    BreakPageUnless(kLinesForAList);
    PrintTitleBand();
    border_done_ = results_.CutOffRank == 0;
    for (std::int32_t position = 1; position <= results_.Count(); ++position) {
      BreakPageUnless(1);
      PrintRunner(position);
    }
    book_.SetPrintedAreaWidth(kPrintedWidth);
    book_.SetPrintedAreaHeight((line_ + 1) * line_height_);
    if (options_.PrintNewPage) book_.NewPage();
  }

 private:
  enum class Cut : bool { kNo, kYes };

  void BreakPageUnless(float lines_left) {
    if (lines_per_page_ - line_ >= lines_left) return;
    book_.NewPage();
    line_ = 0;
  }

  float Top() const { return line_height_ * line_; }

  void PrintTitleBand() {
    const float height = line_height_ * kBandLines;
    book_.DrawBox(0, Top(), width_, height, 0, kBandLineWidth, false);
    book_.DrawBox(0, Top(), width_ * 0.04f, height, 0, kBandLineWidth, true);
    const bool full_width = IsJapaneseMode() && !results_.DataSetIsMix;
    book_.PrintText(full_width ? ToFullWidth(results_.DataSetName()) : results_.DataSetName(),
                    MakePrintFont("RESULT_CLASS"), width_ * 0.07f, Top(), width_ * 0.8f, height,
                    PRINTBOOK_ALIGN_LEFT, PRINTBOOK_VALIGN_MIDDLE, false, 1, 0, true);
    line_ += 2;
  }

  void PrintRunner(std::int32_t position) {
    const clsLapData& runner = *results_.Item(position);
    PrintBorderBefore(runner);
    x_ = 0;
    const bool own_rank = !results_.DataSetIsMix && results_.RankIsAvalilable();
    Column(own_rank ? runner.Rank : results_.RankInDataSet(position), standard_, kRankWidth,
           PRINTBOOK_ALIGN_RIGHT);
    if (results_.DataSetIsMix) {
      Column("(" + runner.ClassName() + ")", seed_, kClassWidth, PRINTBOOK_ALIGN_CENTER, Cut::kYes);
    } else {
      Column(runner.RankFix, rank_fixed_, kRankFixWidth, PRINTBOOK_ALIGN_CENTER);
    }
    if (options_.PrintID) {
      Column("(" + std::to_string(runner.ID) + ")", standard_, kIdWidth, PRINTBOOK_ALIGN_CENTER);
    }
    if (!results_.DataSetIsMix) {
      Column(runner.Seed, seed_, kSeedWidth, PRINTBOOK_ALIGN_CENTER, Cut::kYes);
    }
    Column(runner.RunnerName, standard_, results_.DataSetIsMix ? 45 : 50, PRINTBOOK_ALIGN_LEFT);
    Column(runner.Result(), standard_, kResultWidth, PRINTBOOK_ALIGN_RIGHT);
    x_ += kGap;
    if (options_.PrintAge) Column(runner.Age, standard_, kAgeWidth, PRINTBOOK_ALIGN_CENTER);
    x_ += kGap;
    Column(runner.ClubName, standard_, results_.DataSetIsMix ? 48 : 53, PRINTBOOK_ALIGN_LEFT,
           Cut::kYes);
    line_ += 1;
  }

  // The border goes before the first runner whose official rank is beyond the cut-off rank. Ranks
  // that are not numbers are ignored.
  void PrintBorderBefore(const clsLapData& runner) {
    if (border_done_) return;
    const std::optional<double> rank = NumericValue(runner.Rank);
    if (!rank || *rank <= results_.CutOffRank) return;
    border_done_ = true;
    x_ = 2;
    Column("---------  " + ResourceText("RES_META_QUAL_BORDER") + "  ---------", standard_,
           width_ - 4, PRINTBOOK_ALIGN_CENTER);
    line_ += kBorderLines;
    BreakPageUnless(1);
  }

  // Prints a text in the current line and moves on to the next column.
  void Column(const std::string& text, const Font& font, float width, PrintBookAlignConst align,
              Cut cut = Cut::kNo) {
    book_.PrintText(text, font, x_, Top(), width, line_height_, align, PRINTBOOK_VALIGN_MIDDLE,
                    false, 1, 0, cut == Cut::kYes);
    x_ += width;
  }

  const clsResultsHolder& results_;
  clsPrintBook& book_;
  const ResultListOptions& options_;
  const Font rank_fixed_ = MakePrintFont("RESULT_RANKFIXED");
  const Font seed_ = MakePrintFont("RESULT_SEED");
  const Font standard_ = MakePrintFont("RESULT_STANDARD");
  float width_;
  float line_height_;
  float lines_per_page_ = 0;
  float line_ = 0;  // of the page, from 0
  float x_ = 0;
  bool border_done_ = false;
};

}  // namespace

void PrintResultList(const clsResultsHolder& results, clsPrintBook& book,
                     const ResultListOptions& options) {
  ResultList(results, book, options).Print();
}

}  // namespace keltrun
