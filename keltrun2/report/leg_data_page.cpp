#include "keltrun2/report/leg_data_page.h"

#include <array>

#include "keltrun2/analysis/analyzer_internal.h"
#include "keltrun2/config/leg_labels.h"
#include "keltrun2/config/settings.h"
#include "keltrun2/model/sort.h"
#include "keltrun2/model/time_text.h"
#include "keltrun2/report/html_parts.h"
#include "keltrun2/text/html.h"
#include "keltrun2/text/numbers.h"
#include "keltrun2/text/split.h"
#include "keltrun2/text/width.h"

namespace keltrun {
namespace {

using Runner = clsAnalyzedRunnerData;

constexpr std::int32_t kShownRunners = 6;
constexpr std::int32_t kColumns = 4 + kShownRunners;
constexpr std::string_view kEmptyCell = "<td>&nbsp;</td>";

// What differs between the Japanese mode and all other modes.
struct Wording {
  std::string_view cell_style;
  std::string_view headings;  // the cells after the corner
  std::string_view total;
};

constexpr Wording kJapanese = {
    kJapaneseTableFontStyle,
    "<td nowrap>レッグ長</td><td nowrap>上位平均</td><td nowrap>難易度</td>"
    "<td>１位</td><td>２位</td><td>３位</td><td>４位</td><td>５位</td><td>６位</td>",
    "合計"};
constexpr Wording kEnglish = {
    "font-size: 9pt;",
    "<td nowrap>length</td><td nowrap>ave 3</td><td nowrap>difficulty</td>"
    "<td>1st</td><td>2nd</td><td>3rd</td><td>4th</td><td>5th</td><td>6th</td>",
    "sum"};

const Wording& CurrentWording() { return IsJapaneseMode() ? kJapanese : kEnglish; }

// The first three of the data set keep their colors through all legs.
struct RunnerColor {
  std::string_view back, text;
};
constexpr std::array<RunnerColor, 3> kRunnerColors = {
    {{"#ffdddd", "#800000"}, {"#ddddff", "#000080"}, {"#ddffdd", "#008000"}}};

// Usually the family name: names in Japanese letters are short, others are cut at the first blank.
std::string ShortName(const Runner& runner) {
  constexpr std::size_t kJapaneseColumns = 6;
  constexpr std::size_t kColumnsElsewhere = 8;
  if (IsJapaneseMode()) {
    return PadByWidth(NormalizeName(runner.RunnerName()), kJapaneseColumns, false, true);
  }
  return PadByWidth(CclsSplit(" ", runner.RunnerName()).Value(0), kColumnsElsewhere, false, true);
}

class LegDataTable {
 public:
  LegDataTable(std::string& out, const clsAnalyzer& analyzer)
      : out_(out),
        general_(*analyzer.GeneralData()),
        runners_(AnalyzerInternal::Selected(analyzer)),
        legs_(AnalyzerInternal::LegCount(analyzer)) {}

  void Make() {
    // The misspelled alignment stays: programs that read these pages expect it.
    out_.append("<tr align=\"rignt\" nowrap bgcolor=\"#ccccff\">").append(kEmptyCell);
    out_.append(CurrentWording().headings).append("</tr>\r\n");
    for (std::int32_t leg = 1; leg <= legs_; ++leg) MakeLegRow(leg);
    MakeTotalRow();
  }

 private:
  // Browsers close the row themselves: it has no closing tag.
  void MakeLegRow(std::int32_t leg) {
    out_ += "<tr align=\"right\" nowrap><td bgcolor=\"#ccccff\" nowrap>";
    AppendEscaped(out_, RowLabel(leg));
    out_.append("</td><td nowrap>").append(FormatNumber(general_.LegLength(leg) * 100.0, "0.0"));
    out_ += "%</td><td nowrap>";
    AppendCompactTime(out_, general_.UpperLapAverage(leg));
    out_ += "</td><td bgcolor=\"#ffffcc\" nowrap>";
    out_.append(FormatNumber(general_.LegDifficulty(leg)->Value() * 100, "0")).append("</td>");
    MakeFastestCells(leg);
    out_ += kCrLf;
  }

