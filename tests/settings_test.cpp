// The settings file, the resource texts, fonts, and what depends on the user's locale.
#include "keltrun2/config/settings.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <optional>

#include "keltrun2/config/leg_labels.h"
#include "keltrun2/config/settings_internal.h"
#include "keltrun2/config/startup.h"
#include "keltrun2/platform/automation_error.h"
#include "keltrun2/platform/encodings.h"
#include "keltrun2/platform/locale.h"
#include "keltrun2/text/split.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using std::string;
using Text = std::string_view;

Startup In(string folder, std::optional<string> language = std::nullopt,
           std::optional<std::int32_t> locale = std::nullopt) {
  return {language, locale, std::move(folder)};
}

// Environment variables for the time of one test, and settings as before at its end.
class SettingsTest : public testing::Test {
 protected:
  ~SettingsTest() override {
    for (auto saved = saved_.rbegin(); saved != saved_.rend(); ++saved) {
      Put(saved->first, saved->second);
    }
    RestartIn(Mode::kJapaneseTexts);
  }

  void SetVariable(const char* name, std::optional<string> value) {
    const char* now = std::getenv(name);
    saved_.emplace_back(name, now == nullptr ? std::nullopt : std::optional<string>(now));
    Put(name, value);
  }

  // A folder inside the test's own one, with a settings file that holds `text`.
  string MakeSettings(Text folder, Text text) {
    std::filesystem::create_directories(folder_.Path(folder));
    if (!text.empty()) WriteBytes(File(folder, "Keltrun2.ini"), text);
    return folder_.Path(folder);
  }
  string File(Text folder, Text name) const { return folder_.Path(folder) + "/" + string(name); }

  TemporaryFolder folder_;

 private:
  static void Put(const char* name, const std::optional<string>& value) {
    value ? setenv(name, value->c_str(), 1) : unsetenv(name);
  }
  std::vector<std::pair<const char*, std::optional<string>>> saved_;
};

TEST_F(SettingsTest, NearestFolderWithSettingsFileCounts) {
  const Rows<std::vector<Text>, Text> cases = {
      {{"g/p/f/c", "g/p/f", "g/p"}, "g/p/f/c"},
      {{"g/p/f", "g/p", "g"}, "g/p/f"},
      {{"g/p", "g"}, "g/p"},
      {{"g/p/share/keltrun2", "g/p"}, "g/p"},  // the places of an installation come last
      {{"g/p/share/keltrun2", "g"}, "g/p/share/keltrun2"}};
  SetVariable("KELTRUN2_FOLDER", folder_.Path("g/p/f/c"));
  for (const auto& [holders, found] : cases) {
    SCOPED_TRACE(found);
    std::filesystem::remove_all(folder_.Path("g"));
    MakeSettings("g/p/f/c", "");
    for (const Text holder : holders) {
      MakeSettings(holder, "LANGUAGE = xx");
      WriteBytes(File(holder, "Keltrun2Res-xx.txt"), "FROM\t" + string(holder));
    }
    RestartSettings({});
    EXPECT_EQ(ResourceText("FROM"), found);
    EXPECT_EQ(CurrentSettings().Folder, folder_.Path(found));
  }
}

TEST_F(SettingsTest, WithoutFilesEverythingIsDefault) {
  const string folder = MakeSettings("empty", "");
  WriteBytes(File("empty", "Keltrun2Res-.txt"), "KEY\ttext");
  RestartSettings(In(folder));
  EXPECT_EQ(CurrentSettings().Language, "");
  EXPECT_EQ(CurrentSettings().Charset, 0);
  EXPECT_EQ(ResourceText("KEY"), "text");
  EXPECT_EQ(ResourceText("RES_META_NAME"), "");
  Font font;
  font.Charset = 7;
  ApplyFont(font, true);
  Font expected;  // the empty face and the size 0 are skipped, the character set is not
  EXPECT_EQ(font, expected);

  RestartSettings(In(folder, "none"));  // no such resource file
  EXPECT_EQ(ResourceText("KEY"), "");
}

