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
  event.EventName = records.event_name.value_or("");
  event.EventDate()->SetValue(records.event_date.value_or(0));
  event.Terrain = records.terrain.value_or("");
  event.Memo = records.memo.value_or("");
  event.OfficialSite = records.official_site.value_or("");
  event.FileName = records.event_file_name.value_or("");
}

void FeedClass(EventModel& model, const ClassRecords& read) {
  const auto klass = model.AddClass(read.name);
  if (read.control_count) klass->ControlCount = *read.control_count;
  if (read.legs_seen > klass->ControlCount + 1) klass->ControlCount = read.legs_seen - 1;
  klass->Length = read.length.value_or(0);
  klass->Climb = read.climb.value_or(0);
  klass->CourseNum = read.course_num.value_or(0);
  for (const auto& runner : read.runners) klass->AddLapObject(runner);
}

// Reads a text and writes it; "" if the text cannot be read.
std::string WriteAgain(std::string_view text) {
  ReadResult read = ReadKeltrun1(text);
  if (read.remarks.size() > 1001) std::abort();
  if (read.error) return "";
  EventModel model;
  FeedEvent(*model.Event, read.records);
  for (const ClassRecords& klass : read.records.classes) FeedClass(model, klass);
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
