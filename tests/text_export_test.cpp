// The text and CSV exports: small events byte by byte, and a class of an example compared with
// golden files, which KELTRUN2_APPROVE=1 rewrites.
#include <gtest/gtest.h>

#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using std::string;

std::shared_ptr<clsAnalyzer> Analyzed(const clsKeltrun2& root, std::string_view klass) {
  const auto analyzer = root.NewAnalyzer();
  analyzer->AddClass(klass);
  analyzer->Execute();
  return analyzer;
}

string ResultText(const clsKeltrun2& root, const std::vector<std::string_view>& classes) {
  const auto results = root.NewResultsHolder();
  for (const auto klass : classes) results->AddClass(klass);
  results->CalcRank();
  return root.TextControl()->OutputTextResult(results);
}

/// A class of three runners on three legs; "Sk" missed the second control, "Slow" is disqualified.
/// The reference laps are 600 s, 190 s and 230 s, 1020 s in all.
struct ExportEvent {
  explicit ExportEvent(Mode mode = Mode::kJapaneseTexts) : root(NewRoot(mode)) {
    root->EventData()->EventName = "Cup\r\n5";
    root->EventData()->SetEventDate(std::make_shared<clsDateValue>(45418));  // 2024-05-06
    std::tie(klass->ControlCount, klass->Length, klass->Climb) = std::tuple(2, 4500, 120);
    const auto first = AddRunner(*klass, "山田 太郎", "0:17:00", {600, 200, 220});
    first->ClubName = "Club,\tA";
    first->SetStartTime(std::make_shared<clsTimeValue>(Seconds(9 * 3600 + 300)));
    AddRunner(*klass, "Slow", "DISQ", {660, 180, 240});
    AddRunner(*klass, "Sk", "0:17:30", {540, -1, 510});
  }
  string Macro() const {
    return root->TextControl()->OutputCsvQuillonMacro(Analyzed(*root, "M,1"));
  }
  string Browser() const {
    return root->TextControl()->OutputCsvSplitsBrowser(Analyzed(*root, "M,1"));
  }
  string Mail() const { return root->TextControl()->OutputTextMail(Analyzed(*root, "M,1")); }

  std::shared_ptr<clsKeltrun2> root;
  std::shared_ptr<clsClassData> klass = root->AddClass("M,1");
};

TEST(TextExport, CommaSeparated) {
  // Sk's 510 s for two legs are shared in the ratio 190 to 230: 540 s + 230.7 s.
  const string titles = "クラス,氏名,所属,順位,記録,スタート時刻,";
  const string rows =
      "M，1,山田 太郎,Club， A,1,0:17:00,09:05:00,00:10:00,00:13:20,00:17:00\r\n"
      "M，1,Sk,,2,0:17:30,－,00:09:00,00:12:51,00:17:30\r\n";
  EXPECT_EQ(ExportEvent(Mode::kEnglishTexts).Macro(), titles + "→1,→2,→F\r\n" + rows);
  EXPECT_EQ(ExportEvent(Mode::kJapaneseMode).Macro(), titles + "→１,→２,→F\r\n" + rows);
  EXPECT_EQ(ExportEvent().Browser(),
            "M，1,2\r\n山田 太郎,Club， A,9:05:00,10:00,13:20,17:00\r\n"
            "Sk,,9:00:00,9:00,0:00,17:30\r\n");
}

TEST(TextExport, WhoHasFinished) {
  for (const string result : {"1:23:45", "0:17:30.4", "23:59:59", "24:00:00", "25:03:07", "DNF"}) {
    const bool finished = result < "24" && result != "DNF";
    const ExportEvent event;
    event.klass->LapData(1)->SetResult(result);
    EXPECT_EQ(event.Macro().find("山田") != string::npos, finished) << result;
    EXPECT_EQ(event.Browser().find("山田") != string::npos, finished) << result;
    EXPECT_NE(event.Mail().find("山田"), string::npos) << result;
  }
}

