// The C interface as the page in a browser uses it: whatever the bytes of two files are (the first
// byte says where the second begins, and what the files are called), every call answers with a
// status, and an event that could be opened can be exported.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>

#include "keltrun2/c/keltrun2.h"

namespace {

constexpr const char* kNames[] = {"a.lxm", "a.lap", "a.xml", "a.csv", "a.html", "a.txt", "a", ""};

// One form of each kind; the others differ from them only in their writers.
constexpr const char* kForms[] = {"info-json",   "remarks-json", "analyze-json", "report-data",
                                  "results-csv", "lxm",          "iof3",         "winsplits"};

void ExportAll(keltrun2_event* event) {
  for (const char* const form : kForms) {
    keltrun2_output* output = nullptr;
    const keltrun2_status status = keltrun2_export(event, form, &output);
    if ((status == KELTRUN2_OK) != (output != nullptr) || status == KELTRUN2_WRONG_USE)
      std::abort();
    keltrun2_output_free(output);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const char* const name = kNames[data[0] % std::size(kNames)];
  const std::size_t first = 1 + (size - 1) * (data[0] / 8) / 32;  // the end of the file to merge
  keltrun2_event* const event = keltrun2_event_new();
  const bool is_open = keltrun2_open(event, name, data + first, size - first) == KELTRUN2_OK;
  if (is_open != (*keltrun2_last_error(event) == '\0')) std::abort();
  if (is_open) ExportAll(event);
  static_cast<void>(keltrun2_merge(event, name, data + 1, first - 1));
  if (is_open) ExportAll(event);
  keltrun2_event_free(event);
  return 0;
}
