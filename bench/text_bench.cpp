// Loading the text formats: the whole load of a file, and the reader alone on its decoded text.
#include <fstream>
#include <iterator>

#include "bench_support.h"
#include "keltrun2/codec/encodings.h"
#include "keltrun2/io/keltrun1_reader.h"
#include "keltrun2/io/oevent_reader.h"
#include "keltrun2/io/sportident_reader.h"

namespace keltrun::bench {
namespace {

// A text of the event with 2,000 runners, of which 1 in 100 did not start and is not in it.
struct Text {
  const char* file;
  ReadResult (*read)(std::string_view text);
};
constexpr Text kSportIdent = {"sportident.txt", ReadSportIdent};
constexpr Text kOEvent = {"oevent.txt", ReadOEvent};
constexpr Text kResultList = {"list.csv", ReadKeltrun1};
constexpr std::int64_t kRunners = 1960;

std::string BytesOf(const Text& text) {
  std::ifstream stream(DataFile(text.file), std::ios::binary);
  return std::string{std::istreambuf_iterator<char>(stream), {}};
}

void Finish(benchmark::State& state, const Text& text, std::int64_t runners) {
  if (runners < kRunners) state.SkipWithError("runners are missing");
  state.counters["bytes"] = static_cast<double>(BytesOf(text).size());
}

template <const Text& text>
void LoadText(benchmark::State& state) {
  clsKeltrun2 root;
  const std::string file = DataFile(text.file);
  bool loaded = true;
  for (auto _ : state) loaded = root.FileControl()->LoadLapFile(file) && loaded;
  Finish(state, text, loaded ? RunnerCount(root) : 0);
}

template <const Text& text>
void ReadText(benchmark::State& state) {
  const clsKeltrun2 root;
  const std::string decoded = DecodeTextFile(BytesOf(text));
  ReadResult read;
  for (auto _ : state) read = text.read(decoded);
  std::int64_t runners = 0;
  for (const ClassRecords& klass : read.records.classes) {
    runners += static_cast<std::int64_t>(klass.runners.size());
  }
  Finish(state, text, read.error ? 0 : runners);
}

const Registration kLoadSportIdent("LoadSportIdent", LoadText<kSportIdent>, {2000});
const Registration kReadSportIdent("ReadSportIdent", ReadText<kSportIdent>, {2000});
const Registration kLoadOEvent("LoadOEvent", LoadText<kOEvent>, {2000});
const Registration kReadOEvent("ReadOEvent", ReadText<kOEvent>, {2000});
const Registration kLoadResultList("LoadResultList", LoadText<kResultList>, {2000});
const Registration kReadResultList("ReadResultList", ReadText<kResultList>, {2000});

}  // namespace
}  // namespace keltrun::bench