TEST(TextExport, Mail) {
  EXPECT_EQ(ExportEvent().Mail(), CrLf(R"(◎ M,1 4.5km ↑120m
    - Cup  5 2024年05月06日

■ ラップタイム (mmmss)

  山田      Sk  Slow  Ave3
 1  1000   900  1100  1000
 2   320    ↓   300   310
 F   340   830   400   350
TT  1700  1730  DISQ  1700

■積算タイム (mmmss)

  山田      Sk  Slow  Ave3
 1  1000   900  1100  1000
 2  1320    ↓  1400  1310
 F  1700  1730  1800  1700

■相対値 (%)

  山田      Sk  Slow
 1   100    90   110
 2   105    ↓    95
 F    96   121   104
TT   100   103   106

■巡航速度 (%)
  山田      Sk  Slow
      99    90   106

■ミス率 (%)
  山田      Sk  Slow
     1.9  12.6    －

■ミスタイム (mmmss)
  山田      Sk  Slow
 1     7     0    25
 2    12    ↓   -21
 F    -7   212    -4
TT    20   212    －

Made with Keltrun Ver.2.27
)"));
}

TEST(TextExport, MailBlocksOfTwelve) {
  // The last blocks of sections. Below a minute the reference has two digits only among the laps.
  for (const auto& [runners, laps, splits, ratios] : Rows<int, string, string, string>{
           {11, "     R  Ave3\n 1", "   105   105\n", "   100\n"},
           {12, "\n\n    Ave3\n 1    05\n F   100\nTT   105\n",
            "\n\n    Ave3\n 1     5\n F   105\n", "   100   100\n"},
           {13, "\n\n       R  Ave3\n 1     5    05\n F   100   100\nTT   105   105\n",
            "\n\n       R  Ave3\n 1     5     5\n F   105   105\n",
            "\n\n       R\n 1   100\n F   100\nTT   100\n"}}) {
    const auto root = NewRoot();
    const auto klass = root->AddClass("W");
    klass->ControlCount = 1;
    for (int i = 0; i < runners; ++i) AddRunner(*klass, "R", "0:01:05", {5, 60});
    const string mail = root->TextControl()->OutputTextMail(Analyzed(*root, "W"));
    for (const string& part : {laps + (runners == 11 ? "" : "\n■積算タイム"), splits + "\n■相対値",
                               ratios + "\n■巡航速度"}) {
      EXPECT_NE(mail.find(CrLf(part)), string::npos) << runners << part;
    }
  }
}

TEST(TextExport, NobodyAndNothing) {
  const auto root = NewRoot();
  const auto& text = *root->TextControl();
  EXPECT_EQ(text.OutputTextMail(root->NewAnalyzer()),
            CrLf("◎  \n    - \n\n■ ラップタイム (mmmss)\n\n■積算タイム (mmmss)\n\n■相対値 (%)\n\n"
                 "■巡航速度 (%)\n■ミス率 (%)\n■ミスタイム (mmmss)\nMade with Keltrun Ver.2.27\n"));
  EXPECT_EQ(text.OutputTextResult(root->NewResultsHolder()), "*  \r\n\r\n");
  EXPECT_EQ(text.OutputCsvSplitsBrowser(root->NewAnalyzer()), ",0\r\n");
  EXPECT_THROW(text.OutputTextMail(nullptr), AutomationError);
}

TEST(TextExport, ResultList) {
  const ExportEvent event(Mode::kJapaneseMode);
  EXPECT_EQ(ResultText(*event.root, {"M,1"}), CrLf("* M,1 4.5km ↑120m\n"
                                                   "     1  山田 太郎        0:17:00  Club, A\n"
                                                   "     2  Sk               0:17:30  \n"
                                                   "        Slow                DISQ  \n\n"));
  // Two official ranks are used instead of the ranks in the data set; long texts are cut.
  event.klass->LapData(1)->Rank = "7";
  event.klass->LapData(3)->Rank = "失格である";
  event.klass->LapData(3)->RunnerName = " 1234567890123あ";
  EXPECT_EQ(ResultText(*event.root, {"M,1"}), CrLf("* M,1 4.5km ↑120m\n"
                                                   "     7  山田 太郎        0:17:00  Club, A\n"
                                                   "失格で  1234567890123    0:17:30  \n"
                                                   "        Slow                DISQ  \n\n"));
  // A mix has its own ranks.
  AddRunner(*event.root->AddClass("W21A"), "山田太郎", "0:01:02", {62})->ClubName = "森OLC";
  EXPECT_EQ(ResultText(*event.root, {"M,1", "W21A"}),
            CrLf("* M,1/W21A 4.5km ↑120m\n"
                 "     1 (W21A    )    山田太郎         0:01:02  森OLC\n"
                 "     2 (M,1     )    山田 太郎        0:17:00  Club, A\n"
                 "     3 (M,1     )    1234567890123    0:17:30  \n"
                 "       (M,1     )    Slow                DISQ  \n\n"));
}

TEST(TextExport, GoldenFiles) {
  const auto root = NewRoot();
  ASSERT_TRUE(root->FileControl()->LoadLapFile(ExampleFile("hoshinomori/event.lxm")));
  const auto analyzer = Analyzed(*root, "初心者");
  const auto& text = *root->TextControl();
  for (const auto& [name, output] :
       Rows<string, string>{{"macro.csv", text.OutputCsvQuillonMacro(analyzer)},
                            {"splitsbrowser.csv", text.OutputCsvSplitsBrowser(analyzer)},
                            {"mail.txt", text.OutputTextMail(analyzer)},
                            {"result.txt", ResultText(*root, {"初心者"})}}) {
    ExpectGolden("export-hoshinomori-" + name, output);
  }
}

}  // namespace
}  // namespace keltrun::test
