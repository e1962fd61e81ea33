#include "keltrun2/report/result_text.h"

#include "keltrun2/text/cells.h"
#include "keltrun2/text/width.h"

namespace keltrun {
namespace {

// Widths in display columns.
constexpr std::size_t kRankWidth = 6;
constexpr std::size_t kClassWidth = 8;
constexpr std::size_t kNameWidth = 14;
constexpr std::size_t kResultWidth = 10;

std::string Left(std::string_view text, std::size_t width) {
  return PadByWidth(InLine(text), width, false, true);
}

std::string Right(std::string_view text, std::size_t width) {
  return PadByWidth(InLine(text), width, true, true);
}

// The official rank, if the data set is a single class that has official ranks.
void AppendRank(std::string& out, const clsResultsHolder& results, std::int32_t index) {
  const clsLapData& runner = *results.Item(index);
  const bool official = !results.DataSetIsMix && results.RankIsAvalilable();
  out += Right(official ? runner.Rank : results.RankInDataSet(index), kRankWidth);
  if (results.DataSetIsMix) out += " (" + Left(runner.ClassName(), kClassWidth) + ")  ";
}

}  // namespace

void AppendResultText(std::string& out, const clsResultsHolder& results) {
  out += "* " + InLine(results.DataSetName()) + " " + results.ClassInfo() + "\r\n";
  for (std::int32_t index = 1; index <= results.Count(); ++index) {
    const clsLapData& runner = *results.Item(index);
    AppendRank(out, results, index);
    out += "  " + Left(runner.RunnerName, kNameWidth) + Right(runner.Result(), kResultWidth) + "  ";
    AppendInLine(out, runner.ClubName);
    out += "\r\n";
  }
  out += "\r\n";
}

}  // namespace keltrun
