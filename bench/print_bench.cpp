// Printed pages of a class as a PDF, from the first record to the last byte of the document.
#include "bench_support.h"

namespace keltrun::bench {
namespace {

// Prints into a new book with `lay_out(root, book)`.
template <typename LayOut>
void Print(benchmark::State& state, LayOut lay_out) {
  const auto root = LoadedRoot(state, OneClassFile(state.range(0)), state.range(0));
  if (!root) return;
  std::size_t bytes = 0;
  for (auto _ : state) {
    const auto book = std::make_shared<clsPrintBook>();
    book->Init("", KR_PAPER_A4, tpotPortrate, 15, 15, 15, 15, 1);
    lay_out(*root, book);
    book->Execute();
    bytes = dynamic_cast<const PdfPrinter&>(*book->PrinterObject()).Document().size();
  }
  state.counters["megabytes"] = static_cast<double>(bytes) / 1e6;
}

void PrintList(benchmark::State& state) {
  Print(state, [](clsKeltrun2& root, const std::shared_ptr<clsPrintBook>& book) {
    const auto results = root.NewResultsHolder();
    results->AddClass(1);
    results->CalcRank();
    root.GraphicControl()->PrintResult(results, book);
  });
}

void PrintWholeAnalysis(benchmark::State& state) {
  Print(state, [](clsKeltrun2& root, const std::shared_ptr<clsPrintBook>& book) {
    const auto analyzer = root.NewAnalyzer();
    analyzer->AddClass(1);
    analyzer->Execute();
    root.GraphicControl()->PrintAnalysis(analyzer, book);
  });
}

const Registration kList("PrintList", PrintList, {2000});
const Registration kAnalysis("PrintAnalysis", PrintWholeAnalysis, {2000});

}  // namespace
}  // namespace keltrun::bench
