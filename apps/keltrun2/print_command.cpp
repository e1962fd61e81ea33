#include <iostream>
#include <memory>
#include <string>
#include <utility>

#include "apps/keltrun2/command_error.h"
#include "apps/keltrun2/commands.h"
#include "apps/keltrun2/data_sets.h"
#include "apps/keltrun2/event_input.h"
#include "apps/keltrun2/files.h"

namespace keltrun::cli {
namespace {

constexpr float kCellGap = 6;  // mm between the pages on a sheet

struct PaperName {
  const char* name;
  PaperSizeConst paper;
};
constexpr PaperName kPapers[] = {
    {"A3", KR_PAPER_A3}, {"A4", KR_PAPER_A4},         {"A5", KR_PAPER_A5},      {"B4", KR_PAPER_B4},
    {"B5", KR_PAPER_B5}, {"Letter", KR_PAPER_LETTER}, {"Legal", KR_PAPER_LEGAL}};

PaperSizeConst Paper(const std::string& name) {
  for (const PaperName& entry : kPapers) {
    if (entry.name == name) return entry.paper;
  }
  return KR_PAPER_A4;
}

// "2x1": columns and rows.
std::pair<std::int32_t, std::int32_t> CellsPerSheet(const std::string& text) {
  const std::size_t x = text.find('x');
  return {std::stoi(text.substr(0, x)), std::stoi(text.substr(x + 1))};
}

void ListPrinters() {
  const auto names = PrinterNames();
  if (names.empty()) std::cerr << "keltrun2: this system has no printers\n";
  for (const std::string& name : names) std::cout << name << '\n';
}

void CheckPrinter(const std::string& name) {
  if (FindPrinter(name)) return;
  std::string text = "there is no printer \"" + name + "\"";
  const auto names = PrinterNames();
  if (!names.empty()) text += "; the printers are";
  for (const std::string& other : names) text += "\n  " + other;
  throw CommandError(text);
}

void SetUpPages(clsPrintBook& book, const Options& options) {
  const PrintOptions& print = options.print;
  book.Init(print.printer, Paper(print.paper), print.landscape ? tpotLandscape : tpotPortrate,
            print.margin, print.margin, print.margin, print.margin, 1);
  const auto [columns, rows] = CellsPerSheet(print.per_sheet);
  if (columns * rows > 1) book.SetSeparation(rows, columns, kCellGap, kCellGap);
  if (!(book.Width() > 0) || !(book.Height() > 0)) {
    throw CommandError("no room is left on the paper: use a smaller --margin or --per-sheet",
                       kWrongUse);
  }
}

void PrintOne(clsKeltrun2& root, const Options& options, const ChosenSet& choice,
              const std::shared_ptr<clsPrintBook>& book) {
  const PrintOptions& print = options.print;
  if (print.what == "results") {
    root.GraphicControl()->PrintResult(ResultList(root, choice), book, print.line_interval,
                                       print.new_pages, print.ids, print.ages);
    if (print.new_pages) book->SetPrintedAreaHeight(0);
  } else {
    const auto analyzer = Analysis(root, choice, options);
    AddControlCodes(*analyzer, CourseOf(root, choice));
    root.GraphicControl()->PrintAnalysis(
        analyzer, book, print.legs == "miss" ? KR_PRINT_ANALYSIS_MISS : KR_PRINT_ANALYSIS_LAP);
  }
}

}  // namespace

void PrintPages(clsKeltrun2& root, const Options& options) {
  const PrintOptions& print = options.print;
  if (print.list_printers) return ListPrinters();
  if (print.printer.empty()) {
    CheckReport(options);
  } else {
    CheckPrinter(print.printer);
  }
  LoadEvent(root, options);
  WarnWithoutJapaneseFont(options);
  const auto book = std::make_shared<clsPrintBook>();
  SetUpPages(*book, options);
  root.GraphicControl()->PrintHeads = true;
  for (const ChosenSet& choice : NamedSetOrClasses(root, options)) {
    PrintOne(root, options, choice, book);
  }
  if (book->PageCount() == 0) throw CommandError("there is nothing to print");
  book->Execute();
  if (!print.printer.empty()) return;
  WriteOutput(options.output, dynamic_cast<const PdfPrinter&>(*book->PrinterObject()).Document());
}

}  // namespace keltrun::cli
