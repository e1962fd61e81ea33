// A server has many threads, each with a root of its own. The output of each must be the same as if
// it ran alone. The preset "tsan" runs these tests under ThreadSanitizer.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <barrier>
#include <filesystem>
#include <map>
#include <numeric>
#include <optional>
#include <stdexcept>
#include <thread>

#include "keltrun2/os/clock.h"
#include "keltrun2/site/ordered_jobs.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using std::string;
using std::to_string;

// Outputs by name. A difference is reported by name, without pages of bytes.
using Outputs = std::map<string, string>;

string TimeText(int seconds) { return FormatDateTime(Seconds(seconds), "hh:nn:ss"); }

// A different event for each number: three classes, two of them on one course, with runners whose
// names need different characters and fonts.
string EventText(int number) {
  const string names[] = {"山田", "Müller", "Đorđe", "Иван", "鈴木", "Ås", "김", "Zoë"};
  string text = "<keltrun><event name='Event " + to_string(number) + "'/><courses>";
  for (int course = 1; course <= 2; ++course) {
    text += "<course number='" + to_string(course) + "' controls='3'>";
    for (int i = 1; i <= 3; ++i) {
      text += "<control index='" + to_string(i) + "' unit-number='" +
              to_string(30 + (course + 1) * i + number) + "'/>";
    }
    text += "</course>";
  }
  text += "</courses><classes>";
  for (const char* klass : {"M21", "W21", "男子"}) {
    text += "<class name='" + string(klass) + to_string(number) + "' course='" +
            (klass[0] == 'W' ? "2" : "1") + "' controls='3'>";
    for (int i = 0; i < 9 + number; ++i) {
      text += "<runner name='" + names[(i + number) % 8] + " " + to_string(i) +
              "' result='0:" + to_string(15 + i) + ":00' start='10:" + to_string(10 + i) + ":00'>";
      for (int leg = 1; leg <= 4; ++leg) {
        text += "<leg index='" + to_string(leg) + "' laptime='" +
                TimeText(200 + 15 * i + leg * ((i * number) % 7)) + "'/>";
      }
      text += "</runner>";
    }
    text += "</class>";
  }
  return text + "</classes></keltrun>";
}

struct TextGrid : clsGridObject {
  string texts;
  void SetTextMatrix(std::int32_t, std::int32_t, std::string_view text) override {
    texts += string(text) + "|";
  }
};

class Server {
 public:
  Server(int number, string folder) : number_(number), folder_(std::move(folder)) {
    std::filesystem::create_directories(folder_);
  }

  Outputs Serve() {
    Load();
    analyzer_->ExtraAnalyze();
    analyzer_->Vesmer();
    Pages();
    Pictures();
    Print();
    Files();
    return std::move(made_);
  }

 private:
  void Load() {
    const auto files = root_->FileControl();
    files->OnProgress([this](std::int32_t percent) { made_["percents"] += to_string(percent); });
    EXPECT_FALSE(files->LoadLapFile(folder_ + "/missing.lxm"));
    made_["error"] = root_->ErrorComment();
    EXPECT_TRUE(
        files->LoadLapFile("", KR_FILETYPE_KELTRUN2, KR_LOADMODE_NORMAL, EventText(number_)));
    const string own = "M21" + to_string(number_);
    analyzer_->AddClass(own);
    analyzer_->Execute();
    results_->AddClass(own);
    results_->CalcRank();
    for (std::int32_t i = 1; i <= analyzer_->Count(); ++i) {
      made_["serials"] += to_string(analyzer_->Item(i)->SerialNum()) + " ";
    }
    for (const string& choice : root_->ClassAndCourseList()) made_["choices"] += choice + "\n";
    EXPECT_EQ(analyzer_->Count(), 9 + number_);
  }

