// Loading a native file, and what the XML parser alone takes for the same bytes.
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <pugixml.hpp>

#include "bench_support.h"

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

void ParseAndWalk(benchmark::State& state) {
  std::ifstream stream(ManyClassesFile(state.range(0)), std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
  pugi::xml_document document;
  bool parsed = true;
  for (auto _ : state) {
    parsed = document.load_buffer(bytes.data(), bytes.size()) && parsed;
    benchmark::DoNotOptimize(Walk(document));
  }
  if (!parsed) state.SkipWithError("the file was not parsed");
}

const Registration kLoad("Load", Load, {2000, 6000, 20000});
const Registration kParseAndWalk("ParseAndWalk", ParseAndWalk, {2000, 6000, 20000});

}  // namespace
}  // namespace keltrun::bench
