// Loading a native file, and what an XML parser alone takes for the same bytes; reading IOF
// XML 3.0, and what our XML reader alone takes for walking through its elements; loading a list of
// another program, and the reader alone on its text.
#include <malloc.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <pugixml.hpp>
#include <sstream>

#include "bench_support.h"
#include "keltrun2/codec/xml.h"
#include "keltrun2/io/foreign/iof3_reader.h"
#include "keltrun2/io/foreign/oe_csv_reader.h"

namespace keltrun::bench {
namespace {

double UsedMemory() {
  const auto memory = mallinfo2();
  return static_cast<double>(memory.uordblks + memory.hblkhd);
}

void Load(benchmark::State& state) {
  const std::int64_t runners = state.range(0);
  const std::string file = ManyClassesFile(runners);
  clsKeltrun2 root;
  const double before = UsedMemory();
  bool loaded = true;
  for (auto _ : state) loaded = root.FileControl()->LoadLapFile(file) && loaded;
  state.counters["bytes_a_runner"] = (UsedMemory() - before) / static_cast<double>(runners);
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

std::string TimeText(std::int64_t seconds) {
  char text[16];
  std::snprintf(text, sizeof text, "%d:%02d:%02d", static_cast<int>(seconds / 3600),
                static_cast<int>(seconds / 60 % 60), static_cast<int>(seconds % 60));
  return text;
}

// A list of OE2010 with runners in classes of 50 on courses of 24 controls.
std::string OeText(std::int64_t runners) {
  constexpr int kControls = 24;
  std::ostringstream text;
  text << "OE0014;Stno;XStno;Chipno;Database Id;Surname;First name;YB;S;Block;nc;Start;Finish;Time;"
          "Classifier;Credit -;Penalty +;Comment;Club no.;Cl.name;City;Nat;Location;Region;Cl. no.;"
          "Short;Long;Entry cl. No;Entry class (short);Entry class (long);Rank;Ranking points;Num1;"
          "Num2;Num3;Text1;Text2;Text3;Addr. surname;Addr. first name;Street;Line2;Zip;Addr. city;"
          "Phone;Mobile;Fax;EMail;Rented;Start fee;Paid;Team;Course no.;Course;km;m;Course "
          "controls;Place;Start punch;Finish punch;Control1;Punch1;(may be more) ...\r\n";
  for (std::int64_t i = 0; i < runners; ++i) {
    const std::int64_t pace = 140 + i % 97;
    const std::string start = TimeText(36000 + i * 30);
    const std::string finish = TimeText(36000 + i * 30 + pace * (kControls + 1));
    text << ';' << i + 1 << ";;" << 500000 + i << ";;\"Surname" << i << "\";\"First\";80;M;;0;"
         << start << ';' << finish << ';' << TimeText(pace * (kControls + 1))
         << ";0;;;;7;;\"Forest Club " << i % 60 << "\";\"SUI\";;;1;\"M" << i / 50 << "\";\"Men "
         << i / 50 << "\";;;;;;;;;;;;;;;;;;;;;;0;0;0;;1;\"Course 1\";7,4;250;24;" << i % 50 + 1
         << ';' << start << ';' << finish;
    for (std::int64_t control = 1; control <= kControls; ++control) {
      text << ';' << i / 50 % 4 * 40 + 30 + control << ';' << TimeText(pace * control);
    }
    text << ";\r\n";
  }
  return text.str();
}

void ReadOe(benchmark::State& state) {
  const clsKeltrun2 root;
  const std::string text = OeText(state.range(0));
  ReadResult read;
  for (auto _ : state) read = ReadOeCsv(text, {});
  if (read.error || read.records.classes.empty()) state.SkipWithError("the list was not read");
  state.counters["bytes"] = static_cast<double>(text.size());
}

void LoadOe(benchmark::State& state) {
  const auto file = std::filesystem::temp_directory_path() / "keltrun2_bench_oe.csv";
  const std::string text = OeText(state.range(0));
  std::ofstream(file, std::ios::binary) << text;
  clsKeltrun2 root;
  root.FileControl()->SetForeignFormats(true);
  bool loaded = true;
  for (auto _ : state) loaded = root.FileControl()->LoadLapFile(file.string()) && loaded;
  if (!loaded || RunnerCount(root) != state.range(0))
    state.SkipWithError("the list was not loaded");
  state.counters["bytes"] = static_cast<double>(text.size());
  std::filesystem::remove(file);
}

const Registration kReadOe("ReadOe2010", ReadOe, {2000});
const Registration kLoadOe("LoadOe2010", LoadOe, {2000});
const Registration kLoad("Load", Load, {2000, 6000, 20000});
const Registration kReadIofList("ReadIofList", ReadIofList, {2000});
const Registration kWalkIofList("WalkIofList", WalkIofList, {2000});
const Registration kParseAndWalk("ParseAndWalk", ParseAndWalk, {2000, 6000, 20000});

}  // namespace
}  // namespace keltrun::bench