TEST_F(SettingsTest, ReadsSettings) {
  const Settings settings = ParseSettings(
      "; LANGUAGE\r\n"
      "  language = ja \r\n"
      "= nothing\n"
      "Local_Charset=-1\n"
      "FONT_NAME = a = b\n"
      "PRINT_FONT_TITLE = ＭＳ 明朝 , 10.5 , TRUE , yes\n"
      "print_font_title = Other,1,false,true\n"
      "PRINT_FONT_X = ,,,true\n"
      "UNKNOWN = 1");
  EXPECT_EQ(settings.Language, "ja");
  EXPECT_EQ(settings.Charset, -1);
  EXPECT_EQ(settings.FontFace, "a = b");
  ASSERT_EQ(settings.PrintFonts.count("TITLE"), 1u);
  const PrintFont& title = settings.PrintFonts.at("TITLE");
  EXPECT_EQ(title.Face, "ＭＳ 明朝");
  EXPECT_EQ(title.Size, 10.5);
  EXPECT_TRUE(title.Bold);
  EXPECT_FALSE(title.Italic);
  EXPECT_TRUE(settings.PrintFonts.at("X").Italic);

  const Rows<Text, std::array<std::int32_t, 2>> sizes = {// Read leniently, halves to even.
                                                         {"9,12", {9, 12}},         {"9", {9, 0}},
                                                         {" 9pt , 12 pt", {9, 12}}, {"x,8", {0, 8}},
                                                         {"9.5,10.5", {10, 10}},    {"", {0, 0}}};
  for (const auto& [text, expected] : sizes) {
    EXPECT_EQ(ParseSettings("FONT_SIZE=" + string(text)).FontSizes, expected) << text;
  }
}

TEST_F(SettingsTest, ReadsResources) {
  const auto resources = ParseResources(
      "RES_META_NAME\t氏名\r\nRES_META_NAME\tother\r\n\tno key\nno tab\nA\t\nB\tx\ty\\n\\nz");
  EXPECT_EQ(resources.at("RES_META_NAME"), "氏名");
  EXPECT_EQ(resources.at("A"), "");
  EXPECT_EQ(resources.at("B"), "x\ty\\n\\nz");
  EXPECT_EQ(resources.count("") + resources.count("no tab"), 0u);

  const string folder = MakeSettings("r", "LANGUAGE=zz");
  WriteBytes(File("r", "Keltrun2Res-zz.txt"), "B\tx\ty\\n\\nz\\");
  RestartSettings(In(folder));
  EXPECT_EQ(ResourceText("B"), "x\ty\\n\\nz\\");
  EXPECT_EQ(ResourceText("B", true), "x\ty\r\n\r\nz\\");
  EXPECT_EQ(ResourceText("missing", true), "");
}

TEST_F(SettingsTest, FilesMayBeInAnyOfTheTextEncodings) {
  const string text = "LANGUAGE=zz\r\nFONT_NAME=ＭＳ ゴシック\r\n";
  string shift_jis;
  AppendEncoded(shift_jis, text, Charset::kShiftJis, MissingCharacter::kQuestionMark);
  for (const string& bytes : {text, "\xEF\xBB\xBF" + text, shift_jis}) {
    RestartSettings(In(MakeSettings("e", bytes)));
    EXPECT_EQ(CurrentSettings().Language, "zz");
    EXPECT_EQ(CurrentSettings().FontFace, "ＭＳ ゴシック");
  }
}

TEST_F(SettingsTest, Fonts) {
  const string folder = MakeSettings(
      "f", "FONT_NAME=Gothic\nFONT_SIZE=9,12\nLOCAL_CHARSET=128\nPRINT_FONT_A=Mincho,20,true,TRUE");
  RestartSettings(In(folder));
  Font font;
  font.Bold = true;
  ApplyFont(font);
  EXPECT_EQ(font.Face(), "Gothic");
  EXPECT_EQ(font.Size(), 9);
  EXPECT_EQ(font.Charset, 128);
  EXPECT_TRUE(font.Bold);  // a flag that is not set leaves the font's own
  EXPECT_FALSE(font.Italic);
  ApplyFont(font, true, false, true);
  EXPECT_EQ(font.Size(), 12);
  EXPECT_TRUE(font.Italic);

  FormFonts form;
  form.Controls.resize(2);
  form.Controls[0].TypeName = "Label";
  form.Controls[1].TypeName = "FloatButton";
  ApplyFormFonts(form);
  FormControl& button = form.Controls[1];
  for (Font* applied : {&form.Font, &form.Controls[0].Font, &button.Font1, &button.FontOnMouse1,
                        &button.Font2, &button.FontOnMouse2}) {
    EXPECT_EQ(applied->Face(), "Gothic");
    EXPECT_EQ(applied->Size(), 9);
    EXPECT_FALSE(applied->Bold);
  }

  const Font print = MakePrintFont("A");
  EXPECT_EQ(print.Face(), "Mincho");
  EXPECT_EQ(print.Size(), 20);
  EXPECT_TRUE(print.Bold && print.Italic);
  EXPECT_EQ(print.Charset, 128);
  EXPECT_EQ(MakePrintFont("B"), Font());

  MakeSettings("f", "LOCAL_CHARSET=-1\nPRINT_FONT_A=,0,x,");
  RestartSettings(In(folder));
  font.Charset = 5;
  ApplyFont(font);
  EXPECT_EQ(font.Charset, 5);
  EXPECT_EQ(MakePrintFont("A"), Font());
}

