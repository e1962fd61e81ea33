// Room for names that do not cover each other.
#pragma once

#include <map>
#include <string_view>
#include <vector>

#include "keltrun2/chart/chart_geometry.h"
#include "keltrun2/chart/chart_wrapper.h"

namespace keltrun {

/// A piece of a row that a label wants.
struct RowLabel {
  double Center = 0;  // the wanted one, then the assigned one
  double Width = 0;   // including the space to its neighbors
};

/// Moves labels, in ascending order of the centers that they want, so that they do not overlap and
/// stay within `from` to `to`, each as near to its wanted center as the others allow (least
/// squares). False, changing nothing, when together they are wider than that.
bool SpreadLabels(double from, double to, std::vector<RowLabel>& labels);

/// The parts of a plane that are taken. Taking a part and looking one up are fast however many
/// there are; heights are rounded to rows of two units.
class TakenSpace {
 public:
  bool IsFree(const ChartBox& box) const;
  void Take(const ChartBox& box);
  void TakeLine(ChartPoint from, ChartPoint to);

 private:
  using Row = std::map<double, double>;  // left to right end of what is taken, without overlaps
  std::map<long, Row> rows_;
};

/// The name up to its first blank: the family name of a Japanese name, a Latin name's first word.
std::string_view FirstWord(std::string_view name);

/// The longest beginning of a text, in whole characters, that is at most `width` wide.
std::string_view CutToWidth(const clsChartWrapper& pen, std::string_view text, double width);

}  // namespace keltrun
