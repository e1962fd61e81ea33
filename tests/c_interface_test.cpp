// The C interface: what it exports is what the objects make, and whatever it is given, it answers
// with a status and a sentence.
#include <gtest/gtest.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "keltrun2/c/keltrun2.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using std::string;

struct Free {
  void operator()(keltrun2_event* event) const { keltrun2_event_free(event); }
  void operator()(keltrun2_output* output) const { keltrun2_output_free(output); }
};
using Event = std::unique_ptr<keltrun2_event, Free>;
using Output = std::unique_ptr<keltrun2_output, Free>;

class CInterface : public testing::Test {
 protected:
  CInterface() { RestartIn(Mode::kEnglishTexts); }

  const string kHoshinomori = ReadBytes(ExampleFile("hoshinomori/event.lxm"));
  const string kMidorigaoka = ReadBytes(ExampleFile("midorigaoka/event.lxm"));
};

keltrun2_status Open(const Event& event, const string& name, const string& bytes) {
  return keltrun2_open(event.get(), name.c_str(), bytes.data(), bytes.size());
}

Event Opened(const string& bytes) {
  Event event(keltrun2_event_new());
  EXPECT_EQ(Open(event, "event.lxm", bytes), KELTRUN2_OK) << keltrun2_last_error(event.get());
  return event;
}

// The bytes of all files of a form; the error text after "error: " when there are none.
string Exported(const Event& event, const char* form) {
  keltrun2_output* made = nullptr;
  if (keltrun2_export(event.get(), form, &made) != KELTRUN2_OK) {
    EXPECT_EQ(made, nullptr);
    return string("error: ") + keltrun2_last_error(event.get());
  }
  const Output output(made);
  string bytes;
  for (std::size_t i = 0; i < keltrun2_output_count(made); ++i) {
    bytes.append(static_cast<const char*>(keltrun2_output_bytes(made, i)),
                 keltrun2_output_size(made, i));
  }
  return bytes;
}

std::vector<string> Forms() {
  std::vector<string> forms;
  while (const char* form = keltrun2_forms(forms.size())) forms.emplace_back(form);
  return forms;
}

TEST_F(CInterface, ExportsWhatTheObjectsMake) {
  const Event event = Opened(kHoshinomori);
  const auto root = std::make_shared<clsKeltrun2>();
  ASSERT_TRUE(root->FileControl()->LoadLapFile(ExampleFile("hoshinomori/event.lxm")));
  root->SetFileName("event.lxm");
  EXPECT_EQ(Exported(event, "info-json"), root->TextControl()->OutputInfoJson());
  EXPECT_EQ(Exported(event, "results-csv"),
            "\xEF\xBB\xBF" + root->TextControl()->OutputCsvResults());
  const auto analyzer = root->NewAnalyzer();
  analyzer->AddClass("M21A");
  analyzer->SetUntimedLegs("auto");
  analyzer->Execute();
  analyzer->ExtraAnalyze();
  analyzer->Vesmer();
  keltrun2_set(event.get(), "class", "M21A");
  EXPECT_EQ(Exported(event, "analyze-json"),
            root->TextControl()->OutputJson(analyzer, DataSetKind::kClass, root->NewEstimate()) +
                (root->TextControl()->OutputJson(analyzer).ends_with('\n') ? "" : "\n"));
  EXPECT_EQ(Exported(event, "analyze-html"),
            root->HtmlControl()->OutputAnalysis(analyzer, "", "utf-8"));
}

TEST_F(CInterface, EveryFormCanBeMadeAndEveryLapFileReadAgain) {
  const Event event = Opened(kHoshinomori);
  keltrun2_set(event.get(), "class", "M21A");
  const string info = Exported(event, "info-json");
  for (const string& form : Forms()) {
    const string bytes = Exported(event, form.c_str());
    EXPECT_FALSE(bytes.empty() || bytes.starts_with("error: ")) << form << ": " << bytes;
    if (SaveTypeOfWord(form) == KR_FILETYPE_UNKNOWN) continue;
    Event again(keltrun2_event_new());
    EXPECT_EQ(Open(again, form == "lxm" ? "a.lxm" : "a.txt", bytes), KELTRUN2_OK)
        << form << ": " << keltrun2_last_error(again.get());
    EXPECT_NE(Exported(again, "results-csv").find("M21A"), string::npos) << form;
  }
}

TEST_F(CInterface, TheSiteHasItsPageWhichLinksTheResultsForOtherPrograms) {
  const Event event = Opened(kHoshinomori);
  keltrun2_output* site = nullptr;
  ASSERT_EQ(keltrun2_export(event.get(), "site", &site), KELTRUN2_OK);
  const Output owner(site);
  std::vector<string> names;
  for (std::size_t i = 0; i < keltrun2_output_count(site); ++i) {
    names.emplace_back(keltrun2_output_name(site, i));
  }
  EXPECT_EQ(names, (std::vector<string>{"index.html", "event.lxm", "results.xml", "results.csv"}));
  const string page(static_cast<const char*>(keltrun2_output_bytes(site, 0)),
                    keltrun2_output_size(site, 0));
  for (std::size_t i = 1; i < names.size(); ++i) {
    EXPECT_NE(page.find("href=\"" + names[i] + "\""), string::npos) << names[i];
  }
  EXPECT_EQ(Exported(event, "report").find("href=\"event.lxm\""), string::npos);
}

