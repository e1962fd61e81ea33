// In place of analysis_pages.cpp, headed_list.cpp and result_list.cpp in a library built without
// KELTRUN2_WITH_DRAWING: nothing is printed.
#include "keltrun2/base/automation_error.h"
#include "keltrun2/print/analysis_pages.h"
#include "keltrun2/print/headed_list.h"
#include "keltrun2/print/result_list.h"

namespace keltrun {
namespace {

[[noreturn]] void Refuse() {
  throw AutomationError(KR_ERROR_INVALID_CALL, "this version of the program prints nothing");
}

}  // namespace

void PrintAnalysisPages(const clsAnalyzer& /*analyzer*/, const clsEventData& /*event*/,
                        clsPrintBook& /*book*/, const AnalysisPagesOptions& /*options*/) {
  Refuse();
}

void PrintHeadedList(const clsResultsHolder& /*results*/, const clsEventData& /*event*/,
                     clsPrintBook& /*book*/, const ResultListOptions& /*options*/) {
  Refuse();
}

void PrintResultList(const clsResultsHolder& /*results*/, clsPrintBook& /*book*/,
                     const ResultListOptions& /*options*/) {
  Refuse();
}

}  // namespace keltrun
