#include "keltrun2/io/text_reading.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "keltrun2/codec/utf8.h"
#include "keltrun2/model/lap_data_internal.h"
#include "keltrun2/model/result_status.h"
#include "keltrun2/model/time_text.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/numbers.h"
#include "keltrun2/text/utf16.h"
#include "keltrun2/text/width.h"

namespace keltrun {
namespace {

constexpr std::size_t kShownUnits = 40;  // of a cell in a remark

// The part of a cell that can be a time: half width, without a remark in parentheses after it.
std::string_view TimePart(std::string_view cell, std::string& folded) {
  if (!IsAscii(cell)) cell = folded = ToHalfWidth(cell);
  return TrimSpaces(cell.substr(0, cell.find('(')));
}

// Longer numbers are those of cards or runners.
constexpr std::size_t kMostTimeDigits = 6;

bool IsTwoDigitsBelow60(std::string_view text) {
  return text.size() == 2 && IsDigits(text) && text[0] <= '5';
}

// The two parts of "12.34"; the first can be empty. nullopt for other texts.
std::optional<std::pair<std::string_view, std::string_view>> DecimalParts(std::string_view text) {
  const std::size_t point = text.find('.');
  if (point == std::string_view::npos || point + 1 == text.size()) return std::nullopt;
  const std::pair parts{text.substr(0, point), text.substr(point + 1)};
  if (!IsDigits(parts.first) || !IsDigits(parts.second)) return std::nullopt;
  return parts;
}

std::optional<DateTime> NormalizedTime(std::string_view text) {
  const std::string normal = NormalizeTimeText(text, Digits::kElapsed);
  if (!IsTimeText(normal)) return std::nullopt;
  const DateTime time = ParseSignedTime(normal, false, false, kNoTime);
  if (time < 0) return std::nullopt;
  return time;
}

CellValue DigitsTime(std::string_view digits, NumberMeaning numbers) {
  if (digits.size() > kMostTimeDigits) return {};
  const bool only_seconds = digits.size() <= 2;
  const NumberHint hint = only_seconds ? NumberHint::kNone : NumberHint::kDigits;
  if (only_seconds || numbers == NumberMeaning::kSeconds) {
    return {Canonical(NumericLong(digits) / kSecondsPerDay), false, hint};
  }
  return {NormalizedTime(digits), false, hint};
}

CellValue DecimalTime(std::string_view whole, std::string_view decimals, NumberMeaning numbers) {
  if (whole.size() > kMostTimeDigits) return {};
  const std::int32_t number = NumericLong(whole);
  const bool either = !whole.empty() && IsTwoDigitsBelow60(decimals);
  if (either && numbers == NumberMeaning::kMinutesSeconds) {
    const double seconds = number * 60.0 + NumericLong(decimals);
    return {Canonical(seconds / kSecondsPerDay), false, NumberHint::kEither};
  }
  const double seconds = number + ParseFraction(decimals).value_or(0);
  return {Canonical(seconds / kSecondsPerDay), true,
          either ? NumberHint::kEither : NumberHint::kSeconds};
}

// "h.mm.ss" with colons; any other text unchanged.
std::string WithColons(std::string_view text) {
  std::string colons(text);
  if (text.size() < 7 || !IsTwoDigitsBelow60(text.substr(text.size() - 2))) return colons;
  const std::size_t first = text.size() - 6;
  const std::size_t second = text.size() - 3;
  if (text[first] != '.' || text[second] != '.' || !IsDigits(text.substr(0, first))) return colons;
  colons[first] = colons[second] = ':';
  return colons;
}

// Reads the notations with separators.
CellValue SeparatedTime(std::string_view text) {
  const std::size_t point = text.find('.');
  const std::string_view whole = text.substr(0, point);
  const bool has_fraction = point != std::string_view::npos && point + 1 < text.size() &&
                            whole.find(':') != std::string_view::npos &&
                            IsDigits(text.substr(point + 1));
  if (!has_fraction) return {NormalizedTime(WithColons(text))};
  const auto time = NormalizedTime(whole);
  if (!time) return {};
  const double fraction = ParseFraction(text.substr(point + 1)).value_or(0);
  return {Canonical(*time + fraction / kSecondsPerDay), true};
}

// A number as a time of day; nullopt when it cannot be one.
std::optional<DateTime> NumberClock(std::string_view number) {
  if (IsDigits(number) && number.size() <= kMostTimeDigits) {
    return ParseDateTime(NormalizeTimeText(number, Digits::kClock));
  }
  const auto parts = DecimalParts(number);
  if (!parts || parts->second.size() != 2) return std::nullopt;
  return ParseDateTime(std::string(parts->first) + ":" + std::string(parts->second));
}

std::optional<DateTime> AnyClock(std::string_view text) {
  if (const auto time = ParseTimeOfDay(text)) return time;
  if (NumericValue(text)) return NumberClock(text);
  if (const auto time = ParseDateTime(WithColons(text))) return time;
  return ParseDateTime(NormalizeTimeText(text, Digits::kClock));
}

std::string RemarkText(std::string_view subject, std::string_view cell,
                       std::string_view consequence) {
  std::string text(subject);
  if (!cell.empty()) {
    const std::string_view shown = Utf16Prefix(cell, kShownUnits);
    text.append(" \"").append(shown).append(shown.size() < cell.size() ? "...\"" : "\"");
  }
  text.append(": ").append(consequence);
  return text;
}

// The text of a remark without its cell, each number replaced by "#".
std::string RemarkKind(std::string_view subject, std::string_view consequence) {
  std::string kind(subject);
  kind += ": ";
  bool in_number = false;
  for (const char c : consequence) {
    if (!IsDigit(c)) {
      kind += c;
    } else if (!in_number) {
      kind += '#';
    }
    in_number = IsDigit(c);
  }
  return kind;
}

}  // namespace

LineCursor::LineCursor(std::string_view text)
    : text_(text), feed_(std::min(text.find('\n'), text.size())) {
  Next();
}

void LineCursor::Next() {
  if (at_end_) return;
  ++number_;
  if (next_ >= text_.size()) {
    at_end_ = true;
    line_ = {};
    return;
  }
  // The position of the next LF is kept, so that a text without LF is not searched for every line.
  if (feed_ < next_) feed_ = std::min(text_.find('\n', next_), text_.size());
  const std::string_view ahead = text_.substr(next_, feed_ - next_);
  const std::size_t end = next_ + std::min(ahead.find('\r'), ahead.size());
  line_ = text_.substr(next_, end - next_);
  next_ = end + (end < feed_ && end + 1 == feed_ && feed_ < text_.size() ? 2 : 1);
}

void LineCursor::Skip(std::int32_t lines) {
  for (; lines > 0 && !at_end_; --lines) Next();
}

void RemarkList::Add(RemarkSeverity severity, std::int32_t line, std::int32_t column,
                     std::string_view subject, std::string_view cell,
                     std::string_view consequence) {
  if (remarks_.size() >= kMost) {
    ++more_;
    return;
  }
  remarks_.push_back({line, column, severity, RemarkText(subject, cell, consequence),
                      RemarkKind(subject, consequence)});
}

void RemarkList::AddFirst(std::int32_t line, std::int32_t column, std::string_view subject,
                          std::string_view cell, std::string_view consequence) {
  if (remarks_.size() >= kMost) {
    remarks_.pop_back();
    ++more_;
  }
  remarks_.insert(remarks_.begin(),
                  {line, column, RemarkSeverity::kNote, RemarkText(subject, cell, consequence),
                   RemarkKind(subject, consequence)});
}

std::vector<LoadRemark> RemarkList::Take() {
  if (more_ > 0) {
    remarks_.push_back(
        {0, 0, RemarkSeverity::kWarning, std::to_string(more_) + " more remarks", ""});
  }
  return std::move(remarks_);
}

std::size_t BlankControlCharacters(std::string& text) {
  const auto is_control = [](char c) {
    return (static_cast<unsigned char>(c) < 0x20) & (c != '\t') & (c != '\n') & (c != '\r');
  };
  std::uint8_t any = 0;  // there is hardly ever one; with bytes, many are compared at once
  for (const char c : text) any |= static_cast<std::uint8_t>(is_control(c));
  if (any == 0) return 0;
  const auto count = std::count_if(text.begin(), text.end(), is_control);
  std::replace_if(text.begin(), text.end(), is_control, ' ');
  return static_cast<std::size_t>(count);
}

CellValue ReadCellTime(std::string_view cell, NumberMeaning numbers) {
  if (const auto plain = ParsePlainTime(cell)) return {plain};
  std::string folded;
  const std::string_view text = TimePart(cell, folded);
  if (text.find_first_of("0123456789") == std::string_view::npos) return {};
  if (IsDigits(text)) return DigitsTime(text, numbers);
  if (const auto parts = DecimalParts(text))
    return DecimalTime(parts->first, parts->second, numbers);
  if (NumericValue(text) || text.front() == '-') return {};  // a sign or an exponent
  return SeparatedTime(text);
}

std::optional<DateTime> CellTime(std::string_view cell) { return ReadCellTime(cell).time; }

bool IsNegative(std::string_view cell) {
  const std::string_view text = TrimSpaces(cell);
  return text.starts_with('-') || text.starts_with("\uFF0D") || text.starts_with("\u2212");
}

std::string ResultText(DateTime time, bool has_fraction) {
  // From 24 hours on, the tenths would follow the time of day.
  return FormatTime(time, "h\\:nn\\:ss", has_fraction && time < 1);
}

bool CutsResult(DateTime time) {
  const auto milliseconds = std::llround(time * kSecondsPerDay * 1000);
  return milliseconds % (time < 1 ? 100 : 1000) != 0;
}

void RemarkCutResults(std::size_t cut, RemarkList& remarks) {
  if (cut == 0) return;
  remarks.Add(RemarkSeverity::kWarning, 0, 0, "results", "",
              std::to_string(cut) + (cut == 1 ? " has" : " have") +
                  " decimals that are dropped: a result has tenths of a second, and none from 24 "
                  "hours on");
}

void SetResultWord(clsLapData& runner, std::string_view text) {
  runner.SetResult(text);
  const std::string& stored = runner.Result();
  if (stored.empty() || !IsDigit(stored.front()) || !Contains(stored, ":")) return;
  if (!ReadableTime(stored)) LapDataInternal::SetResultText(runner, text);
}

std::optional<DateTime> CellClock(std::string_view cell) {
  std::string folded;
  const auto time = AnyClock(TimePart(cell, folded));
  if (time && IsTimeOfDay(*time)) return time;
  return std::nullopt;
}

std::optional<DateTime> HeaderDate(std::string_view text) {
  return ParseDateTime(ToHalfWidth(text));
}

}  // namespace keltrun
