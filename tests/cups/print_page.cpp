// Lists the printers there are and prints one sheet on the one that is named: for run.sh.
#include <cstdio>
#include <exception>

#include "keltrun2/printing/printer.h"

int main(int argc, char** argv) try {
  for (const std::string& name : keltrun::PrinterNames()) std::printf("%s\n", name.c_str());
  if (argc < 2) return 0;
  const auto printer = keltrun::FindPrinter(argv[1]);
  if (printer == nullptr) return 2;
  printer->SetPaperSize(keltrun::KR_PAPER_A5);
  printer->SetOrientation(1);
  const keltrun::PaperMetrics metrics = printer->Metrics();
  std::printf("%g x %g mm\n", metrics.PaperWidth, metrics.PaperHeight);
  keltrun::TextStyle style;
  style.Size = 10;
  printer->NewSheet().DrawText("山田太郎", 20, 20, style);
  printer->EndDocument();
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 1;
}
