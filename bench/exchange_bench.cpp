// Writing the forms for other programs, appended to a string that is used again.
#include <memory>
#include <string>

#include "bench_support.h"
#include "keltrun2/io/foreign/iof_writers.h"
#include "keltrun2/io/foreign/table_writers.h"
#include "keltrun2/model/process_state.h"
#include "keltrun2/report/lap_csv.h"
#include "keltrun2/report/result_csv.h"

namespace keltrun::bench {
namespace {

void AppendIof3(std::string& out, const EventModel& model) {
  AppendIofXml3(out, model, {.now = 45950, .utc_offset = 540});
}
void AppendIof2(std::string& out, const EventModel& model) {
  AppendIofXml2(out, model, {.now = 45950});
}
void AppendResults(std::string& out, const EventModel& model) {
  ResultCsvOptions options;
  options.splits = true;
  AppendResultCsv(out, model, options);
}

template <void (*append)(std::string&, const EventModel&)>
void Write(benchmark::State& state) {
  const auto root = LoadedRoot(state, ManyClassesFile(state.range(0)), state.range(0));
  const auto model = CurrentModel();
  std::string text;
  for (auto _ : state) {
    text.clear();
    append(text, *model);
  }
  state.counters["bytes"] = static_cast<double>(text.size());
}

void WriteLaps(benchmark::State& state) {
  const auto root = LoadedRoot(state, OneClassFile(state.range(0)), state.range(0));
  const auto model = CurrentModel();
  const auto analyzer = root->NewAnalyzer();
  analyzer->AddClass(1);
  analyzer->Execute();
  std::string text;
  for (auto _ : state) {
    text.clear();
    AppendLapCsv(text, *model, *analyzer, DataSetKind::kClass, ',');
  }
  state.counters["bytes"] = static_cast<double>(text.size());
}

const Registration kIof3("WriteIof3", Write<AppendIof3>, {2000});
const Registration kIof2("WriteIof2", Write<AppendIof2>, {2000});
const Registration kSplitsBrowser("WriteSplitsBrowser", Write<AppendSplitsBrowserEvent>, {2000});
const Registration kWinSplits("WriteWinSplits", Write<AppendWinSplits>, {2000});
const Registration kOe2010("WriteOe2010", Write<AppendOe2010>, {2000});
const Registration kResults("WriteResults", Write<AppendResults>, {2000});
const Registration kLaps("WriteLaps", WriteLaps, {1000});

}  // namespace
}  // namespace keltrun::bench
