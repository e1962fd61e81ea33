#include "keltrun2/analysis/analyzed_runner_data.h"

#include "keltrun2/base/automation_error.h"
#include "keltrun2/model/lap_data_internal.h"
#include "keltrun2/model/time_text.h"

namespace keltrun {

const clsAnalyzedRunnerData::LegFigures& clsAnalyzedRunnerData::Leg(std::int32_t index) const {
  CheckIndex(index, 0, kMostAnalyzedLegs, "clsAnalyzedRunnerData");
  return legs_[static_cast<std::size_t>(index)];
}

clsAnalyzedRunnerData::LegFigures& clsAnalyzedRunnerData::Leg(std::int32_t index) {
  CheckIndex(index, 0, kMostAnalyzedLegs, "clsAnalyzedRunnerData");
  return legs_[static_cast<std::size_t>(index)];
}

std::string clsAnalyzedRunnerData::SplitRankToString(std::int32_t Index, bool UseHyphen,
                                                     bool UseParentheses) const {
  return RankToString(SplitRank(Index), UseHyphen, UseParentheses);
}

std::string clsAnalyzedRunnerData::LapRankToString(std::int32_t Index, bool UseHyphen,
                                                   bool UseParentheses) const {
  return RankToString(LapRank(Index), UseHyphen, UseParentheses);
}

std::string clsAnalyzedRunnerData::ModifiedSplitRankToString(std::int32_t Index, bool UseHyphen,
                                                             bool UseParentheses) const {
  return RankToString(ModifiedSplitRank(Index), UseHyphen, UseParentheses);
}

std::string clsAnalyzedRunnerData::ModifiedLapRankToString(std::int32_t Index, bool UseHyphen,
                                                           bool UseParentheses) const {
  return RankToString(ModifiedLapRank(Index), UseHyphen, UseParentheses);
}

DateTime clsAnalyzedRunnerData::LapTime(std::int32_t Index) const {
  CheckIndex(Index, 0, kMostAnalyzedLegs, "clsAnalyzedRunnerData.LapTime");
  return LapDataInternal::Lap(*other_data_, Index);
}

std::string clsAnalyzedRunnerData::LapTimeToString(std::int32_t Index,
                                                   std::string_view FormatExpression, bool Compact,
                                                   std::string_view NoDataValue,
                                                   std::string_view SkipValue,
                                                   std::string_view DisqValue) const {
  return TimeToString(LapTime(Index), FormatExpression, Compact, NoDataValue, SkipValue, DisqValue);
}

std::string clsAnalyzedRunnerData::SplitTimeToString(std::int32_t Index,
                                                     std::string_view FormatExpression,
                                                     bool Compact, std::string_view NoDataValue,
                                                     std::string_view SkipValue,
                                                     std::string_view DisqValue) const {
  return TimeToString(SplitTime(Index), FormatExpression, Compact, NoDataValue, SkipValue,
                      DisqValue);
}

std::string clsAnalyzedRunnerData::ModifiedLapTimeToString(
    std::int32_t Index, std::string_view FormatExpression, bool Compact,
    std::string_view NoDataValue, std::string_view SkipValue, std::string_view DisqValue) const {
  return SplitTimeToString(Index, FormatExpression, Compact, NoDataValue, SkipValue, DisqValue);
}

std::string clsAnalyzedRunnerData::ModifiedSplitTimeToString(
    std::int32_t Index, std::string_view FormatExpression, bool Compact,
    std::string_view NoDataValue, std::string_view SkipValue, std::string_view DisqValue) const {
  return TimeToString(ModifiedSplitTime(Index), FormatExpression, Compact, NoDataValue, SkipValue,
                      DisqValue);
}

std::string clsAnalyzedRunnerData::Result() const {
  if (!other_data_->Result().empty()) return other_data_->Result();
  const std::int32_t last = other_data_->LegCount();
  if (last < 0 || last > kMostAnalyzedLegs || !IsValidSplitTime(last)) return "";
  return SplitTimeToString(last, "h:nn:ss");
}

}  // namespace keltrun
