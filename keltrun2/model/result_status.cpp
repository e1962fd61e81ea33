#include "keltrun2/model/result_status.h"

#include "keltrun2/codec/utf8.h"
#include "keltrun2/config/settings.h"
#include "keltrun2/model/time_text.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/numbers.h"
#include "keltrun2/text/width.h"

namespace keltrun {
namespace {

constexpr std::int32_t kLooksLikeTime = 0;
constexpr std::int32_t kMispunched = 50;
constexpr std::int32_t kDidNotFinish = 90;
constexpr std::int32_t kControlClosed = 91;
constexpr std::int32_t kDidNotQualify = 92;
constexpr std::int32_t kDisqualified = 93;
constexpr std::int32_t kUnknownStatus = 98;
constexpr std::int32_t kDidNotStart = 99;

std::string NormalizeStatus(std::string_view text) {
  if (IsJapaneseMode()) return UpperAll(TrimSpaces(ToHalfWidth(text)));
  return UpperAscii(TrimSpaces(text));
}

// Any one character followed by "CL": the runner was over time and the control was closed.
bool IsControlClosed(std::string_view text) {
  if (text.empty()) return false;
  std::size_t pos = 0;
  NextCodePoint(text, pos);
  return text.substr(pos) == "CL";
}

std::string_view OutcomeOfResult(std::string_view result) {
  if (IsFinished(result)) return "ok";
  switch (ResultStatusCode(result)) {
    case kLooksLikeTime:
    case kUnknownStatus:
      return "";
    case kDidNotFinish:
      return "dnf";
    case kDidNotStart:
      return "dns";
    case kControlClosed:
    case kDidNotQualify:
    case kDisqualified:
      return "dsq";
    default:
      return "mp";
  }
}

}  // namespace

std::optional<DateTime> FinishTime(std::string_view result) { return ParseTimeOfDay(result); }

std::optional<DateTime> TotalTime(std::string_view result) {
  if (const auto time = FinishTime(result)) return time;
  if (IsTimeText(result)) return ParseSignedTime(result, false, false, 0);
  return std::nullopt;
}

bool IsFinished(std::string_view result) { return TotalTime(result).has_value(); }

std::optional<DateTime> ReadableTime(std::string_view result) {
  const DateTime time = ParseTime(result, kNoTime);
  if (time == kNoTime) return std::nullopt;
  return time;
}

std::int32_t ResultStatusCode(std::string_view text) {
  const std::string status = NormalizeStatus(text);
  if (status.empty()) return kUnknownStatus;
  if (status.find_first_of("':") != std::string::npos) return kLooksLikeTime;
  if (status == "DNS") return kDidNotStart;
  if (status.front() == 'P') return NumericLong(std::string_view(status).substr(1));
  if (status == "MP") return kMispunched;
  if (status == "DNF") return kDidNotFinish;
  if (IsControlClosed(status)) return kControlClosed;
  if (status == "DNQ") return kDidNotQualify;
  if (status.front() == 'D') return kDisqualified;
  return kUnknownStatus;
}

DateTime ResultSortKey(std::string_view result) {
  if (const auto time = ReadableTime(result)) return *time;
  const std::int32_t code = ResultStatusCode(result);
  return code > 0 ? code : kUnknownStatus;
}

DateTime ClassSortKey(std::string_view result) {
  const auto time = FinishTime(result);
  return time ? *time : ResultStatusCode(result);
}

std::string_view OutcomeCode(RunnerStatus status, std::string_view result) {
  switch (status) {
    case RunnerStatus::kOk:
    case RunnerStatus::kFinished:
      return "ok";
    case RunnerStatus::kMissingPunch:
      return "mp";
    case RunnerStatus::kDisqualified:
    case RunnerStatus::kOverTime:
      return "dsq";
    case RunnerStatus::kDidNotFinish:
    case RunnerStatus::kSportingWithdrawal:
      return "dnf";
    case RunnerStatus::kNotCompeting:
      return "nc";
    case RunnerStatus::kDidNotStart:
    case RunnerStatus::kDidNotEnter:
    case RunnerStatus::kCancelled:
      return "dns";
    case RunnerStatus::kUnknown:
    case RunnerStatus::kActive:
    case RunnerStatus::kInactive:
    case RunnerStatus::kMoved:
    case RunnerStatus::kMovedUp:
      break;
  }
  return OutcomeOfResult(result);
}

}  // namespace keltrun
