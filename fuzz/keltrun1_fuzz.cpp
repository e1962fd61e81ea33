// The text lap file of the previous generation: whatever can be read must give the same text when
// it is written, read and written again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>

#include "keltrun2/config/settings.h"
#include "keltrun2/io/keltrun1_reader.h"
#include "keltrun2/io/keltrun1_writer.h"

namespace {

using namespace keltrun;

void FeedEvent(clsEventData& event, LapRecords& records) {
  event.EventName = records.EventName.value_or("");
  event.EventDate()->SetValue(records.EventDate.value_or(0));
  event.Terrain = records.Terrain.value_or("");
  event.Memo = records.Memo.value_or("");
  event.OfficialSite = records.OfficialSite.value_or("");
  event.FileName = records.EventFileName.value_or("");
}

void FeedClass(EventModel& model, const ClassRecords& read) {
  const auto klass = model.AddClass(read.Name);
  if (read.ControlCount) klass->ControlCount = *read.ControlCount;
  if (read.LegsSeen > klass->ControlCount + 1) klass->ControlCount = read.LegsSeen - 1;
  klass->Length = read.Length.value_or(0);
  klass->Climb = read.Climb.value_or(0);
  klass->CourseNum = read.CourseNum.value_or(0);
  for (const auto& runner : read.Runners) klass->AddLapObject(runner);
}

// Reads a text and writes it; "" if the text cannot be read.
std::string WriteAgain(std::string_view text) {
  ReadResult read = ReadKeltrun1(text);
  if (read.Remarks.size() > 1001) std::abort();
  if (read.Error) return "";
  EventModel model;
  FeedEvent(*model.Event, read.Records);
  for (const ClassRecords& klass : read.Records.Classes) FeedClass(model, klass);
  return WriteKeltrun1LapFile(model);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string first = WriteAgain({reinterpret_cast<const char*>(data), size});
  // Without the resource texts, a written file has no titles and cannot be read.
  if (first.empty() || ResourceText("RES_META_LAPFILE_HEADER").empty()) return 0;
  // Reading the first text may still trim, round or leave out something, so the next two are
  // compared.
  const std::string second = WriteAgain(first);
  if (second.empty() || WriteAgain(second) != second) std::abort();
  return 0;
}
