// Loading a native file, and what an XML parser alone takes for the same bytes; reading IOF
// XML 3.0, and what our XML reader alone takes for walking through its elements.
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <pugixml.hpp>

#include "bench_support.h"
#include "keltrun2/codec/xml.h"
#include "keltrun2/io/foreign/iof3_reader.h"

namespace keltrun::bench {
namespace {

void Load(benchmark::State& state) {
  const std::int64_t runners = state.range(0);
  const std::string file = ManyClassesFile(runners);
  clsKeltrun2 root;
  bool loaded = true;
  for (auto _ : state) loaded = root.FileControl()->LoadLapFile(file) && loaded;
  if (!loaded || RunnerCount(root) != runners) state.SkipWithError("the event was not loaded");
}

// Reads every name and value to its end.
std::size_t Walk(const pugi::xml_node& node) {
  std::size_t length = std::strlen(node.name());
  for (pugi::xml_attribute a = node.first_attribute(); a; a = a.next_attribute()) {
    length += std::strlen(a.name()) + std::strlen(a.value());
  }
  for (pugi::xml_node child = node.first_child(); child; child = child.next_sibling()) {
    length += Walk(child);
  }
  return length;
}

std::string BytesOf(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  return std::string{std::istreambuf_iterator<char>(stream), {}};
}

void ParseAndWalk(benchmark::State& state) {
  const std::string bytes = BytesOf(ManyClassesFile(state.range(0)));
  pugi::xml_document document;
  bool parsed = true;
  for (auto _ : state) {
    parsed = document.load_buffer(bytes.data(), bytes.size()) && parsed;
    benchmark::DoNotOptimize(Walk(document));
  }
  if (!parsed) state.SkipWithError("the file was not parsed");
}

// The event of 2,000 runners, of which 1 in 100 did not start and is not in the list.
constexpr std::size_t kRunnersOfList = 1960;

void ReadIofList(benchmark::State& state) {
  const clsKeltrun2 root;
  const std::string bytes = BytesOf(DataFile("iof3.xml"));
  ReadResult read;
  for (auto _ : state) read = ReadIof3(bytes, {});
  std::size_t runners = 0;
  for (const ClassRecords& klass : read.records.classes) runners += klass.runners.size();
  if (read.error || runners < kRunnersOfList) state.SkipWithError("runners are missing");
  state.counters["bytes"] = static_cast<double>(bytes.size());
}

void WalkIofList(benchmark::State& state) {
  const std::string bytes = BytesOf(DataFile("iof3.xml"));
  bool good = !bytes.empty();
  for (auto _ : state) {
    XmlReader xml;
    good = !xml.OpenText(bytes) && good;
    while (good && (xml.NextChild() || xml.Depth() > 0)) benchmark::DoNotOptimize(xml.Depth());
    good = !xml.Error() && good;
  }
  if (!good) state.SkipWithError("the file was not parsed");
}

const Registration kLoad("Load", Load, {2000, 6000, 20000});
const Registration kReadIofList("ReadIofList", ReadIofList, {2000});
const Registration kWalkIofList("WalkIofList", WalkIofList, {2000});
const Registration kParseAndWalk("ParseAndWalk", ParseAndWalk, {2000, 6000, 20000});

}  // namespace
}  // namespace keltrun::bench