  void Pages() {
    const auto html = root_->HtmlControl();
    made_["analysis"] = html->OutputAnalysis(analyzer_);
    made_["result"] = html->OutputResult(results_);
    made_["legs"] = html->OutputLegData(analyzer_);
    made_["chart page"] = html->OutputChart(analyzer_, "c", "0,1,2");
    made_["viewer"] = html->OutputViewer({{analyzer_, DataSetKind::kClass}});
    const auto texts = root_->TextControl();
    made_["mail"] = texts->OutputTextMail(analyzer_);
    made_["text"] = texts->OutputTextResult(results_);
    made_["macro"] = texts->OutputCsvQuillonMacro(analyzer_);
    made_["splits"] = texts->OutputCsvSplitsBrowser(analyzer_);
    made_["json"] = texts->OutputJson(analyzer_);
    made_["results json"] = texts->OutputResultJson({{results_, DataSetKind::kClass}});
    made_["info"] = texts->OutputInfoJson();
  }

  void Pictures() {
    for (const auto format : {KR_PICTURE_PNG, KR_PICTURE_SVG, KR_PICTURE_PDF}) {
      const auto picture = std::make_shared<CairoPicture>(600, 400, format);
      const auto chart = std::make_shared<clsChartObject>();
      chart->SetPictureObject(picture);
      const auto mode = number_ % 2 == 0 ? KR_CHART_NORMAL : KR_CHART_CRUISE_MISSRATE;
      root_->GraphicControl()->DrawChart(analyzer_, chart, mode, 1, 1, 0, 0);
      chart->DrawChart();
      made_["picture " + to_string(format)] = picture->Encode();
    }
    const auto grid = std::make_shared<TextGrid>();
    root_->GraphicControl()->DrawGrid(analyzer_, grid);
    made_["grid"] = grid->texts;
  }

  void Print() {
    const auto book = std::make_shared<clsPrintBook>();
    book->Init("", KR_PAPER_A4, tpotPortrate, 10, 10, 10, 10, 1);
    root_->GraphicControl()->PrintResult(results_, book, 1.5f, true);
    root_->GraphicControl()->PrintAnalysis(analyzer_, book);
    book->Execute();
    made_["print"] = dynamic_cast<PdfPrinter&>(*book->PrinterObject()).Document();
    const auto preview = std::make_shared<CairoPicture>(200, 300);
    book->ShowPreview(preview, 1);
    made_["preview"] = preview->Encode();
  }

  void Files() {
    const auto files = root_->FileControl();
    SiteOptions site;
    site.OutputFolder = folder_ + "/site";
    std::filesystem::create_directories(site.OutputFolder);
    site.IndexFile = "index.html";
    site.AnalysisFile = "a_*.html";
    site.ResultFile = "r_*.html";
    site.LegDataFile = "l_*.html";
    site.ChartFile = "c_*.html";
    site.ChartOption = "0";
    site.ViewerFile = "viewer.html";
    site.Lap1File = "event.lap";
    site.AnalysisIncludeCourse = true;
    if (number_ % 2 == 0) site.Charset = "utf-8";
    EXPECT_TRUE(files->OutputSite(site));
    EXPECT_EQ(root_->ErrorComment(), "");
    for (const char* kind : {".lxm", ".lap", ".xml", ".lzh"}) {
      EXPECT_TRUE(files->SaveLapFile(folder_ + "/event" + to_string(number_) + kind))
          << root_->ErrorComment();
    }
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_)) {
      if (!entry.is_regular_file()) continue;
      made_[entry.path().lexically_relative(folder_).string()] = ReadBytes(entry.path().string());
    }
    EXPECT_TRUE(files->LoadLapFile(folder_ + "/event" + to_string(number_) + ".lzh"))
        << root_->ErrorComment();
    analyzer_->Clear();
    analyzer_->AddClass(1);
    analyzer_->Execute();
    made_["unpacked"] = root_->TextControl()->OutputCsvSplitsBrowser(analyzer_);
  }

  const int number_;
  const string folder_;
  const std::shared_ptr<clsKeltrun2> root_ = std::make_shared<clsKeltrun2>();
  const std::shared_ptr<clsAnalyzer> analyzer_ = root_->NewAnalyzer();
  const std::shared_ptr<clsResultsHolder> results_ = root_->NewResultsHolder();
  Outputs made_;
};

class Threads : public testing::Test {
 protected:
  Threads() {
    RestartIn(Mode::kJapaneseTexts);
    SetClock([] { return 46023.5; });
  }
  ~Threads() override { SetClock({}); }
};

