#include "keltrun2/io/foreign/table_cells.h"

#include <algorithm>

#include "keltrun2/model/lap_data_internal.h"
#include "keltrun2/text/datetime.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/numbers.h"

namespace keltrun {

std::int64_t FinishLeg(const RunnerFacts& runner, const SplitTimes& splits, std::int64_t last) {
  if (runner.time == kNoMilliseconds) return 0;
  if (!runner.TimeCounts() && !splits.HasMissing()) return 0;
  const std::int64_t leg = RoundedSeconds(runner.time) - last;
  if (leg > 0) return leg;
  // The result contradicts the laps.
  const DateTime lap = LapDataInternal::Lap(*runner.record, splits.ControlCount() + 1);
  return lap > 0 ? RoundedSeconds(ToMilliseconds(lap)) : 0;
}

void AppendTimeCell(std::string& out, std::int64_t seconds, char separator, bool short_form) {
  const std::int64_t hours = seconds / 3600;
  const auto minutes = static_cast<int>(seconds / 60 % 60);
  if (hours > 0 || !short_form) {
    AppendInteger(out, hours);
    out += separator;
    AppendTwoDigits(out, minutes);
  } else {
    AppendInteger(out, minutes);
  }
  out += separator;
  AppendTwoDigits(out, static_cast<int>(seconds % 60));
}

void AppendClockCell(std::string& out, std::int64_t seconds, char separator, bool with_seconds) {
  AppendTwoDigits(out, static_cast<int>(seconds / 3600 % 24));
  out += separator;
  AppendTwoDigits(out, static_cast<int>(seconds / 60 % 60));
  if (!with_seconds) return;
  out += separator;
  AppendTwoDigits(out, static_cast<int>(seconds % 60));
}

void AppendWithout(std::string& out, std::string_view text, std::string_view characters) {
  text = TrimSpaces(text);
  const std::size_t begin = out.size();
  out.append(text);
  for (std::size_t i = begin; i < out.size(); ++i) {
    const char c = out[i];
    const bool is_control = static_cast<unsigned char>(c) < ' ' || c == 0x7F;
    if (is_control || characters.find(c) != std::string_view::npos) out[i] = ' ';
  }
}

}  // namespace keltrun
