#include "keltrun2/chart/name_placement.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "keltrun2/codec/utf8.h"

namespace keltrun {
namespace {

constexpr double kRowHeight = 2;
constexpr std::string_view kWideBlank = "\u3000";

// Rounded to the nearest row, so that boxes one below the other never share one.
long FirstRow(const ChartBox& box) { return std::lround(box.Top / kRowHeight); }
long EndRow(const ChartBox& box) { return std::lround(box.Bottom / kRowHeight); }

// Labels that touch each other and move as one.
struct Block {
  double sum;  // of the wanted left ends of the whole row of labels, each less the widths before it
  std::size_t count;
  double Mean() const { return sum / static_cast<double>(count); }
};

}  // namespace

bool SpreadLabels(double from, double to, std::vector<RowLabel>& labels) {
  double total = 0;
  for (const RowLabel& label : labels) total += label.Width;
  if (total > to - from) return false;
  // When the widths before each label are subtracted, the only rule left is that no label is to the
  // left of the one before. The nearest such positions are means of neighbors that would otherwise
  // change places.
  std::vector<Block> blocks;
  double before = 0;
  for (const RowLabel& label : labels) {
    blocks.push_back({label.Center - label.Width / 2 - before, 1});
    before += label.Width;
    while (blocks.size() > 1 && (blocks.end() - 2)->Mean() > blocks.back().Mean()) {
      const Block last = blocks.back();
      blocks.pop_back();
      blocks.back().sum += last.sum;
      blocks.back().count += last.count;
    }
  }
  before = 0;
  std::size_t next = 0;
  for (const Block& block : blocks) {
    const double left = std::clamp(block.Mean(), from, to - total);
    for (const std::size_t end = next + block.count; next < end; ++next) {
      labels[next].Center = left + before + labels[next].Width / 2;
      before += labels[next].Width;
    }
  }
  return true;
}

bool TakenSpace::IsFree(const ChartBox& box) const {
  const auto end = rows_.lower_bound(EndRow(box));
  for (auto row = rows_.lower_bound(FirstRow(box)); row != end; ++row) {
    const auto next = row->second.lower_bound(box.Right);
    if (next != row->second.begin() && std::prev(next)->second > box.Left) return false;
  }
  return true;
}

void TakenSpace::Take(const ChartBox& box) {
  for (long number = FirstRow(box); number < EndRow(box); ++number) {
    Row& row = rows_[number];
    double left = box.Left;
    double right = box.Right;
    auto next = row.upper_bound(right);
    while (next != row.begin() && std::prev(next)->second >= left) {
      const auto touched = std::prev(next);
      left = std::min(left, touched->first);
      right = std::max(right, touched->second);
      next = row.erase(touched);
    }
    row[left] = right;
  }
}

void TakenSpace::TakeLine(ChartPoint from, ChartPoint to) {
  if (from.Y > to.Y) std::swap(from, to);
  const double slope = to.Y > from.Y ? (to.X - from.X) / (to.Y - from.Y) : 0;
  const auto last = std::lround(std::floor(to.Y / kRowHeight));
  for (auto row = std::lround(std::floor(from.Y / kRowHeight)); row <= last; ++row) {
    // Where the line enters and leaves the row.
    const double top = kRowHeight * static_cast<double>(row);
    const double bottom = std::min(top + kRowHeight, to.Y);
    const double enters = from.X + slope * std::max(top - from.Y, 0.0);
    const double leaves = slope == 0 ? to.X : from.X + slope * (bottom - from.Y);
    Take({std::min(enters, leaves), top, std::max(enters, leaves), top + kRowHeight});
  }
}

std::string_view FirstWord(std::string_view name) {
  const auto skip = [&](std::string_view blank) {
    while (name.starts_with(blank)) name.remove_prefix(blank.size());
  };
  skip(" ");
  skip(kWideBlank);
  return name.substr(0, std::min(name.find(' '), name.find(kWideBlank)));
}

std::string_view CutToWidth(const clsChartWrapper& pen, std::string_view text, double width) {
  std::size_t end = 0;
  while (end < text.size()) {
    std::size_t next = end;
    NextCodePoint(text, next);
    if (pen.TextWidth(text.substr(0, next)) > width) break;
    end = next;
  }
  return text.substr(0, end);
}

}  // namespace keltrun
