#include "keltrun2/report/analysis_page.h"

#include <array>

#include "keltrun2/analysis/analyzed_runner_data_internal.h"
#include "keltrun2/analysis/analyzer_internal.h"
#include "keltrun2/config/leg_labels.h"
#include "keltrun2/config/page_texts.h"
#include "keltrun2/model/lap_data_internal.h"
#include "keltrun2/model/time_text.h"
#include "keltrun2/report/html_parts.h"
#include "keltrun2/text/html.h"
#include "keltrun2/text/utf16.h"
#include "keltrun2/text/width.h"

namespace keltrun {
namespace {

using Runner = clsAnalyzedRunnerData;
using Figures = AnalyzedRunnerInternal;

constexpr std::string_view kTimePattern = "hh:nn:ss";

MarkerTexts Markers() { return {kNoDataText, kSkipText, kDisqText}; }

// The label column is repeated before every block of this many runners.
constexpr std::size_t kRunnersPerBlock = 10;

constexpr std::int32_t kMarkedRanks = 6;  // ranks with a CSS class of their own

// The opening tags of a time cell and a rank cell for each marked rank, and at 0 for all others.
struct CellPair {
  std::array<std::string, kMarkedRanks + 1> time, rank;

  CellPair(std::string_view time_class, std::string_view rank_class) {
    for (std::int32_t r = 0; r <= kMarkedRanks; ++r) {
      const auto index = static_cast<std::size_t>(r);
      time[index] = Open(r, time_class);
      rank[index] = Open(r, rank_class);
    }
  }

  static std::string Open(std::int32_t rank, std::string_view css_class) {
    const std::string number = rank == 0 ? "" : std::to_string(rank);
    return "<td" + std::string(RankBgColor(rank)) + " class=\"" + std::string(css_class) + number +
           "\">";
  }
};

// A title or label in Japanese and the key of its resource in other languages.
struct FixedText {
  std::string_view japanese;
  std::string_view key;

  std::string InLanguage() const { return PageText(key, japanese); }
};

constexpr FixedText kName = {"氏名", "RES_META_NAME"};
constexpr FixedText kClub = {"所属", "RES_META_CLUB"};
constexpr FixedText kResult = {"記録", "RES_META_RESULT"};
constexpr FixedText kPlace = {"順位", "RES_META_PLACE"};
constexpr FixedText kTotal = {"合計", "RES_META_TOTAL"};

// A section of one row for each leg.
struct LegSection {
  FixedText title;
  std::string_view title_attribute;
  std::string_view row_opening;
  std::string_view label_opening;
};

constexpr LegSection kLapSection = {{"◆ ラップタイム", "RES_TITLE_LAPS"},
                                    " class=\"lh\"",
                                    "<tr align=\"right\" nowrap>",
                                    "<td bgcolor=\"#dddd77\" class=\"ll\">"};
constexpr LegSection kSplitSection = {{"◆ 積算タイム", "RES_TITLE_SPLITS"},
                                      " class=\"eh\"",
                                      "<tr align=\"right\">",
                                      "<td bgcolor=\"#bbdd99\" nowrap class=\"el\">"};
constexpr LegSection kRelativeSection = {
    {"◆ ラップ上位３人に対する相対値(%)", "RES_TITLE_RELATIVE"},
    " class=\"rh\"",
    "<tr align=\"right\">",
    "<td bgcolor=\"#dddd77\" nowrap class=\"rl\">"};
constexpr LegSection kMissTimeSection = {{"◆ ミスタイム", "RES_TITLE_LOSSES"},
                                         " class=\"mh\"",
                                         "<tr align=\"right\" nowrap>",
                                         "<td bgcolor=\"#bbdd99\" class=\"ml\">"};

// A section of one row of values.
struct ValueSection {
  FixedText title;
  std::string_view title_attribute;
  std::string_view label_cell;
  std::string_view value_opening;
  void (*append_value)(std::string& out, const Runner& runner);
};

void AppendCruiseSpeed(std::string& out, const Runner& runner) {
  out += runner.CruiseSpeed()->ToString("#0.0", kNoDataText);
}
void AppendMissRate(std::string& out, const Runner& runner) {
  out += runner.MissRate()->ToString("#0.0", kNoDataText);
}
void AppendTimeWithoutMiss(std::string& out, const Runner& runner) {
  AppendTime(out, runner.TotalTimeWithoutMiss()->Value(), kTimePattern, true, Markers());
}

constexpr ValueSection kCruiseSection = {{"◆ 巡行速度(%)", "RES_TITLE_CRUISE_SPEED"},
                                         " class=\"ch\"",
                                         "<td bgcolor=\"#bbccdd\" class=\"cl\">&nbsp;</td>",
                                         "<td colspan=\"2\" class=\"cv\">",
                                         AppendCruiseSpeed};
constexpr ValueSection kMissRateSection = {{"◆ ミス率(%)", "RES_TITLE_MISTAKE_RATE"},
                                           " class=\"sh\"",
                                           "<td bgcolor=\"#bbccdd\" class=\"sl\">&nbsp;</td>",
                                           "<td colspan=\"2\" class=\"sv\">",
                                           AppendMissRate};
constexpr ValueSection kNoMissSection = {{"◆ ミスを除いたタイム", "RES_TITLE_WITHOUT_MISTAKES"},
                                         " class=\"wh\"",
                                         "<td bgcolor=\"#bbccdd\" class=\"wl\">&nbsp;</td>",
                                         "<td colspan=\"2\" class=\"wv\">",
                                         AppendTimeWithoutMiss};

// A name in pieces of ten characters, with at most two line breaks, so that columns stay narrow.
void AppendInTens(std::string& out, std::string_view text) {
  constexpr std::size_t kPiece = 10;
  for (int breaks = 0; breaks < 2; ++breaks) {
    const std::string_view piece = Utf16Prefix(text, kPiece);
    if (piece.size() == text.size()) break;
    AppendEscaped(out, piece);
    out += "<br>";
    text.remove_prefix(piece.size());
  }
  AppendEscaped(out, text);
}

class AnalysisPage {
 public:
  AnalysisPage(std::string& out, const EventModel& model, const clsAnalyzer& analyzer)
      : out_(out),
        model_(model),
        analyzer_(analyzer),
        runners_(AnalyzerInternal::Selected(analyzer)),
        legs_(AnalyzerInternal::LegCount(analyzer)) {}

