#include "keltrun2/report/result_page.h"

#include <array>

#include "keltrun2/model/length_and_climb.h"
#include "keltrun2/report/html_parts.h"
#include "keltrun2/text/html.h"
#include "keltrun2/text/numbers.h"

namespace keltrun {
namespace {

constexpr std::size_t kColumns = 6;

// The text between "<td" and the class in the cells of each column.
using ColumnAttributes = std::array<std::string_view, kColumns>;

constexpr ColumnAttributes kMixedColumns = {" align=\"right\" width=\"30\"",
                                            " align=\"center\" width=\"80\"",
                                            " width=\"100\"",
                                            " align=\"right\" width=\"80\"",
                                            " width=\"30\"",
                                            " width=\"180\""};
constexpr ColumnAttributes kSingleColumns = {" align=\"right\" width=\"30\"",
                                             " align=\"center\" width=\"40\"",
                                             " width=\"140\"",
                                             " align=\"right\" width=\"80\"",
                                             " width=\"30\"",
                                             " width=\"180\""};

using RowValues = std::array<std::string, kColumns>;

RowValues ReadRow(const clsResultsHolder& results, std::int32_t index) {
  const clsLapData& runner = *results.Item(index);
  RowValues row = {runner.Rank,     runner.Seed, runner.RunnerName,
                   runner.Result(), "",          runner.ClubName};
  if (results.DataSetIsMix) {
    row[0] = results.RankInDataSet(index);
    row[1] = "(" + runner.ClassName() + ")";
  }
  return row;
}

void MakeResultTitleRow(std::string& out, const clsResultsHolder& results) {
  // The "#" after the color stays: programs that read these pages expect it.
  out += "<tr align=\"left\" width=\"500\" bgcolor=\"#000080#\">\r\n";
  out += "<td colspan=\"6\" class=\"result-title\"><font color=\"#ffffff\" size=\"+1\"><b>&nbsp;";
  AppendEscaped(out, TitleName(results.DataSetName()));
  out += "</b></font>";
  if (results.Length != 0) {
    out += "<font color=\"#ffffff\"> - ";
    out += LengthAndClimb(results.Length, results.Climb, "\u2191");
    out += "</font>";
  }
  out += "</td></tr>\r\n";
}

void MakeBorderRow(std::string& out) {
  out += "<tr width=\"500\" class=\"r-border\">\r\n<td colspan=\"6\"><hr></td></tr>\r\n";
}

void MakeResultRow(std::string& out, const RowValues& row, const ColumnAttributes& columns,
                   bool even) {
  out += even ? "<tr bgcolor=\"#eeeeee\" width=\"500\" class=\"r-even\">\r\n"
              : "<tr width=\"500\" class=\"r-odd\">\r\n";
  for (std::size_t column = 0; column < kColumns; ++column) {
    out.append("<td").append(columns[column]).append(" class=\"r-rank");
    AppendEscaped(out, row[0]);
    out += "\">";
    if (row[column].empty()) out += "&nbsp;";
    AppendEscaped(out, row[column]);
    out += "</td>";
  }
  out += "</tr>\r\n";
}

// A line across the table before the first runner ranked below the cut-off rank. Runners without a
// numeric rank never cause it.
void MakeResultLines(std::string& out, const clsResultsHolder& results) {
  const ColumnAttributes& columns = results.DataSetIsMix ? kMixedColumns : kSingleColumns;
  bool border_pending = results.CutOffRank > 0;
  for (std::int32_t index = 1; index <= results.Count(); ++index) {
    const RowValues row = ReadRow(results, index);
    const auto rank = NumericValue(row[0]);
    if (border_pending && rank && *rank > results.CutOffRank) {
      MakeBorderRow(out);
      border_pending = false;
    }
    MakeResultRow(out, row, columns, index % 2 == 0);
  }
}

}  // namespace

void AppendResultPage(std::string& out, const clsResultsHolder& results, std::string_view top_value,
                      std::string_view link_style_file, std::string_view charset) {
  out += "<html>\r\n";
  MakeHead(out, {.LinkStyleFile = link_style_file, .Charset = charset});
  out += "<body>\r\n";
  out.append(top_value).append(kCrLf);
  out +=
      "<table border=\"0\" cellspacing=\"0\" cellpadding=\"1\" bgcolor=\"white\" class=\"result\">";
  out += kCrLf;
  MakeResultTitleRow(out, results);
  MakeResultLines(out, results);
  out += "</table></body></html>";
}

}  // namespace keltrun
