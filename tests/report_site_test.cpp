// Publishing the report of an event with what belongs to it, and the list of a folder's events.
#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "keltrun2/codec/encodings.h"
#include "keltrun2/os/clock.h"
#include "keltrun2/report/event_list.h"
#include "keltrun2/report/index_page.h"
#include "keltrun2/text/letters.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

namespace fs = std::filesystem;
using std::string;

ListedEvent Event(string prefix, string name, string date, string published = "") {
  ListedEvent event;
  event.Prefix = std::move(prefix);
  event.Name = std::move(name);
  event.Date = std::move(date);
  event.Published = std::move(published);
  return event;
}

string Prefixes(const std::vector<ListedEvent>& events) {
  string text;
  for (const ListedEvent& event : events) text += event.Prefix + " ";
  return text;
}

TEST(EventList, AnEventIsOneTextInAnyPage) {
  ListedEvent event =
      Event("a b;=\"'", "<b>&\"';=% \r\n\xE5\xA4\xA7", "2026-05-03", "2026-05-03 18:40:00");
  event.Terrain = "T";
  event.Runners = 12;
  const string text = TextOfEvent(event);
  EXPECT_EQ(text.find_first_of("\"<>& \r\n"), string::npos) << text;
  const auto read = EventOfText(text);
  ASSERT_TRUE(read);
  EXPECT_EQ(TextOfEvent(*read), text);
  EXPECT_EQ(read->Name, event.Name);
  EXPECT_EQ(read->Runners, 12);
  for (const char* wrong : {"", "name=x", "prefix=../x;name=a", "prefix=a%5Cb", "prefix=%0A"}) {
    EXPECT_FALSE(EventOfText(wrong)) << wrong;
  }
  const auto damaged = EventOfText("prefix=p;date=2026-5-3;published=now;runners=x;name=%e5%zz%");
  ASSERT_TRUE(damaged);
  EXPECT_EQ(damaged->Date + damaged->Published, "");
  EXPECT_EQ(damaged->Name, "\xEF\xBF\xBD%zz%");
}

TEST(EventList, NewestFirstAndOneForEachPrefix) {
  std::vector<ListedEvent> events;
  for (const auto& [prefix, date, published] : Table<3>(
           R"(a 2026-05-03 "2026-05-03 10:00:00" | b "" "2026-06-01 10:00:00" | c 2026-05-04 ""
              d 2026-05-03 "2026-05-03 11:00:00" | a 2026-05-03 "2026-05-03 12:00:00")")) {
    AddEvent(events, Event(prefix, "N", date, published));
  }
  EXPECT_EQ(Prefixes(events), "c a d b ");
}

TEST(EventList, TheNameOrTheDateMayBeCorrected) {
  const ListedEvent event = Event("", "Race", "2026-05-03");
  EXPECT_TRUE(IsSameEvent(event, Event("", "City Race", "2026-05-03")));
  EXPECT_TRUE(IsSameEvent(event, Event("", "Race", "2026-05-04")));
  EXPECT_FALSE(IsSameEvent(event, Event("", "City Race", "2026-05-04")));
  EXPECT_FALSE(IsSameEvent(Event("", "A", ""), Event("", "B", "")));
}

// Everything around the list stays, whatever the charset is.
TEST(EventList, GoesIntoPagesOfOthers) {
  RestartIn(Mode::kEnglishTexts);
  const std::vector<ListedEvent> events = {Event("p_", "\xE5\xA4\xA7</li>\xE4\xBC\x9A", "")};
  const string block =
      string(kIndexStart) + "\r\n<a href=\"event.lxm\">x</a>\r\n" + string(kIndexFinish) + "\r\n";
  for (const string& page :
       std::vector<string>{"<p>club</p>\r\n", "<html><body>\r\n<p>club</p>\r\n</body></html>\r\n",
                           "<meta charset=\"x-sjis\">\x91\xE5<body><p>club</p></body>\r\n",
                           "<body><p>club</p>\r\n" + block + "</body>\r\n",
                           "<!-- <ul class=\"keltrun-events\"> --><p>club</p></body>\r\n"}) {
    const auto first = PageWithEvents(page, events, "other.lxm");
    ASSERT_TRUE(first) << page;
    EXPECT_TRUE(Contains(*first, "<p>club</p>") && !Contains(*first, "</li>\xE4\xBC\x9A"));
    EXPECT_EQ(Prefixes(EventsOfIndex(*first)), "p_ ");
    EXPECT_EQ(Contains(*first, "event.lxm"), Contains(page, "event.lxm"));
    EXPECT_EQ(PageWithEvents(*first, events, "other.lxm")->size(), first->size()) << "twice";
  }
  const auto replaced = PageWithEvents("<p>club</p>\r\n" + block, events, "event.lxm");
  EXPECT_FALSE(Contains(*replaced, "event.lxm")) << "the block of the same event";
  EXPECT_FALSE(PageWithEvents("\xFF\xFE<", events, ""));
}

