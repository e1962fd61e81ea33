// The native lap file: whatever can be read must give the same bytes when it is written, read and
// written again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/io/native_reader.h"
#include "keltrun2/io/native_writer.h"
#include "keltrun2/model/event_model.h"

namespace {

using namespace keltrun;

void Fill(EventModel& model, NativeLapFile& file) {
  *model.Event = std::move(file.Event);
  *model.Meta = std::move(file.Meta);
  for (const auto& course : file.Courses) model.AddCourseObject(course);
  for (const NativeClass& read : file.Classes) {
    if (!model.AddClassObject(read.Class)) continue;
    for (const auto& runner : read.Runners) read.Class->AddLapObject(runner);
  }
}

std::string WriteAgain(std::string_view bytes, NativeSource kind) {
  NativeReadResult read = ReadNativeLapFile(bytes, kind);
  if (read.Error) return "";
  EventModel model;
  Fill(model, read.File);
  return WriteNativeLapFile(model, KR_SAVEMODE_FULL, 45000);
}

void Analyze(const NativeLapFile& file) {
  for (const NativeClass& read : file.Classes) {
    clsAnalyzer analyzer;
    analyzer.ControlCount = read.Class->ControlCount;
    for (const auto& runner : read.Runners) analyzer.AddLap(runner);
    analyzer.Execute();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const std::string first = WriteAgain(bytes, NativeSource::kFileBytes);
  // Reading the first result may still change the file names of classes, so the next two are
  // compared.
  const std::string second = first.empty() ? "" : WriteAgain(first, NativeSource::kFileBytes);
  if (!first.empty() && (second.empty() || WriteAgain(second, NativeSource::kFileBytes) != second))
    std::abort();
  const NativeReadResult text = ReadNativeLapFile(bytes, NativeSource::kText);
  if (!text.Error) Analyze(text.File);
  return 0;
}
