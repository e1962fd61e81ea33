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
  *model.Event = std::move(file.event);
  *model.Meta = std::move(file.meta);
  for (const auto& read : file.courses) model.AddCourseObject(read.course);
  for (const NativeClass& read : file.classes) {
    if (!model.AddClassObject(read.klass)) continue;
    for (const auto& runner : read.runners) read.klass->AddLapObject(runner);
  }
}

std::string WriteAgain(std::string_view bytes, NativeSource kind) {
  NativeReadResult read = ReadNativeLapFile(bytes, kind);
  if (read.error) return "";
  EventModel model;
  Fill(model, read.file);
  return WriteNativeLapFile(model, KR_SAVEMODE_FULL, 45000);
}

void Analyze(const NativeLapFile& file) {
  for (const NativeClass& read : file.classes) {
    clsAnalyzer analyzer;
    analyzer.ControlCount = read.klass->ControlCount;
    for (const auto& runner : read.runners) analyzer.AddLap(runner);
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
  if (!text.error) Analyze(text.file);
  return 0;
}