TEST_F(Threads, EachWithARootMakeWhatOneMakesAlone) {
  constexpr int kThreads = 8;
  const TemporaryFolder folder;
  std::vector<Outputs> alone, together(kThreads);
  // The threads run first, so that neither fonts nor tables have been prepared.
  std::barrier start(kThreads);
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int number = 0; number < kThreads; ++number) {
    threads.emplace_back([&, number] {
      start.arrive_and_wait();
      together[static_cast<std::size_t>(number)] =
          Server(number, folder.Path(to_string(number))).Serve();
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (int number = 0; number < kThreads; ++number) {
    std::filesystem::remove_all(folder.Path(to_string(number)));
    alone.push_back(Server(number, folder.Path(to_string(number))).Serve());
  }
  for (std::size_t number = 0; number < kThreads; ++number) {
    ASSERT_GT(alone[number].size(), 30u);
    for (const auto& [name, output] : alone[number]) {
      EXPECT_TRUE(together[number][name] == output) << "event " << number << ": " << name;
      const bool of_its_own = number == 0 || alone[number - 1][name] != output;
      EXPECT_TRUE(of_its_own || name == "percents" || name == "chart page") << name;
    }
    EXPECT_EQ(together[number].size(), alone[number].size());
  }
}

// Runs on another thread and waits for its end.
template <typename Call>
auto OnAnotherThread(Call call) {
  std::optional<decltype(call())> result;
  std::thread([&] { result = call(); }).join();
  return *result;
}

TEST_F(Threads, WithoutARootWorkWithTheYoungestOfTheProcess) {
  const auto root = std::make_shared<clsKeltrun2>();
  root->AddClass("Main");
  const auto names = [&root] {
    string all;
    for (const string& choice : root->ClassAndCourseList()) all += choice + " ";
    return all;
  };
  EXPECT_EQ(OnAnotherThread(names), "1,,Main,main,0 ");
  EXPECT_FALSE(OnAnotherThread([&] { return root->FileControl()->LoadLapFile("missing.lxm"); }));
  EXPECT_NE(root->ErrorComment(), "") << "the error is that of the root's thread";
  root->AddClass("Main");

  // A root of another thread is not used, even if it still exists.
  std::shared_ptr<clsKeltrun2> other;
  EXPECT_EQ(OnAnotherThread([&] {
              other = std::make_shared<clsKeltrun2>();
              other->AddClass("Other")->AddLap();
              EXPECT_FALSE(other->FileControl()->LoadLapFile("other.lxm", KR_FILETYPE_AUTODETECT,
                                                             KR_LOADMODE_APPEND));
              return names() + (root->ErrorComment().find("other.lxm") != string::npos ? "!" : "");
            }),
            "1,,Other,other,1 !");
  EXPECT_EQ(names(), "1,,Main,main,0 ");
  EXPECT_EQ(root->ErrorComment().find("other.lxm"), string::npos);
  EXPECT_EQ(root->ClassData(1)->AddLap()->SerialNum(), 1);
  EXPECT_EQ(OnAnotherThread(names), "1,,Other,other,1 ") << "its thread has ended, the root lives";

  // A root may be released on another thread. A thread whose own roots are gone has none.
  EXPECT_EQ(OnAnotherThread([&] { return other.reset(), names(); }), "1,,Main,main,1 ");
  EXPECT_EQ(OnAnotherThread([&] {
              std::make_shared<clsKeltrun2>().reset();
              return root->FileControl()->SaveLapFile("nothing.lxm");
            }),
            false)
      << "not the event of another thread";
}

// The sites of an event, both kinds, made on so many threads: every file, the failures and what the
// host was told. Some files cannot be written, because folders are in the way.
Outputs PublishedBy(std::int32_t jobs, const string& event, const string& folder) {
  std::filesystem::remove_all(folder);
  std::filesystem::create_directories(folder);
  Outputs made;
  const auto root = std::make_shared<clsKeltrun2>();
  const auto files = root->FileControl();
  EXPECT_TRUE(files->LoadLapFile(ExampleFile(event))) << root->ErrorComment();
  const auto handle = files->OnProgress([&, host = std::this_thread::get_id()](auto percent) {
    EXPECT_EQ(std::this_thread::get_id(), host);
    made["percents"] += to_string(percent) + " ";
  });
  SiteOptions site = {.OutputFolder = folder,
                      .IndexFile = "classic.html",
                      .ResultFile = "r_*.html",
                      .AnalysisFile = "a_*.html",
                      .LegDataFile = "l_*.html",
                      .ChartFile = "c_*.html",
                      .ChartOption = "1,7"};
  site.ResultIncludeCourse = site.AnalysisIncludeCourse = site.ChartIncludeCourse = true;
  site.UntimedLegs = "auto";
  site.Jobs = jobs;
  ReportSiteOptions report = {.OutputFolder = folder, .Prefix = "p_", .ReplaceOthers = true};
  report.ChartOption = "0,7";
  report.ChartFormat = KR_PICTURE_SVG;
  report.ChartIncludeCourse = true;
  report.Jobs = jobs;
  int number = 0;
  for (const auto& names : {files->SiteFiles(site), files->ReportSiteFiles(report)}) {
    for (const string& name : names) {
      if (++number % 17 == 0) std::filesystem::create_directory(name);
    }
  }
  EXPECT_TRUE(files->OutputSite(site));
  made["failures"] = root->ErrorComment();
  EXPECT_TRUE(files->OutputReportSite(report));
  made["failures"] += root->ErrorComment();
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    const string name = entry.path().filename().string();
    made[name] = entry.is_regular_file() ? ReadBytes(entry.path().string()) : "folder";
  }
  return made;
}

TEST_F(Threads, OfASiteExportMakeWhatOneMakes) {
  const TemporaryFolder folder;
  for (const char* event : {"hoshinomori/event.lxm", "midorigaoka/event.lxm"}) {
    const Outputs one = PublishedBy(1, event, folder.Path("site"));
    ASSERT_GT(one.size(), 100U);
    EXPECT_GT(std::count(one.at("failures").begin(), one.at("failures").end(), '\n'), 6);
    Outputs four = PublishedBy(4, event, folder.Path("site"));
    for (const auto& [name, output] : one) {
      EXPECT_TRUE(four[name] == output) << event << ": " << name;
    }
    EXPECT_EQ(four.size(), one.size()) << event;
  }
}

// Jobs are finished in order, also when an early one takes longest; what a job or the end of one
// throws ends the work when it is its turn.
TEST_F(Threads, TakeJobsInOrder) {
  const auto root = std::make_shared<clsKeltrun2>();
  root->AddClass("Main");
  for (const std::size_t threads : {1U, 2U, 5U, 40U}) {
    for (const int thrown_by : {0, 1, 2}) {  // nobody, a job, the end of a job
      std::atomic<int> running = 0, second_begun = 0;
      std::vector<std::size_t> finished;
      const auto run = [&](std::size_t job, std::size_t worker) {
        const int at_once = ++running;
        EXPECT_LE(static_cast<std::size_t>(at_once), threads);
        EXPECT_LT(worker, threads);
        EXPECT_EQ(root->ClassAndCourseList().size(), 1U) << "the event of the caller";
        if (job == 1) second_begun = 1;
        while (job == 0 && threads > 1 && second_begun == 0) std::this_thread::yield();
        --running;
        if (job == 8 && thrown_by == 1) throw std::runtime_error("job");
      };
      const auto finish = [&](std::size_t job) {
        if (job == 8 && thrown_by == 2) throw std::runtime_error("job");
        finished.push_back(job);
      };
      if (thrown_by == 0) {
        RunInOrder(20, threads, run, finish);
      } else {
        EXPECT_THROW(RunInOrder(20, threads, run, finish), std::runtime_error);
      }
      std::vector<std::size_t> expected(thrown_by == 0 ? 20 : 8);
      std::iota(expected.begin(), expected.end(), std::size_t{0});
      EXPECT_EQ(finished, expected);
      EXPECT_EQ(running, 0) << "all threads have ended";
    }
  }
  EXPECT_EQ(ThreadCount(3, 2, ""), 2U);
  EXPECT_EQ(ThreadCount(3, 9, ""), 3U);
  EXPECT_GE(ThreadCount(0, 9, ""), 1U);
  EXPECT_THROW(ThreadCount(-1, 9, ""), AutomationError);
}

}  // namespace
}  // namespace keltrun::test