TEST_F(CInterface, WhatIsNotThereIsNamedWithWhatIs) {
  struct Case {
    const char* option;
    const char* value;
    const char* form;  // exported after the option was set; null: the option is refused
    keltrun2_status status;
    const char* part;
  };
  const Case cases[] = {
      {"colour", "red", nullptr, KELTRUN2_WRONG_USE, "the options are input-format"},
      {"race", "0", nullptr, KELTRUN2_WRONG_USE, "race: \"0\""},
      {"race", "2x", nullptr, KELTRUN2_WRONG_USE, "a number from 1 on"},
      {"match", "bib", nullptr, KELTRUN2_WRONG_USE, "one of name id none"},
      {"known-only", "1", nullptr, KELTRUN2_WRONG_USE, "one of yes no"},
      {"untimed", "77", nullptr, KELTRUN2_WRONG_USE, "untimed: \"77\""},
      {"charset", "ebcdic", nullptr, KELTRUN2_WRONG_USE, "a known charset"},
      {"input-charset", "ebcdic", nullptr, KELTRUN2_WRONG_USE, "a known charset"},
      {"input-format", "doc", nullptr, KELTRUN2_WRONG_USE, "the short name of a format"},
      {"delimiter", "x", nullptr, KELTRUN2_WRONG_USE, "delimiter"},
      {"class", "", "analyze-pdf", KELTRUN2_WRONG_USE, "the forms are lxm"},
      {"class", "M99", "analyze-html", KELTRUN2_FAILED, "the classes are M20E"},
      {"course", "99", "analyze-json", KELTRUN2_FAILED, "no runner has course 99"},
      {"segment", "1-2", "results-json", KELTRUN2_FAILED, "the segments are"},
      {"class", nullptr, "analyze-html", KELTRUN2_FAILED, "there are several sets"},
      {"charset", "cp932", "lxm", KELTRUN2_FAILED, "cannot be chosen"},
      {"charset", "cp932", "report", KELTRUN2_WRONG_USE, "cannot be chosen"},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(string(each.option) + "=" + (each.value != nullptr ? each.value : "(null)"));
    const Event event = Opened(kHoshinomori);
    keltrun2_status status = keltrun2_set(event.get(), each.option, each.value);
    if (each.form != nullptr) {
      EXPECT_EQ(status, KELTRUN2_OK);
      keltrun2_output* output = nullptr;
      status = keltrun2_export(event.get(), each.form, &output);
    }
    EXPECT_EQ(status, each.status);
    EXPECT_NE(string(keltrun2_last_error(event.get())).find(each.part), string::npos)
        << keltrun2_last_error(event.get());
  }
}

TEST_F(CInterface, AFileThatCannotBeReadLeavesTheEventAsItWas) {
  const Event event = Opened(kHoshinomori);
  const string before = Exported(event, "info-json");
  for (const string& bytes : {string(), string("no results"), kHoshinomori.substr(0, 5000),
                              string("PK\x03\x04zip", 7) + string(30, 'x')}) {
    EXPECT_EQ(Open(event, "bad.lxm", bytes), KELTRUN2_FAILED);
    EXPECT_NE(string(keltrun2_last_error(event.get())).find("bad.lxm"), string::npos)
        << keltrun2_last_error(event.get());
    EXPECT_EQ(Exported(event, "info-json"), before);
    EXPECT_EQ(keltrun2_merge(event.get(), "bad.lxm", bytes.data(), bytes.size()), KELTRUN2_FAILED);
    EXPECT_EQ(Exported(event, "info-json"), before);
  }
}

TEST_F(CInterface, EventsSideBySideDoNotMeet) {
  const Event first = Opened(kHoshinomori);
  const string info = Exported(first, "info-json");
  const string laps = Exported(first, "analyze-json");
  Event second = Opened(kMidorigaoka);
  const string other = Exported(second, "results-csv");
  EXPECT_EQ(Exported(first, "info-json"), info);
  EXPECT_EQ(Exported(first, "analyze-json"), laps);

  // The numbers of runners go on where the event ended, whatever was opened in between.
  keltrun2_set(first.get(), "match", "none");
  ASSERT_EQ(keltrun2_merge(first.get(), "late.lxm", kMidorigaoka.data(), kMidorigaoka.size()),
            KELTRUN2_OK);
  const string both = Exported(first, "report-data");
  const auto runners = nlohmann::json::parse(both)["runners"];
  std::set<int> serials;
  for (const auto& runner : runners) serials.insert(runner[0].get<int>());
  EXPECT_EQ(serials.size(), runners.size());
  EXPECT_EQ(Exported(second, "results-csv"), other);
  second.reset();
  EXPECT_EQ(Exported(first, "report-data"), both);
}

TEST_F(CInterface, RemarksAreGroupedByKind) {
  const Event event = Opened(kHoshinomori);
  const string list = "Name,Club\nx,y\n";
  keltrun2_merge(event.get(), "list.csv", list.data(), list.size());
  const auto remarks = nlohmann::json::parse(Exported(event, "remarks-json"));
  EXPECT_EQ(remarks["version"], 1);
  EXPECT_EQ(remarks["format"], "Keltrun2 lap file");
  EXPECT_TRUE(remarks["remarks"].is_array() && remarks["oddities"].is_array());
}

TEST_F(CInterface, ThreadsUseEventsOfTheirOwn) {
  const string expected = Exported(Opened(kHoshinomori), "analyze-tidy-csv");
  std::vector<string> found(4);
  std::vector<std::thread> threads;
  threads.reserve(found.size());
  for (string& text : found) {
    threads.emplace_back(
        [&text, this] { text = Exported(Opened(kHoshinomori), "analyze-tidy-csv"); });
  }
  for (std::thread& thread : threads) thread.join();
  for (const string& text : found) EXPECT_EQ(text, expected);

  // An event may go from thread to thread.
  const Event event = Opened(kHoshinomori);
  std::thread([&] { EXPECT_EQ(Exported(event, "analyze-tidy-csv"), expected); }).join();
}

}  // namespace
}  // namespace keltrun::test