TEST(EventList, IndexPagesOfOneEventMayBeReplaced) {
  const string start(kIndexStart), finish(kIndexFinish);
  const string block = start + "<a href=\"a%20event.lxm\">" + finish;
  for (const auto& [page, alone] :
       Rows<string, bool>{{"<body>" + block + "\n" + block + "</body>", true},
                          {"<body></body>", false},
                          {"<body>" + block + "x</body>", false},
                          {"<body>" + block + start + finish + "</body>", false},
                          {"<body>" + block + start + "</body>", false},
                          {block, false},
                          {"", false}}) {
    EXPECT_EQ(IsIndexOfOnly(page, "a event.lxm"), alone) << page;
  }
}

class ReportSiteTest : public testing::Test {
 protected:
  ReportSiteTest() {
    fs::create_directory(site);
    SetClock([] { return 45418 + (12 * 60 + 34) / 1440.0; });  // 2024-05-06 12:34
    Change("Race", 45418);
    const auto klass = root->AddClass("M21E");
    klass->ControlCount = 2;
    AddRunner(*klass, "Ann <b>", "0:05:00", {100, 100, 100});
    AddRunner(*klass, "Bo", "0:06:00", {100, 260, -1});
  }
  ~ReportSiteTest() override { SetClock({}); }

  // The event's name and date.
  void Change(std::string_view name, DateTime date) const {
    root->EventData()->EventName = name;
    root->EventData()->EventDate()->SetValue(date);
  }
  bool Publish(ReportSiteOptions options = {}) const {
    options.OutputFolder = site;
    return root->FileControl()->OutputReportSite(options);
  }
  std::set<string> Files() const {
    std::set<string> names;
    for (const auto& entry : fs::directory_iterator(site)) {
      names.insert(entry.path().filename().string());
    }
    return names;
  }
  string Page(const string& name = "index.html") const { return ReadBytes(site + "/" + name); }

  TemporaryFolder folder;
  string site = folder.Path("site");
  std::shared_ptr<clsKeltrun2> root = NewRoot(Mode::kEnglishTexts);
};

TEST_F(ReportSiteTest, HasWhatReadersTakeAway) {
  ASSERT_TRUE(root->FileControl()->SaveLapFile(folder.Path("before.lxm")));
  EXPECT_TRUE(Publish({.Prefix = "p/q ", .ChartOption = "0,1,7"})) << root->ErrorComment();
  EXPECT_EQ(root->ErrorComment(), "");
  EXPECT_EQ(Files(),
            (std::set<string>{"index.html", "p_q event.lxm", "p_q results.xml", "p_q results.csv",
                              "p_q charts.html", "p_q charts_m21e_0.png"}))
      << "nobody has a start time, and two runners make no map";
  for (const char* part :
       {"href=\"p_q%20event.lxm\" download>", "href=\"p_q%20results.xml\" download>",
        "href=\"p_q%20results.csv\" download>", "href=\"p_q%20charts.html\">Charts",
        "content=\"prefix=p_q%20;name=Race;date=2024-05-06;"}) {
    EXPECT_TRUE(Contains(Page(), part)) << part;
  }
  EXPECT_EQ(Page("p_q event.lxm"), ReadBytes(folder.Path("before.lxm")));
  EXPECT_TRUE(Contains(Page("p_q results.xml"), "iofVersion=\"3.0\""));
  EXPECT_TRUE(Contains(Page("p_q charts.html"), "src=\"p_q%20charts_m21e_0.png\""));
  ASSERT_TRUE(root->FileControl()->SaveLapFile(folder.Path("after.lxm")));
  EXPECT_EQ(ReadBytes(folder.Path("after.lxm")), ReadBytes(folder.Path("before.lxm")));
}

TEST_F(ReportSiteTest, ChartsMayBeSvg) {
  const ReportSiteOptions options = {
      .OutputFolder = site, .ChartOption = "0,2", .ChartFormat = KR_PICTURE_SVG};
  EXPECT_TRUE(Publish(options)) << root->ErrorComment();
  std::set<string> names;
  for (const string& file : root->FileControl()->ReportSiteFiles(options)) {
    names.insert(fs::path(file).filename().string());
  }
  EXPECT_EQ(Files(), names);
  for (const string mode : {"0", "2"}) {
    const string name = "charts_m21e_" + mode + ".svg";
    EXPECT_TRUE(Contains(Page("charts.html"), "src=\"" + name + "\"")) << name;
    EXPECT_TRUE(Contains(Page(name), "viewBox=\"0 0 1200 800\"")) << name;
    EXPECT_TRUE(Contains(Page(name), ">Ann &lt;b&gt;</text>")) << name;
  }
  EXPECT_THROW(Publish({.ChartFormat = KR_PICTURE_PDF}), AutomationError);
}