  void MakeTable() {
    ReserveForTable();
    out_ +=
        "<table border=\"1\" cellspacing=\"0\" cellpadding=\"1\" bgcolor=\"white\" class=\"lap\">";
    out_ += kCrLf;
    // The attribute ends in two quotes: programs that read these pages expect it.
    MakePageTitleRow(out_, analyzer_, model_.Event->ToString(), ColumnCount(),
                     " class=\"lap-title\"\"");
    MakeNameRow();
    MakeClubRow();
    MakeResultRankRows();
    MakeLapSection();
    MakeSplitSection();
    MakeNameRow();
    MakeValueSection(kCruiseSection);
    MakeValueSection(kMissRateSection);
    MakeNameRow();
    MakeRelativeSection();
    MakeMissTimeSection();
    MakeValueSection(kNoMissSection);
    MakeNameRow();
    MakeClubRow();
    MakeResultRankRows();
    out_ += "</table>";
  }

 private:
  // The string grows once instead of many times: fresh memory is the largest cost of a page.
  void ReserveForTable() {
    constexpr std::size_t kBytesPerRunner = 1300;
    constexpr std::size_t kBytesPerLeg = 240;
    const std::size_t per_runner = kBytesPerRunner + kBytesPerLeg * static_cast<std::size_t>(legs_);
    out_.reserve(out_.size() + runners_.size() * per_runner + 4096);
  }

  std::int32_t ColumnCount() const {
    const auto count = static_cast<std::int32_t>(runners_.size());
    return (count - 1) / static_cast<std::int32_t>(kRunnersPerBlock) + 2 * count + 1;
  }

  // A row: its opening tag, what `cells` appends for each runner, and the label cell before each
  // block.
  template <typename Cells>
  void MakeRow(std::string_view opening, std::string_view label_cell, Cells cells) {
    out_.append(opening).append(kCrLf);
    for (std::size_t i = 0; i < runners_.size(); ++i) {
      if (i % kRunnersPerBlock == 0) out_.append(label_cell).append(kCrLf);
      cells(*runners_[i]);
    }
    out_ += "</tr>\r\n";
  }

  static std::string LabelCell(std::string_view opening, const FixedText& label) {
    return std::string(opening) + EscapeHtml(label.InLanguage()) + "</td>";
  }

  // A row of one cell for each runner.
  template <typename Value>
  void MakeValueRow(std::string_view opening, std::string_view label_cell,
                    std::string_view value_opening, Value append_value) {
    MakeRow(opening, label_cell, [&](const Runner& runner) {
      out_ += value_opening;
      append_value(runner);
      CloseCell();
    });
  }

