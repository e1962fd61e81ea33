#include "keltrun2/print/headed_list.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "keltrun2/config/settings.h"
#include "keltrun2/model/result_status.h"
#include "keltrun2/model/time_values.h"
#include "keltrun2/print/fitted_text.h"
#include "keltrun2/print/print_book_internal.h"
#include "keltrun2/text/numbers.h"

namespace keltrun {
namespace {

// Lengths are in virtual units.
constexpr float kWidth = 160;
constexpr float kLine = 5;  // height of a line of runners at an interval of 1
constexpr float kPageHead = 8, kPageHeadText = 6;
constexpr float kBand = 11, kBandBlock = 5, kBandGap = 3;
constexpr float kTitles = 6.5f;
constexpr float kBorder = 7;
constexpr float kFewestLines = 3;  // of a list at the bottom of a page
constexpr float kColumnGap = 2;
constexpr float kPrintedWidth = 184;

// Dots of 1/300 inch.
constexpr float kBandLine = 5, kTitleRule = 3, kRule = 1, kBorderRule = 3;
constexpr Color kBlack = 0, kRuleColor = 0xC0C0C0;

enum class Part { kPlace, kFixed, kClass, kNumber, kSeed, kName, kAge, kClub, kResult, kAfter };

struct Column {
  Part part;
  const char* title;  // key of the text
  float width;        // a share of the room that is left over, when `is_wide`
  PrintBookAlignConst align;
  bool is_wide = false;
  bool is_small = false;
};

constexpr Column kColumns[] = {
    {Part::kPlace, "RES_META_PLACE", 11, PRINTBOOK_ALIGN_RIGHT},
    {Part::kFixed, "", 4, PRINTBOOK_ALIGN_CENTER, false, true},
    {Part::kClass, "RES_PRINT_CLASS", 18, PRINTBOOK_ALIGN_LEFT, false, true},
    {Part::kNumber, "RES_PRINT_NUMBER", 13, PRINTBOOK_ALIGN_RIGHT},
    {Part::kSeed, "RES_PRINT_SEED", 6, PRINTBOOK_ALIGN_CENTER, false, true},
    {Part::kName, "RES_META_NAME", 1, PRINTBOOK_ALIGN_LEFT, true},
    {Part::kAge, "RES_PRINT_AGE", 8, PRINTBOOK_ALIGN_RIGHT},
    {Part::kClub, "RES_META_CLUB", 1, PRINTBOOK_ALIGN_LEFT, true},
    {Part::kResult, "RES_META_RESULT", 19, PRINTBOOK_ALIGN_RIGHT},
    {Part::kAfter, "RES_PRINT_AFTER", 19, PRINTBOOK_ALIGN_RIGHT},
};

// The texts of a runner in the order of the columns, and whether the border comes before them.
struct Row {
  std::vector<std::string> texts;
  bool after_border = false;
};

// The place that the list shows: the official rank, or else that of the time.
std::string PlaceOf(const clsResultsHolder& results, std::int32_t index, bool own_ranks) {
  return own_ranks ? results.Item(index)->Rank : results.RankInDataSet(index);
}

// The time of the best of the list: the first who has a place, because runners outside the
// competition may be faster.
std::optional<DateTime> BestTime(const clsResultsHolder& results, bool own_ranks) {
  for (std::int32_t i = 1; i <= results.Count(); ++i) {
    if (!NumericValue(PlaceOf(results, i, own_ranks))) continue;
    if (const auto time = TotalTime(results.Item(i)->Result())) return time;
  }
  return std::nullopt;
}

std::string TimeAfter(const std::string& result, const std::optional<DateTime>& best) {
  const std::optional<DateTime> time = TotalTime(result);
  if (!time || !best || *time <= *best) return "";
  return "+" + clsTimeValue(*time - *best).ToString("hh:nn:ss", true);
}

class HeadedList {
 public:
  HeadedList(const clsResultsHolder& results, const clsEventData& event, clsPrintBook& book,
             const ResultListOptions& options)
      : book_(book),
        options_(options),
        is_mix_(results.DataSetIsMix),
        event_(event.ToString()),
        line_((options.LineInterval >= 1 ? options.LineInterval : 1) * kLine) {
    ReadHead(results);
    ReadRows(results);
  }

