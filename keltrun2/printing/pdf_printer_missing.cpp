// In place of pdf_printer.cpp in a library built without KELTRUN2_WITH_DRAWING: pages can be
// printed only on printers of the host.
#include <utility>

#include "keltrun2/base/automation_error.h"
#include "keltrun2/printing/printer.h"

namespace keltrun {

namespace {

[[noreturn]] void Refuse() {
  throw AutomationError(KR_ERROR_INVALID_CALL,
                        "PdfPrinter: this version of the program makes no PDF documents");
}

}  // namespace

struct PdfPrinter::State {};

PdfPrinter::PdfPrinter(std::string /*Name*/, std::string /*Path*/) { Refuse(); }
PdfPrinter::~PdfPrinter() = default;

// No such printer exists, so nothing of this is ever called.
const std::string& PdfPrinter::DeviceName() const { Refuse(); }
void PdfPrinter::SetPaperSize(std::int32_t /*PaperSize*/) {}
void PdfPrinter::SetOrientation(std::int32_t /*Orientation*/) {}
PaperMetrics PdfPrinter::Metrics() const { return {}; }
DrawingSurface& PdfPrinter::NewSheet() { Refuse(); }
DrawingSurface& PdfPrinter::Measure() { Refuse(); }
void PdfPrinter::EndDocument() {}
const std::string& PdfPrinter::Document() const { Refuse(); }

}  // namespace keltrun
