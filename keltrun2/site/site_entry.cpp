#include "keltrun2/site/site_entry.h"

#include "keltrun2/analysis/analyzer_internal.h"
#include "keltrun2/analysis/loss_map.h"
#include "keltrun2/chart/chart_builder.h"
#include "keltrun2/config/settings.h"
#include "keltrun2/report/analysis_page.h"
#include "keltrun2/report/chart_page.h"
#include "keltrun2/report/html_parts.h"
#include "keltrun2/report/index_page.h"
#include "keltrun2/report/leg_data_page.h"
#include "keltrun2/report/result_page.h"
#include "keltrun2/text/cells.h"

namespace keltrun {
namespace {

constexpr std::int32_t kPictureWidth = 1000;
constexpr std::int32_t kPictureHeight = 700;

// The modes to draw, each once.
std::set<std::int32_t> PicturesOf(std::string_view chart_option) {
  const auto modes = ChartModes(chart_option);
  return {modes.begin(), modes.end()};
}

}  // namespace

bool PageBuffer::Write(FolderWriter& writer, const std::string& name, Charset charset, Sync sync) {
  Text += kCrLf;
  bytes_.clear();
  bytes_.reserve(Text.size());
  AppendEncoded(bytes_, Text, charset, MissingCharacter::kCharacterReference);
  return writer.Write(name, bytes_, sync);
}

SiteParts::SiteParts(const SiteOptions& options, keltrun::Charset charset, const EventModel& model)
    : Options(options),
      Charset(charset),
      Model(model),
      ChartModes(PicturesOf(options.ChartOption)) {}

EntryExport::EntryExport(const SiteParts& parts) : parts_(parts), options_(parts.Options) {
  analyzer_->SetUntimedLegs(options_.UntimedLegs);
}

std::string EntryExport::Export(const Entry& entry, FolderWriter& writer) {
  results_.Clear();
  analyzer_->Clear();
  const std::string& name = entry.choice.ValueName;
  std::string links;
  if (writer.Attempt("list", name, [&] { GatherResults(entry); })) {
    links += ExportPage(entry, kResultPage, writer);
  }
  if (writer.Attempt("analyze", name, [&] { Analyze(entry); })) {
    for (const PageKind kind : {kAnalysisPage, kLegDataPage, kChartPage}) {
      links += ExportPage(entry, kind, writer);
    }
    if (entry.Wants(kChartPage)) ExportPictures(entry, writer);
  }
  return links.empty() ? "" : IndexRow(entry, links);
}

void EntryExport::GatherResults(const Entry& entry) {
  if (!entry.Wants(kResultPage)) return;
  const std::lock_guard lock(parts_.Records);
  parts_.Sets.AddRunners(results_, entry.choice, entry.classes);
  results_.CalcRank();
}

void EntryExport::Analyze(const Entry& entry) {
  const bool any_file = !options_.AnalysisFile.empty() || !options_.LegDataFile.empty() ||
                        !options_.ChartFile.empty();
  if (!any_file) return;
  {
    const std::lock_guard lock(parts_.Records);
    // Also for the index, which shows its length and climb.
    parts_.Sets.AddRunners(*analyzer_, entry.choice, entry.classes);
    if (!entry.WantsAnalysis()) return;
    analyzer_->Execute();
  }
  if (entry.Wants(kLegDataPage) || entry.Wants(kChartPage)) analyzer_->ExtraAnalyze();
  if (entry.Wants(kChartPage) && IsDrawn(KR_CHART_VESMER)) analyzer_->Vesmer();
}

// Writes the page, if it is wanted and has runners to show, and returns the link to it.
std::string EntryExport::ExportPage(const Entry& entry, PageKind kind, FolderWriter& writer) {
  const std::string& name = entry.names[kind];
  const std::int32_t count = kind == kResultPage ? results_.Count() : analyzer_->Count();
  if (name.empty() || count == 0) return "";
  const std::string_view charset = DeclaredCharset(kind);
  bool written = false;
  writer.Attempt("write", name, [&] {
    page_.Text.clear();
    AppendPage(entry, kind, charset);
    written = page_.Write(writer, name, CharsetFromName(charset).value_or(parts_.Charset));
  });
  if (!written) return "";
  return "&nbsp;" + IndexLink(name, kNewWindow, ResourceText(kPages[kind].link_text_key));
}

std::string_view EntryExport::DeclaredCharset(PageKind kind) const {
  const bool by_language = kind == kLegDataPage && parts_.Charset == Charset::kShiftJis;
  return by_language ? LegDataCharset(options_.Charset) : options_.Charset;
}

void EntryExport::AppendPage(const Entry& entry, PageKind kind, std::string_view charset) {
  const std::string& style = options_.LinkStyleFile;
  if (kind == kResultPage) {
    AppendResultPage(page_.Text, results_, parts_.Navigation, style, charset);
  } else if (kind == kAnalysisPage) {
    AppendAnalysisPage(page_.Text, parts_.Model, *analyzer_, style, charset);
  } else if (kind == kLegDataPage) {
    AppendLegDataPage(page_.Text, parts_.Model, *analyzer_, style, charset);
  } else {
    AppendChartPage(page_.Text, parts_.Model, *analyzer_, entry.charts.Address(),
                    options_.ChartOption, charset);
  }
}

void EntryExport::ExportPictures(const Entry& entry, FolderWriter& writer) {
  if (analyzer_->Count() == 0) return;
  for (const std::int32_t mode : parts_.ChartModes) {
    if (!IsDrawn(mode)) continue;
    const std::string name = entry.charts.Picture(mode);
    writer.Attempt("draw", writer.Folder() + name, [&] {
      DrawSiteChart(static_cast<KrChartModeConst>(mode));
      writer.Write(name, picture_->Encode());
    });
  }
}

// Whether a chart mode is wanted and has something to show for the analyzed set.
bool EntryExport::IsDrawn(std::int32_t mode) const {
  if (!parts_.ChartModes.contains(mode)) return false;
  if (mode == KR_CHART_REALTIME) return HasStartTimes(*analyzer_);
  return mode != KR_CHART_VESMER || HasMap(*analyzer_);
}

// The whole chart, as large as the picture.
void EntryExport::DrawSiteChart(KrChartModeConst mode) {
  if (!picture_) {
    picture_ = std::make_shared<CairoPicture>(kPictureWidth, kPictureHeight, options_.ChartFormat);
    chart_ = std::make_shared<clsChartObject>();
    chart_->BridgeGaps = options_.BridgeGaps;
    chart_->SetPictureObject(picture_);
  }
  BuildChart(analyzer_, *chart_, mode, ChartRatioToFit(*analyzer_, *chart_, mode), 1, 0, 0);
  chart_->DrawChart();
}

// The winner is the first runner of the result list or, if there is no list, of the analysis.
std::string EntryExport::IndexRow(const Entry& entry, const std::string& links) const {
  const std::string class_info = analyzer_->ClassInfo();
  std::string name;
  std::string result;
  if (const auto winner = results_.Item(1)) {
    name = winner->RunnerName;
    result = winner->Result();
  } else if (const auto first = analyzer_->Item(1)) {
    name = first->RunnerName();
    result = first->Result();
  }
  std::string row;
  AppendIndexRow(row, {entry.choice.ValueName, links, class_info, name, result});
  return row;
}

}  // namespace keltrun