  // The host's printer measures texts and may change the list in the meantime; everything that is
  // printed was copied from it before.
  void Print() {
    if (rows_.empty()) return;
    FitPage();
    ChooseColumns();
    y_ = book_.PrintedAreaHeight();
    if (y_ > 0 && !StaysOnPage()) BreakPage();
    PrintPageHead();
    PrintClassHead(false);
    for (const Row& row : rows_) {
      const float height = line_ + (row.after_border ? kBorder : 0);
      if (y_ + height > book_.Height() && has_rows_) ContinueOnNewPage();
      if (row.after_border) PrintBorder();
      PrintRow(row);
    }
    book_.SetPrintedAreaWidth(kPrintedWidth);
    book_.SetPrintedAreaHeight(y_ + line_);
    if (options_.PrintNewPage) book_.NewPage();
  }

 private:
  void ReadHead(const clsResultsHolder& results) {
    name_ = results.DataSetName();
    course_ = results.ClassInfo();
    if (results.ControlCount <= 0) return;
    course_ = ResourceText("RES_META_CONTROL_COUNT") + " " + std::to_string(results.ControlCount) +
              (course_.empty() ? "" : "  ") + course_;
  }

  void ReadRows(const clsResultsHolder& results) {
    const bool own_ranks = !is_mix_ && results.RankIsAvalilable();
    const std::optional<DateTime> best = BestTime(results, own_ranks);
    bool border_done = results.CutOffRank == 0;
    for (std::int32_t i = 1; i <= results.Count(); ++i) {
      const clsLapData& runner = *results.Item(i);
      Row row;
      const std::optional<double> rank = NumericValue(runner.Rank);
      row.after_border = !border_done && rank && *rank > results.CutOffRank;
      border_done |= row.after_border;
      for (const Column& column : kColumns) {
        row.texts.push_back(column.part == Part::kPlace ? PlaceOf(results, i, own_ranks)
                                                        : TextOf(runner, column.part, best));
      }
      rows_.push_back(std::move(row));
    }
  }

  std::string TextOf(const clsLapData& runner, Part part,
                     const std::optional<DateTime>& best) const {
    switch (part) {
      case Part::kFixed:
        return is_mix_ ? "" : runner.RankFix;
      case Part::kClass:
        return is_mix_ ? runner.ClassName() : "";
      case Part::kNumber:
        return options_.PrintID ? std::to_string(runner.ID) : "";
      case Part::kSeed:
        return is_mix_ ? "" : runner.Seed;
      case Part::kName:
        return runner.RunnerName;
      case Part::kAge:
        return options_.PrintAge ? runner.Age : "";
      case Part::kClub:
        return runner.ClubName;
      case Part::kResult:
        return runner.Result();
      case Part::kAfter:
        return TimeAfter(runner.Result(), best);
      case Part::kPlace:
        break;
    }
    return "";
  }

  // On a page that is too low for its heads and a line everything is smaller.
  void FitPage() {
    const float least = kPageHead + ClassHead() + line_ + kBorder;
    if (book_.Width() != kWidth) book_.SetVirtualSize(kWidth, 0);
    if (book_.Height() < least) book_.SetVirtualSize(0, least);
    width_ = book_.Width();
  }

  // Columns without any text are left out.
  void ChooseColumns() {
    float fixed = 0;
    float shares = 0;
    for (std::size_t i = 0; i < std::size(kColumns); ++i) {
      const bool is_empty = std::all_of(rows_.begin(), rows_.end(),
                                        [&](const Row& row) { return row.texts[i].empty(); });
      if (is_empty) continue;
      columns_.push_back(i);
      (kColumns[i].is_wide ? shares : fixed) += kColumns[i].width;
      fixed += kColumnGap;
    }
    share_ = shares > 0 ? std::max(1.0f, (width_ - fixed) / shares) : 0;
  }

  float ClassHead() const { return kBand + kTitles; }

  // Whether the list begins on the current page: if all of it fits, or if it fits on no page and at
  // least a few lines fit here.
  bool StaysOnPage() const {
    const bool has_border =
        std::any_of(rows_.begin(), rows_.end(), [](const Row& row) { return row.after_border; });
    const float whole =
        ClassHead() + static_cast<float>(rows_.size()) * line_ + (has_border ? kBorder : 0);
    const float room = book_.Height() - y_;
    return whole <= room ||
           (whole > book_.Height() - kPageHead && ClassHead() + kFewestLines * line_ <= room);
  }

