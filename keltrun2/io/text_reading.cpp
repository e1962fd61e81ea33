#include "keltrun2/io/text_reading.h"

#include <algorithm>
#include <utility>

#include "keltrun2/model/time_text.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/utf16.h"
#include "keltrun2/text/width.h"

namespace keltrun {
namespace {

constexpr std::size_t kShownUnits = 40;  // of a cell in a remark

// "m:ss", "mm:ss" or hours in front of two digits each: what nearly every cell holds. nullopt
// says only that the full rules have to decide.
std::optional<DateTime> PlainTime(std::string_view cell) {
  const std::size_t colon = cell.find(':');
  if (colon == 0 || colon > 2) return std::nullopt;
  int part = 0;
  for (const char c : cell.substr(0, colon)) {
    if (!IsDigit(c)) return std::nullopt;
    part = part * 10 + (c - '0');
  }
  std::string_view rest = cell.substr(colon);
  const bool has_hours = rest.size() == 6;
  if (!has_hours && rest.size() != 3) return std::nullopt;
  if (part > (has_hours ? 23 : 59)) return std::nullopt;
  int seconds = part;
  for (; !rest.empty(); rest.remove_prefix(3)) {
    if (rest[0] != ':' || !IsDigit(rest[1]) || !IsDigit(rest[2]) || rest[1] > '5') {
      return std::nullopt;
    }
    seconds = seconds * 60 + (rest[1] - '0') * 10 + (rest[2] - '0');
  }
  return Canonical(seconds / kSecondsPerDay);
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
  // The next LF is kept: a text with CR alone must not be searched for it once per line.
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
  std::string text(subject);
  if (!cell.empty()) {
    const std::string_view shown = Utf16Prefix(cell, kShownUnits);
    text.append(" \"").append(shown).append(shown.size() < cell.size() ? "...\"" : "\"");
  }
  text.append(": ").append(consequence);
  remarks_.push_back({line, column, severity, std::move(text)});
}

std::vector<LoadRemark> RemarkList::Take() {
  if (more_ > 0) {
    remarks_.push_back({0, 0, RemarkSeverity::kWarning, std::to_string(more_) + " more remarks"});
  }
  return std::move(remarks_);
}

std::size_t BlankControlCharacters(std::string& text) {
  const auto is_control = [](char c) {
    return static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r';
  };
  int any = 0;  // hardly ever; this loop takes many bytes at a time
  for (const char c : text) any |= is_control(c) ? 1 : 0;
  if (any == 0) return 0;
  const auto count = std::count_if(text.begin(), text.end(), is_control);
  std::replace_if(text.begin(), text.end(), is_control, ' ');
  return static_cast<std::size_t>(count);
}

std::optional<DateTime> CellTime(std::string_view cell) {
  if (const auto plain = PlainTime(cell)) return plain;
  return NormalizedTime(NormalizeTimeText(cell, Digits::kElapsed));
}

std::optional<DateTime> NormalizedTime(std::string_view normalized) {
  if (!IsTimeText(normalized)) return std::nullopt;
  const DateTime time = ParseSignedTime(normalized, false, false, -1);
  if (time < 0) return std::nullopt;
  return time;
}

std::optional<DateTime> HeaderDate(std::string_view text) {
  return ParseDateTime(ToHalfWidth(text));
}

}  // namespace keltrun
