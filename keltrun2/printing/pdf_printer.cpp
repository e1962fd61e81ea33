#include <utility>

#include "keltrun2/base/automation_error.h"
#include "keltrun2/os/files.h"
#include "keltrun2/printing/paper.h"
#include "keltrun2/printing/printer.h"

namespace keltrun {

struct PdfPrinter::State {
  std::string Name;
  std::string Path;
  keltrun::Sheets Sheets;
  std::string Document;
};

PdfPrinter::PdfPrinter(std::string Name, std::string Path) : state_(std::make_unique<State>()) {
  state_->Name = std::move(Name);
  state_->Path = std::move(Path);
}

PdfPrinter::~PdfPrinter() = default;

const std::string& PdfPrinter::DeviceName() const { return state_->Name; }

void PdfPrinter::SetPaperSize(std::int32_t PaperSize) { state_->Sheets.SetPaperSize(PaperSize); }

void PdfPrinter::SetOrientation(std::int32_t Orientation) {
  state_->Sheets.SetOrientation(Orientation);
}

PaperMetrics PdfPrinter::Metrics() const { return state_->Sheets.Metrics(); }

DrawingSurface& PdfPrinter::NewSheet() { return state_->Sheets.NewSheet(Metrics()); }

DrawingSurface& PdfPrinter::Measure() { return state_->Sheets.Measure(); }

void PdfPrinter::EndDocument() {
  if (state_->Sheets.IsEmpty()) return;
  std::string bytes = state_->Sheets.Finish();
  if (state_->Path.empty()) {
    state_->Document = std::move(bytes);
    return;
  }
  std::string error;
  if (!WriteFile(state_->Path, bytes, error)) throw AutomationError(KR_ERROR_INVALID_CALL, error);
}

const std::string& PdfPrinter::Document() const { return state_->Document; }

}  // namespace keltrun