  void BreakPage() {
    book_.NewPage();
    y_ = 0;
    has_rows_ = false;
  }

  void ContinueOnNewPage() {
    BreakPage();
    PrintPageHead();
    PrintClassHead(true);
  }

  // Only at the top of a page.
  void PrintPageHead() {
    if (y_ > 0) return;
    constexpr float kNumberWidth = 40;
    const float room = width_ - kNumberWidth;
    Fitted(event_, small_, 0, room, kPageHeadText, PRINTBOOK_ALIGN_LEFT);
    PrintBookInternal::PrintPageNumber(book_, ResourceText("RES_PRINT_PAGE"), small_, room, y_,
                                       kNumberWidth, kPageHeadText);
    y_ += kPageHead;
  }

  void PrintClassHead(bool is_continued) {
    book_.DrawBox(0, y_, width_, kBand, kBlack, kBandLine, false);
    book_.DrawBox(0, y_, kBandBlock, kBand, kBlack, kBandLine, true);
    const float left = kBandBlock + kBandGap;
    const float middle = width_ * 0.6f;
    const std::string name =
        is_continued ? name_ + " " + ResourceText("RES_PRINT_CONTINUED") : name_;
    Fitted(name, class_, left, middle - left, kBand, PRINTBOOK_ALIGN_LEFT);
    Fitted(course_, small_, middle, width_ - middle - kBandGap, kBand, PRINTBOOK_ALIGN_RIGHT);
    y_ += kBand;
    Cells(
        kTitles, [&](std::size_t column) { return ResourceText(kColumns[column].title); }, true);
    y_ += kTitles;
    book_.DrawLine(0, y_, width_, 0, kBlack, kTitleRule);
  }

  void PrintRow(const Row& row) {
    Cells(
        line_, [&](std::size_t column) { return row.texts[column]; }, false);
    y_ += line_;
    book_.DrawLine(0, y_, width_, 0, kRuleColor, kRule);
    has_rows_ = true;
  }

  // A rule, interrupted by its name.
  void PrintBorder() {
    const std::string text = ResourceText("RES_META_QUAL_BORDER");
    const float side = (width_ - PrintedWidth(book_, text, small_)) / 2 - 2 * kColumnGap;
    const float middle = y_ + kBorder / 2;
    if (side > 0) {
      book_.DrawLine(0, middle, side, 0, kBlack, kBorderRule);
      book_.DrawLine(width_ - side, middle, side, 0, kBlack, kBorderRule);
    }
    Fitted(text, small_, 0, width_, kBorder, PRINTBOOK_ALIGN_CENTER);
    y_ += kBorder;
  }

  template <typename TextAt>
  void Cells(float height, TextAt text_at, bool all_small) {
    float x = 0;
    for (const std::size_t i : columns_) {
      const Column& column = kColumns[i];
      const float width = column.is_wide ? column.width * share_ : column.width;
      const bool is_small = all_small || column.is_small;
      Fitted(text_at(i), is_small ? small_ : standard_, x, width, height, column.align);
      x += width + kColumnGap;
    }
  }

  // A text that becomes smaller before it is cut.
  void Fitted(const std::string& text, const Font& font, float left, float width, float height,
              PrintBookAlignConst align) {
    if (text.empty()) return;
    book_.PrintText(text, FittedFont(book_, text, font, width), left, y_, width, height, align,
                    PRINTBOOK_VALIGN_MIDDLE, false, 1, kBlack, true);
  }

  clsPrintBook& book_;
  const ResultListOptions options_;
  const Font class_ = MakePrintFont("RESULT_CLASS");
  const Font standard_ = MakePrintFont("RESULT_STANDARD");
  const Font small_ = MakePrintFont("RESULT_SEED");
  bool is_mix_;
  std::string event_, name_, course_;
  std::vector<Row> rows_;
  std::vector<std::size_t> columns_;  // positions in kColumns
  float share_ = 0;                   // width of a wide column with a share of 1
  float line_;
  float width_ = 0;        // of the page
  float y_ = 0;            // where the next line of the page goes
  bool has_rows_ = false;  // the page has runners of this list
};

}  // namespace

void PrintHeadedList(const clsResultsHolder& results, const clsEventData& event, clsPrintBook& book,
                     const ResultListOptions& options) {
  HeadedList(results, event, book, options).Print();
}

}  // namespace keltrun
