// A class or course of a site: its pages and pictures.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/analysis/results_holder.h"
#include "keltrun2/chart/chart_object.h"
#include "keltrun2/codec/encodings.h"
#include "keltrun2/drawing/cairo_picture.h"
#include "keltrun2/model/event_model.h"
#include "keltrun2/site/event_sets.h"
#include "keltrun2/site/folder_writer.h"
#include "keltrun2/site/output_names.h"
#include "keltrun2/site/site_options.h"

namespace keltrun {

inline constexpr std::string_view kNewWindow = " target=\"_blank\"";

// The pages of a class or course, in the order of their links.
enum PageKind : std::size_t { kResultPage, kAnalysisPage, kLegDataPage, kChartPage, kPageKinds };

struct PageOptions {
  std::string SiteOptions::*pattern;
  bool SiteOptions::*include_course;
  std::string_view link_text_key;
};
inline constexpr std::array<PageOptions, kPageKinds> kPages = {{
    {&SiteOptions::ResultFile, &SiteOptions::ResultIncludeCourse, "RES_META_RESULT_LIST"},
    {&SiteOptions::AnalysisFile, &SiteOptions::AnalysisIncludeCourse, "RES_META_SPLITS_ANALYSIS"},
    {&SiteOptions::LegDataFile, &SiteOptions::LegDataIncludeCourse, "RES_META_LEG_ANALYSIS"},
    {&SiteOptions::ChartFile, &SiteOptions::ChartIncludeCourse, "RES_META_CHART"},
}};

// A class or course of the site.
struct Entry {
  ClassAndCourseChoice choice;
  std::vector<std::shared_ptr<clsClassData>> classes;
  std::array<std::string, kPageKinds> names;  // of the pages, "" for one that is not wanted
  PictureNames charts;
  bool has_results = false;  // a runner has a result, so there is a result list

  bool IsCourse() const { return choice.ClassIndex == 0; }
  bool Wants(PageKind kind) const { return !names[kind].empty(); }
  bool WantsAnalysis() const {
    return Wants(kAnalysisPage) || Wants(kLegDataPage) || Wants(kChartPage);
  }
};

// A page being made. The memory is reused for each page.
struct PageBuffer {
  std::string Text;

  /// Writes the text in its charset.
  bool Write(FolderWriter& writer, const std::string& name, Charset charset,
             Sync sync = Sync::kLater);

 private:
  std::string bytes_;
};

// What the entries of a site share. Nothing of it changes while they are made.
struct SiteParts {
  SiteParts(const SiteOptions& options, Charset charset, const EventModel& model);

  const SiteOptions& Options;
  const keltrun::Charset Charset;
  const EventModel& Model;
  const std::set<std::int32_t> ChartModes;
  EventSets Sets;
  std::string Navigation;  // above every result list
  // Held while records are read into a data set, which may ask records of the whole event and
  // change those of the set.
  mutable std::mutex Records;
};

/// Makes entries one after the other. Several may work at the same time, as long as their entries
/// have different runners.
class EntryExport {
 public:
  explicit EntryExport(const SiteParts& parts);

  /// Writes the pages and pictures and returns the row of the index, "" if there is nothing to
  /// show. When something cannot be made, such as the analysis of a class with too many controls,
  /// its page is left out and the failure noted.
  std::string Export(const Entry& entry, FolderWriter& writer);

 private:
  void GatherResults(const Entry& entry);
  void Analyze(const Entry& entry);
  std::string ExportPage(const Entry& entry, PageKind kind, FolderWriter& writer);
  std::string_view DeclaredCharset(PageKind kind) const;
  void AppendPage(const Entry& entry, PageKind kind, std::string_view charset);
  void ExportPictures(const Entry& entry, FolderWriter& writer);
  bool IsDrawn(std::int32_t mode) const;
  void DrawSiteChart(KrChartModeConst mode);
  std::string IndexRow(const Entry& entry, const std::string& links) const;

  const SiteParts& parts_;
  const SiteOptions& options_;
  const std::shared_ptr<clsAnalyzer> analyzer_ = std::make_shared<clsAnalyzer>();
  clsResultsHolder results_;
  std::shared_ptr<CairoPicture> picture_;  // made for the first chart and kept, as is the chart
  std::shared_ptr<clsChartObject> chart_;
  PageBuffer page_;
};

}  // namespace keltrun