TEST_F(SettingsTest, EveryTextIsThereInBothLanguages) {
  const Text keys =
      "MESSAGE_CREATE_FOLDER_CONFIRM MESSAGE_CSV_HEADER_ERROR MESSAGE_ERROR_HAPPEN "
      "MESSAGE_FILE_APPEND_ONLY MESSAGE_FILE_DETECT_ERROR MESSAGE_FILE_OPEN_ERROR "
      "MESSAGE_PLEASE_WAIT META_ACTIVE_X_PAGE_LINK META_ANALYSIS_RESULT META_CHART "
      "META_CLIMB_HEIGHT META_CLIMB_SYMBOLE META_CLUB META_CONTROL_COUNT META_COURCE_LENGTH "
      "META_COURSE_NUMBER META_CROSS_SYMBOL META_CRUISE_SPEED META_CRUISE_SPEED_SHORT META_CSV_AGE "
      "META_CSV_CLASS META_CSV_CLUB META_CSV_FINISH META_CSV_GENDER META_CSV_NAME META_CSV_NAME_2 "
      "META_CSV_RANK META_CSV_RECORD META_CSV_RESULT META_CSV_SEED META_CSV_START "
      "META_CSV_START_TIME META_CSV_STNO META_CSV_TOTAL_TIME META_DATE_FORMAT META_ELAPSE "
      "META_EVENT_DATE META_EVENT_FILENAME META_EVENT_MEMO META_EVENT_NAME META_EVENT_VENUE "
      "META_FINISH_SYMBOL META_KELTRUN2_DATA META_KELTRUN_DATA META_LAPFILE_HEADER "
      "META_LEG_ANALYSIS META_LEG_SPEED_INDEX META_LOAD_FILTER META_MISTAKE META_MISTAKE_RATE "
      "META_MISTAKE_RATE_SHORT META_MISTAKE_TOTAL_SHORT META_NAME META_NO_EVENT_NAME "
      "META_OUTPUT_DATE META_PLACE META_QUAL_BORDER META_RESULT META_RESULT_LIST META_RIGHT_ARROW "
      "META_SAVE_FILTER META_SPLITS META_SPLITS_ANALYSIS META_START_SYMBOL META_TOTAL META_WEBSITE "
      "META_WITHOUT_MISTAKE_1 META_WITHOUT_MISTAKE_2 WINDOW_FILE_EXPORT";
  const CclsSplit names(" ", keys);
  ASSERT_EQ(names.Bound() + 1, 69);
  for (const Mode mode : {Mode::kJapaneseTexts, Mode::kEnglishTexts}) {
    RestartIn(mode);
    for (std::int32_t i = 0; i <= names.Bound(); ++i) {
      const string text = ResourceText("RES_" + names.Value(i));
      EXPECT_NE(text, "") << names.Value(i);
      EXPECT_EQ(text.find("\uFFFD"), string::npos) << names.Value(i);
    }
    // Save filters stand in the order in which FileSaveMode numbers them: native, text lap file,
    // IOF results, then two that save as native, the archive among them.
    const CclsSplit save("|", ResourceText("RES_META_SAVE_FILTER"));
    ASSERT_EQ(save.Bound(), 9);
    EXPECT_EQ(save.Value(1), "*.lxm");
    EXPECT_EQ(save.Value(3), "*.lap");
    EXPECT_EQ(save.Value(5), "*.xml");
    EXPECT_TRUE(save.Value(7) == "*.lzh" || save.Value(9) == "*.lzh");
    const CclsSplit load("|", ResourceText("RES_META_LOAD_FILTER"));
    EXPECT_EQ(load.Bound() % 2, 1);  // names and patterns in pairs
    EXPECT_NE(load.Value(1).find("*.lxm"), string::npos);
  }
  RestartIn(Mode::kJapaneseTexts);
  EXPECT_EQ(ResourceText("RES_META_CSV_GENDER"), "性別");  // the title of import-only texts
}

TEST_F(SettingsTest, LoadsOnce) {
  const string folder = MakeSettings("once", "LANGUAGE=zz");
  WriteBytes(File("once", "Keltrun2Res-zz.txt"), "K\told");
  SetVariable("KELTRUN2_FOLDER", folder);
  RestartSettings({});
  const auto first = std::make_shared<clsKeltrun2>();
  WriteBytes(File("once", "Keltrun2Res-zz.txt"), "K\tnew");
  const auto second = std::make_shared<clsKeltrun2>();
  LoadSettings();
  EXPECT_EQ(ResourceText("K"), "old");
  RestartSettings({});
  EXPECT_EQ(ResourceText("K"), "new");
}