  void CloseCell() { out_ += "</td>\r\n"; }

  void MakeSectionTitle(const FixedText& title, std::string_view attribute) {
    MakeTitleRow(out_, EscapeHtml(title.InLanguage()), ColumnCount(), kSectionTitleColor, "",
                 attribute);
  }

  void MakeNameRow() {
    MakeValueRow(
        "<tr bgcolor=\"#bbddff\">", LabelCell("<td class=\"nl\" bgcolor=\"#99bbdd\">", kName),
        "<td colspan=\"2\" class=\"nv\">",
        [this](const Runner& runner) { AppendInTens(out_, NormalizeName(runner.RunnerName())); });
  }

  void MakeClubRow() {
    MakeValueRow("<tr bgcolor=\"#bbddff\">",
                 LabelCell("<td class=\"zl\" bgcolor=\"#99bbdd\">", kClub),
                 "<td colspan=\"2\" class=\"zv\">", [this](const Runner& runner) {
                   const std::string club = NormalizeName(runner.ClubName());
                   if (club.empty()) out_ += "&nbsp;";
                   AppendInTens(out_, club);
                 });
  }

  void MakeResultRankRows() {
    constexpr std::size_t kResultColumns = 10;
    constexpr std::string_view kOpening = "<tr align=\"right\" bgcolor=\"#ddeeff\">";
    MakeValueRow(
        kOpening, LabelCell("<td align=\"left\" class=\"kl\" bgcolor=\"#bbccdd\">", kResult),
        "<td colspan=\"2\" nowrap class=\"kv\">", [this](const Runner& runner) {
          AppendEscapedNoBreak(out_, PadByWidth(runner.Result(), kResultColumns, true, true));
        });
    MakeValueRow(kOpening,
                 LabelCell("<td align=\"left\" class=\"jl\" bgcolor=\"#bbccdd\">", kPlace),
                 "<td colspan=\"2\" class=\"jv\">",
                 [this](const Runner& runner) { AppendRankText(runner); });
  }

  void AppendRankText(const Runner& runner) {
    if (analyzer_.DataSetIsMix) {
      AppendEscaped(out_, runner.OtherData()->ClassName());
      out_ += ' ';
    } else if (runner.Rank().empty()) {
      out_ += "&nbsp;";
    }
    AppendEscaped(out_, runner.Rank());
  }

  std::string LegLabelCell(const LegSection& section, std::int32_t leg, bool with_controls) const {
    const std::int32_t controls = legs_ - 1;
    const auto& course = analyzer_.CourseData();
    std::string label;
    if (with_controls && course) {
      const auto [from, to] = AnalyzerInternal::CodesOfLeg(*course, leg, legs_);
      label = LegLabelWithControls(controls, true, leg, from, to);
    } else {
      label = LegLabel(controls, true, leg);
    }
    return std::string(section.label_opening) + EscapeHtml(label) + "</td>";
  }

  // The title and one row for each leg; `cells` appends a runner's cells for the leg.
  template <typename Cells>
  void MakeLegRows(const LegSection& section, bool with_controls, Cells cells) {
    MakeSectionTitle(section.title, section.title_attribute);
    for (std::int32_t leg = 1; leg <= legs_; ++leg) {
      MakeRow(section.row_opening, LegLabelCell(section, leg, with_controls),
              [&](const Runner& runner) { cells(runner, leg); });
    }
  }

  static DateTime Lap(const Runner& runner, std::int32_t leg) {
    return LapDataInternal::Lap(*runner.OtherData(), leg);
  }

  void AppendCompact(DateTime time) { AppendTime(out_, time, kTimePattern, true, markers_); }

  void AppendPair(const CellPair& openings, std::int32_t rank, DateTime time) {
    const auto marked = static_cast<std::size_t>(rank >= 1 && rank <= kMarkedRanks ? rank : 0);
    out_ += openings.time[marked];
    AppendCompact(time);
    out_.append("</td>").append(openings.rank[marked]);
    AppendRank(out_, rank, true, false);
    CloseCell();
  }

  // The cell of a range, whose legs only have a common time.
  void AppendRowSpan(const Figures::LegFigures& figures) {
    out_.append(" rowspan=\"")
        .append(std::to_string(figures.range_to - figures.range_from + 1))
        .append("\"");
  }

