#include "keltrun2/printing/paper.h"

#include <algorithm>

#include "keltrun2/drawing/drawing_limits.h"

namespace keltrun {
namespace {

constexpr Paper kPapers[] = {
    {KR_PAPER_LETTER, 215.9F, 279.4F, "na_letter_8.5x11in"},
    {KR_PAPER_LEGAL, 215.9F, 355.6F, "na_legal_8.5x14in"},
    {KR_PAPER_A3, 297, 420, "iso_a3_297x420mm"},
    {KR_PAPER_A4, 210, 297, "iso_a4_210x297mm"},
    {KR_PAPER_A5, 148, 210, "iso_a5_148x210mm"},
    {KR_PAPER_B4, 257, 364, "jis_b4_257x364mm"},  // JIS sizes, as these numbers mean in printing
    {KR_PAPER_B5, 182, 257, "jis_b5_182x257mm"},
};

constexpr double kPointsPerMm = kPointsPerInch / kMmPerInch;

// Some printers turn a landscape sheet to the left and some to the right, so the wider strip of two
// opposite edges is kept free on both.
PaperStrips Turned(const PaperStrips& strips) {
  const float side = std::max(strips.Top, strips.Bottom);
  const float end = std::max(strips.Left, strips.Right);
  return {side, end, side, end};
}

}  // namespace

const Paper* Sheets::FindPaper(std::int32_t number) {
  const auto* found = std::find_if(std::begin(kPapers), std::end(kPapers),
                                   [number](const Paper& paper) { return paper.Number == number; });
  return found != std::end(kPapers) ? found : nullptr;
}

void Sheets::SetPaperSize(std::int32_t paper_size) {
  if (const Paper* paper = FindPaper(paper_size)) paper_ = paper;
}

PaperMetrics Sheets::Metrics(const PaperStrips& strips) const {
  const PaperStrips free = is_landscape_ ? Turned(strips) : strips;
  PaperMetrics metrics;
  metrics.PaperWidth = is_landscape_ ? paper_->Height : paper_->Width;
  metrics.PaperHeight = is_landscape_ ? paper_->Width : paper_->Height;
  metrics.OffsetLeft = free.Left;
  metrics.OffsetTop = free.Top;
  metrics.PrintableWidth = metrics.PaperWidth - free.Left - free.Right;
  metrics.PrintableHeight = metrics.PaperHeight - free.Top - free.Bottom;
  return metrics;
}

DrawingSurface& Sheets::NewSheet(const PaperMetrics& metrics) {
  return document_.NewPage({metrics.PaperWidth * kPointsPerMm, metrics.PaperHeight * kPointsPerMm,
                            kPointsPerMm, metrics.OffsetLeft, metrics.OffsetTop});
}

}  // namespace keltrun