  std::string RowLabel(std::int32_t leg) const {
    if (IsJapaneseMode()) return LegLabel(legs_ - 1, true, leg);
    return leg == legs_ ? "F" : std::to_string(leg);
  }

  void MakeFastestCells(std::int32_t leg) {
    constexpr std::size_t kTimeColumns = 5;
    by_rank_.Clear();
    for (std::size_t i = 0; i < runners_.size(); ++i) {
      const std::int32_t rank = runners_[i]->LapRank(leg);
      if (rank > 0) by_rank_.Add(rank, i);
    }
    for (std::int32_t place = 1; place <= kShownRunners; ++place) {
      if (place > by_rank_.Count()) {
        out_ += kEmptyCell;
        continue;
      }
      const std::size_t index = by_rank_.Item(place);
      const std::string time = runners_[index]->LapTimeToString(leg, "hh:nn:ss", true, kNoDataText);
      MakeRunnerCell(index, PadByWidth(time, kTimeColumns, true, true), "");
    }
  }

  void MakeTotalRow() {
    constexpr std::size_t kResultColumns = 7;
    out_ += "<tr align=\"right\" bgcolor=\"#eeeeee\" nowrap><td bgcolor=\"#ccccff\" nowrap>";
    out_.append(CurrentWording().total).append("</td><td nowrap>100.0%</td><td nowrap>");
    out_.append(FormatTime(general_.UpperLapTotal(), "h:nn:ss", false));
    out_ += "</td><td nowrap>100</td>";
    for (std::size_t i = 0; i < std::size_t{kShownRunners}; ++i) {
      if (i < runners_.size()) {
        MakeRunnerCell(i, PadByWidth(runners_[i]->Result(), kResultColumns, true, true), " nowrap");
      } else {
        out_ += kEmptyCell;
      }
    }
    out_ += kCrLf;
  }

  // The cell of the runner at an index from 0, with a time.
  void MakeRunnerCell(std::size_t index, std::string_view time, std::string_view attribute) {
    const bool colored = index < kRunnerColors.size();
    out_ += "<td";
    if (colored) out_.append(" bgcolor=\"").append(kRunnerColors[index].back).append("\"");
    out_.append(attribute).append(">");
    if (colored) out_.append("<font color=\"").append(kRunnerColors[index].text).append("\">");
    AppendEscapedNoBreak(out_, ShortName(*runners_[index]));
    out_ += "&nbsp;&nbsp;";
    AppendEscapedNoBreak(out_, time);
    out_ += colored ? "</font></td>" : "</td>";
  }

  std::string& out_;
  const clsAnalyzedGeneralData& general_;
  const AnalyzerInternal::Runners& runners_;
  const std::int32_t legs_;
  CclsSort<std::size_t, std::int32_t> by_rank_;  // indexes of runners, in lap order of a leg
};

}  // namespace

std::string_view LegDataCharset(std::string_view charset) {
  return IsJapaneseMode() ? charset : "iso-8859-1";
}

void AppendLegDataPage(std::string& out, const EventModel& model, const clsAnalyzer& analyzer,
                       std::string_view link_style_file, std::string_view charset) {
  const HeadOptions head = {.UseStyle = true,
                            .TdStyle = CurrentWording().cell_style,
                            .LinkStyleFile = link_style_file,
                            .Charset = charset};
  MakeAnalyzerPage(out, model, analyzer, head, [&] {
    out +=
        "<table border=\"1\" cellspacing=\"0\" cellpadding=\"1\" bgcolor=\"white\" class=\"leg\">";
    out += kCrLf;
    const std::string event = IsJapaneseMode() ? model.Event->ToString() : model.Event->EventName;
    MakePageTitleRow(out, analyzer, event, kColumns, "");
    LegDataTable(out, analyzer).Make();
    out += "</table>";
  });
}

}  // namespace keltrun