  void MakeLapSection() {
    const CellPair openings("lt", "lr");
    MakeLegRows(kLapSection, true, [&](const Runner& runner, std::int32_t leg) {
      const auto& figures = Figures::Leg(runner, leg);
      if (figures.valid_lap) {
        AppendPair(openings, figures.lap_rank, Lap(runner, leg));
      } else if (figures.range_from == 0) {
        out_ += "<td class=\"lt\">";
        AppendCompact(Lap(runner, leg));
        out_ += "</td><td class=\"lr\">-";
        CloseCell();
      } else if (figures.range_from == leg) {
        out_ += "<td";
        AppendRowSpan(figures);
        out_ += " class=\"lt\">";
        AppendCompact(Lap(runner, figures.range_to));
        out_ += "</td><td";
        AppendRowSpan(figures);
        out_ += " class=\"lr\">-";
        CloseCell();
      }
    });
  }

  void MakeSplitSection() {
    const CellPair openings("et", "er");
    MakeLegRows(kSplitSection, false, [&](const Runner& runner, std::int32_t leg) {
      const auto& figures = Figures::Leg(runner, leg);
      AppendPair(openings, figures.modified_split_rank, figures.split_time);
    });
  }

  // One cell for each runner and leg; a range has one cell with the value of its last leg.
  template <typename Value>
  void MakeSpannedRows(const LegSection& section, std::string_view class_attribute,
                       Value append_value) {
    MakeLegRows(section, false, [&](const Runner& runner, std::int32_t leg) {
      const auto& figures = Figures::Leg(runner, leg);
      const bool single = figures.valid_lap || figures.range_from == 0;
      if (!single && figures.range_from != leg) return;  // covered by the cell above
      out_ += "<td colspan=\"2\"";
      if (!single) AppendRowSpan(figures);
      out_ += class_attribute;
      append_value(runner, single ? leg : figures.range_to);
      CloseCell();
    });
  }

  template <typename Value>
  void MakeTotalRow(std::string_view label_cell, std::string_view value_opening,
                    Value append_value) {
    MakeValueRow("<tr align=\"right\" bgcolor=\"#eeeeee\">", label_cell, value_opening,
                 append_value);
  }

  void MakeRelativeSection() {
    MakeSpannedRows(kRelativeSection, " class=\"rv\">",
                    [this](const Runner& runner, std::int32_t leg) {
                      AppendPercent(Figures::Leg(runner, leg).lap_relative);
                    });
    MakeTotalRow(LabelCell("<td bgcolor=\"#cccccc\" class=\"ral\">", kTotal),
                 "<td colspan=\"2\" class=\"rav\">",
                 [this](const Runner& runner) { AppendPercent(*runner.TotalTimeRelative()); });
  }

  void MakeMissTimeSection() {
    MakeSpannedRows(kMissTimeSection, " class=\"mv\">",
                    [this](const Runner& runner, std::int32_t leg) {
                      AppendMissTime(Figures::Leg(runner, leg).miss_time);
                    });
    MakeTotalRow(LabelCell("<td bgcolor=\"#cccccc\" class=\"mtl\">", kTotal),
                 "<td colspan=\"2\" class=\"mtv\">",
                 [this](const Runner& runner) { AppendMissTime(*runner.MissTimeTotal()); });
  }

  void MakeValueSection(const ValueSection& section) {
    MakeSectionTitle(section.title, section.title_attribute);
    MakeValueRow("<tr align=\"right\">", section.label_cell, section.value_opening,
                 [&](const Runner& runner) { section.append_value(out_, runner); });
  }

  void AppendPercent(const clsPercentValue& value) {
    out_ += value.ToString("#0", markers_.NoData);
  }

  void AppendMissTime(const clsMissTimeValue& value) {
    out_ += value.ToString(kTimePattern, true, markers_.NoData);
  }

  std::string& out_;
  const EventModel& model_;
  const clsAnalyzer& analyzer_;
  const AnalyzerInternal::Runners& runners_;
  const std::int32_t legs_;
  const MarkerTexts markers_ = Markers();
};

}  // namespace

void AppendAnalysisPage(std::string& out, const EventModel& model, const clsAnalyzer& analyzer,
                        std::string_view link_style_file, std::string_view charset) {
  const HeadOptions head = {.UseStyle = true,
                            .TdStyle = TableFontStyle(),
                            .LinkStyleFile = link_style_file,
                            .Charset = charset};
  MakeAnalyzerPage(out, model, analyzer, head,
                   [&] { AnalysisPage(out, model, analyzer).MakeTable(); });
}

}  // namespace keltrun