TEST_F(ReportSiteTest, AReportBecomesAFileOfItsOwnWhenAnEventIsAdded) {
  EXPECT_TRUE(Publish({.Prefix = "a_"}));
  const string report = Page();
  Change("Other", 45419);
  EXPECT_TRUE(Publish({.Prefix = "b_", .AddToIndex = true})) << root->ErrorComment();
  EXPECT_EQ(Page("a_report.html"), report);
  EXPECT_EQ(Prefixes(EventsOfIndex(Page())), "b_ a_ ");
  EXPECT_TRUE(Contains(Page("b_report.html"), "href=\"index.html\">All events"));
  Change("Other <again>", 45419);
  EXPECT_TRUE(Publish({.Prefix = "b_", .AddToIndex = true})) << root->ErrorComment();
  EXPECT_EQ(Prefixes(EventsOfIndex(Page())), "b_ a_ ");
  EXPECT_TRUE(Contains(Page(), "Other &lt;again&gt;") && !Contains(Page(), ">Other<"));
  EXPECT_TRUE(Contains(Page(), "<time datetime=\"2024-05-07\">2024-05-07</time>"));
}

// What is refused, and that nothing is written then.
TEST_F(ReportSiteTest, RefusesToReplaceWhatIsNotOfTheEvent) {
  const string list = EventListPage({Event("p_", "Other", "2024-05-01")});
  const string report = "<meta name=\"keltrun2-event\" content=\"" +
                        TextOfEvent(Event("x_", "Other", "2024-05-01")) + "\">";
  const struct {
    std::vector<std::pair<string, string>> files;
    ReportSiteOptions options;
    string conflict;
  } cases[] = {
      {{{"index.html", "<p>club</p>"}}, {}, "index.html holds more than this event"},
      {{{"index.html", list}}, {}, "index.html is a list of events"},
      {{{"index.html", report}}, {}, "index.html is the report of another event, \"Other\" (20"},
      {{{"event.lxm", "x"}}, {}, "event.lxm exists already"},
      {{{"results.csv", "x"}}, {}, "results.csv exists already"},
      {{{"charts_m21e_0.png", "x"}}, {.ChartOption = "0"}, "charts_m21e_0.png exists already"},
      {{{"index.html", "<p>club</p>"}, {"p_report.html", "x"}},
       {.Prefix = "p_", .AddToIndex = true},
       "p_report.html exists already"},
      {{{"index.html", list}}, {.Prefix = "p_", .AddToIndex = true}, "event.lxm is of another"},
      {{{"index.html", report}, {"x_report.html", "x"}},
       {.AddToIndex = true},
       "x_report.html is in the place where the report of \"Other\""}};
  for (const auto& test : cases) {
    SCOPED_TRACE(test.conflict);
    fs::remove_all(site);
    fs::create_directory(site);
    for (const auto& [name, text] : test.files) WriteBytes(site + "/" + name, text);
    const auto names = Files();
    EXPECT_FALSE(Publish(test.options));
    EXPECT_TRUE(Contains(root->ErrorComment(), test.conflict)) << root->ErrorComment();
    EXPECT_EQ(Files(), names);
    for (const auto& [name, text] : test.files) EXPECT_EQ(Page(name), text);
    ReportSiteOptions forced = test.options;
    forced.ReplaceOthers = true;
    EXPECT_TRUE(Publish(forced)) << root->ErrorComment();
    EXPECT_EQ(root->ErrorComment(), "");
  }
}

TEST_F(ReportSiteTest, ReplacesItsOwnAndKeepsTheRestOfAnIndex) {
  EXPECT_TRUE(Publish());
  Change("Renamed", 45000);
  EXPECT_TRUE(Publish({.ChartOption = "0"})) << "a folder with one report shows one event";
  EXPECT_TRUE(root->FileControl()
                  ->SiteConflicts(
                      {.OutputFolder = site, .IndexFile = "index.html", .Lap2File = "event.lxm"})
                  .empty());
  EXPECT_EQ(root->FileControl()
                ->SiteConflicts({.OutputFolder = site,
                                 .IndexFile = "index.html",
                                 .Lap2File = "event.lxm",
                                 .IndexFileAddMode = true})
                .size(),
            1u)
      << "a report is no index to add to";
  WriteBytes(site + "/index.html", "<html><body>\r\n<p>club</p>\r\n</body></html>\r\n");
  EXPECT_TRUE(Publish({.Prefix = "p_", .AddToIndex = true})) << root->ErrorComment();
  EXPECT_TRUE(Contains(Page(), "<p>club</p>") && Contains(Page(), "href=\"p_report.html\""));
}

TEST_F(ReportSiteTest, GoesOnAfterAFileThatCannotBeWritten) {
  fs::create_directory(site + "/results.csv");
  EXPECT_TRUE(Publish({.ReplaceOthers = true}));
  EXPECT_TRUE(Contains(root->ErrorComment(), "results.csv: it is a folder"));
  EXPECT_TRUE(Contains(Page(), "href=\"event.lxm\"") && !Contains(Page(), "href=\"results.csv\""));
  EXPECT_THROW((void)Publish({.UntimedLegs = "x"}), AutomationError);
  EXPECT_FALSE(root->FileControl()->OutputReportSite({.OutputFolder = folder.Path("missing")}))
      << "nobody agreed to create it";
}

}  // namespace
}  // namespace keltrun::test
