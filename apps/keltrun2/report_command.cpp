#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "apps/keltrun2/commands.h"
#include "apps/keltrun2/data_sets.h"
#include "apps/keltrun2/event_input.h"
#include "apps/keltrun2/files.h"

namespace keltrun::cli {
namespace {

// Courses that share many controls make more segments than anybody looks at, and each has all its
// runners once more. The first ones are those of the first courses.
constexpr std::size_t kMostSegments = 40;

// Every class, every course that classes share, and the segments that courses share.
std::vector<ChosenSet> ReportedSets(clsKeltrun2& root, const Options& options) {
  std::vector<ChosenSet> sets = ChosenSets(root, options);
  for (std::int32_t i = 1; i <= root.SegmentCount(); ++i) {
    if (static_cast<std::size_t>(i) > kMostSegments) break;
    sets.push_back({DataSetKind::kSegment, i, root.SegmentData(i)});
  }
  return sets;
}

}  // namespace

void WriteReport(clsKeltrun2& root, const Options& options) {
  CheckReport(options);
  LoadEvent(root, options);
  std::vector<clsHtmlControl::ViewerSet> sets;
  for (const auto& [analyzer, kind] : AnalysesOfAll(root, ReportedSets(root, options), options)) {
    if (analyzer->Count() == 0) continue;
    analyzer->ExtraAnalyze();
    sets.push_back({analyzer, kind});
  }
  const auto estimate = root.NewEstimate(options.untimed);
  WriteOutput(options.output, root.HtmlControl()->OutputViewer(sets, estimate));
}

}  // namespace keltrun::cli
