#include "keltrun2/io/foreign/line_cells.h"

#include <algorithm>

#include "keltrun2/text/letters.h"

namespace keltrun {

void LineCells::Split(std::string_view line, char separator) {
  cells_.clear();
  is_cut_ = false;
  for (std::size_t end = line.find(separator);; end = line.find(separator)) {
    if (cells_.size() == kMost) {
      is_cut_ = true;
      return;
    }
    cells_.push_back(line.substr(0, end));
    if (end == std::string_view::npos) return;
    line.remove_prefix(end + 1);
  }
}

std::string_view LineCells::operator[](std::size_t index) const { return TrimSpaces(Raw(index)); }

std::string_view LineCells::Raw(std::size_t index) const {
  return index < cells_.size() ? cells_[index] : std::string_view();
}

std::size_t LineCells::Used() const {
  std::size_t used = cells_.size();
  while (used > 0 && TrimSpaces(cells_[used - 1]).empty()) --used;
  return used;
}

std::string LineCells::Joined(std::size_t first, std::size_t end) const {
  std::string text;
  for (std::size_t i = first; i < end; ++i) {
    if (i > first) text += ", ";
    text += (*this)[i];
  }
  return text;
}

void LineCount::Remark(RemarkSeverity severity, std::string_view subject,
                       std::string_view consequence, RemarkList& remarks) const {
  if (count_ == 0) return;
  const std::string lines = std::to_string(count_) + (count_ == 1 ? " line" : " lines");
  remarks.Add(severity, first_, 0, subject, "", std::string(consequence) + " (" + lines + ")");
}

bool IsWrittenAsTime(std::string_view cell) {
  if (cell.starts_with('-')) cell.remove_prefix(1);
  return !cell.empty() && IsDigit(cell.front()) && Contains(cell, ":") &&
         cell.find_first_not_of("0123456789:.,") == std::string_view::npos;
}

bool IsNoTimeMark(std::string_view cell) {
  return cell.find_first_not_of("-:. ") == std::string_view::npos;
}

std::optional<DateTime> EventDate(std::string_view text) {
  std::string slashes(text);
  std::replace(slashes.begin(), slashes.end(), '-', '/');
  return HeaderDate(slashes);
}

}  // namespace keltrun