TEST_F(SettingsTest, StartValuesComeBeforeTheFirstUse) {
  const auto refused = [] {
    try {
      SetStartup(In(KELTRUN2_TEST_RESOURCES, "ja"));
    } catch (const AutomationError& error) {
      return error.Number();
    }
    return std::int32_t{0};
  };
  RestartSettings({});
  SetStartup(In(KELTRUN2_TEST_RESOURCES, "ja"));
  SetStartup(In(KELTRUN2_TEST_RESOURCES, "en", 1041));
  const auto root = std::make_shared<clsKeltrun2>();
  const string name = ResourceText("RES_META_NAME");
  EXPECT_EQ(CurrentSettings().Language, "en");
  EXPECT_EQ(UserLocale(), 1041);
  EXPECT_EQ(refused(), 5);
  EXPECT_EQ(ResourceText("RES_META_NAME"), name);

  RestartIn(Mode::kEnglishTexts);
  Font font;
  ApplyFont(font);  // a font request is a first use too
  EXPECT_EQ(refused(), 5);
}

TEST_F(SettingsTest, JapaneseModeFollowsTheEnvironment) {
  const std::nullopt_t none = std::nullopt;
  const Rows<std::optional<string>, std::optional<string>, std::optional<string>, bool> cases = {
      {"ja_JP.UTF-8", "C", "C", true},     {"C", "ja_JP.UTF-8", "ja_JP.UTF-8", false},
      {none, "ja_JP.UTF-8", "C", true},    {none, "C", "ja_JP.UTF-8", false},
      {none, none, "ja_JP.eucJP", true},   {"", "", "ja", true},
      {none, none, "jam_JM.UTF-8", false}, {none, none, none, false}};
  for (const auto& [lc_all, lc_messages, lang, japanese] : cases) {
    SetVariable("LC_ALL", lc_all);
    SetVariable("LC_MESSAGES", lc_messages);
    SetVariable("LANG", lang);
    for (const string language : {"ja", "en"}) {
      RestartSettings(In(KELTRUN2_TEST_RESOURCES, language));
      EXPECT_EQ(IsJapaneseMode(), japanese && language == "ja")
          << lc_all.value_or("-") << lc_messages.value_or("-") << lang.value_or("-");
    }
    RestartSettings(In(KELTRUN2_TEST_RESOURCES, "ja", 1033));
    EXPECT_FALSE(IsJapaneseMode());
  }
}

TEST_F(SettingsTest, LegLabels) {
  const string folder = MakeSettings("l", "LANGUAGE=ja");
  WriteBytes(File("l", "Keltrun2Res-ja.txt"),
             "RES_META_START_SYMBOL\t[S]\nRES_META_FINISH_SYMBOL\t[F]\nRES_META_RIGHT_ARROW\t->");
  const Rows<std::int32_t, Text, Text, Text, Text> cases = {
      // A course of 11 controls with the codes 31, 32, ...; leg 12 leads to the finish.
      {1, "[S]->1", "[S]->１", "->(31)", "[S]->1(31)"},
      {2, "1->2", "１->２", "(31)->(32)", "1(31)->2(32)"},
      {9, "8->9", "８->９", "(38)->(39)", "8(38)->9(39)"},
      {10, "9->10", "９->10", "(39)->(40)", "9(39)->10(40)"},
      {11, "10->11", "10->11", "(40)->(41)", "10(40)->11(41)"},
      {12, "11->[F]", "11->[F]", "(41)->", "11(41)->[F]"}};
  for (const bool japanese : {false, true}) {
    RestartSettings(In(folder, std::nullopt, japanese ? 1041 : 1033));
    for (const auto& [leg, plain, wide, controls, full] : cases) {
      SCOPED_TRACE(leg);
      const auto to_part = [](Text label) { return label.substr(label.find("->")); };
      const Text label = japanese ? wide : plain;
      const std::int32_t from = leg + 29;
      EXPECT_EQ(LegLabel(11, true, leg), label);
      EXPECT_EQ(LegLabel(11, false, leg), to_part(label));
      EXPECT_EQ(LegLabelWithControls(11, true, leg, from, from + 1), controls);
      EXPECT_EQ(LegLabelWithControls(11, false, leg, from, from + 1), to_part(controls));
      EXPECT_EQ(LegLabelFull(11, true, leg, from, from + 1), full);
      EXPECT_EQ(LegLabelFull(11, false, leg, from, from + 1), to_part(full));
    }
    EXPECT_EQ(LegLabel(8, true, 9), japanese ? "８->[F]" : "8->[F]");
  }
}

}  // namespace
}  // namespace keltrun::test
