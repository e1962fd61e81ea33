// The settings file, the resource texts, fonts, and what the user's locale changes.
#include "keltrun2/config/settings.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <set>

#include "keltrun2/codec/encodings.h"
#include "keltrun2/config/leg_labels.h"
#include "keltrun2/config/settings_internal.h"
#include "keltrun2/os/locale.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using std::string;
using Text = std::string_view;

// Folders with settings and resources. The environment has only what a test sets.
class SettingsTest : public testing::Test {
 protected:
  SettingsTest() { ClearEnvironment(); }
  ~SettingsTest() override {
    ClearEnvironment();
    RestartIn(Mode::kJapaneseTexts);
  }
  static void ClearEnvironment() {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG", "KELTRUN2_FOLDER"}) unsetenv(name);
  }

  // A folder inside the folder of the test, with a settings file and Japanese resources.
  string Folder(Text name, Text settings, Text resources = "") {
    const string folder = folder_.Path(name);
    std::filesystem::create_directories(folder);
    WriteBytes(folder + "/Keltrun2.ini", settings);
    WriteBytes(folder + "/Keltrun2Res-ja.txt", resources);
    return folder;
  }

  TemporaryFolder folder_;
};

TEST_F(SettingsTest, NearestFolderWithSettingsFileCounts) {
  setenv("KELTRUN2_FOLDER", folder_.Path("g/p/f/c").c_str(), 1);
  // The first of these two is found; the folders of an installation come last.
  for (const auto& [found, other] : Table<2>(R"(
      g/p/f/c g/p/f | g/p/f g/p | g/p g | g/p g/p/share/keltrun2 | g/p/share/keltrun2 g)")) {
    std::filesystem::remove_all(folder_.Path("g"));
    std::filesystem::create_directories(folder_.Path("g/p/f/c"));
    Folder(other, "LANGUAGE=ja");
    Folder(found, "LANGUAGE=ja", "WHERE\t" + found);
    RestartSettings({});
    EXPECT_EQ(ResourceText("WHERE"), found);
    EXPECT_EQ(CurrentSettings().Folder, folder_.Path(found));
  }
}

TEST_F(SettingsTest, WithoutFilesTheTextsOfTheLibraryServe) {
  const auto own = [](Text file) { return ParseResources(ReadBytes(ResourceFile(file))); };
  const auto japanese = own("Keltrun2Res-ja.txt"), english = own("Keltrun2Res-en.txt");
  const PrintFont font =
      ParseSettings(ReadBytes(ResourceFile("Keltrun2.ini"))).PrintFonts.at("RESULT_CLASS");
  const string nowhere = folder_.Path();
  RestartSettings({.Folder = nowhere});
  EXPECT_EQ(CurrentSettings().Language, "ja");
  EXPECT_EQ(CurrentSettings().Resources, japanese);
  EXPECT_EQ(MakePrintFont("RESULT_CLASS").Face(), font.Face);
  EXPECT_EQ(MakePrintFont("RESULT_CLASS").Size(), font.Size);
  setenv("KELTRUN2_FOLDER", nowhere.c_str(), 1);  // the search finds nothing either
  for (const auto& [language, texts] :
       Rows<string, decltype(japanese)>{{"ja", japanese}, {"en", english}, {"fr", english}}) {
    RestartSettings({.Language = language});
    EXPECT_EQ(CurrentSettings().Resources, texts) << language;
  }
  // Each file is used if it exists, even if the other one is missing.
  WriteBytes(folder_.Path("Keltrun2.ini"), "LANGUAGE=en\nFONT_SIZE=0,0");
  RestartSettings({.Folder = nowhere});
  EXPECT_EQ(CurrentSettings().Resources, english);
  Font none;
  none.Charset = 7;
  ApplyFont(none, true);
  EXPECT_EQ(none, Font());  // the empty face and the size 0 are ignored, the character set is not
  std::filesystem::remove(folder_.Path("Keltrun2.ini"));
  WriteBytes(folder_.Path("Keltrun2Res-ja.txt"), "RES_META_NAME\tN");
  RestartSettings({.Folder = nowhere});
  EXPECT_EQ(ResourceText("RES_META_NAME") + MakePrintFont("RESULT_CLASS").Face(), "N" + font.Face);
}

TEST_F(SettingsTest, AFolderWithoutFilesIsRefused) {
  RestartSettings({});
  try {
    SetStartup({.Language = "en", .Folder = folder_.Path("typo")});
    FAIL() << "accepted";
  } catch (const AutomationError& error) {
    EXPECT_EQ(error.Number(), KR_ERROR_INVALID_CALL);
    EXPECT_NE(Text(error.what()).find(folder_.Path("typo")), Text::npos) << error.what();
  }
  EXPECT_EQ(CurrentSettings().Language, "ja") << "nothing was changed";
  for (const char* file : {"Keltrun2.ini", "Keltrun2Res-en.txt", "Keltrun2Res-xx.txt"}) {
    const string folder = folder_.Path(string("with-") + file);
    std::filesystem::create_directories(folder);
    WriteBytes(folder + "/" + file, "");
    RestartSettings({});
    EXPECT_NO_THROW(SetStartup({.Language = "xx", .Folder = folder})) << file;
  }
}

TEST_F(SettingsTest, ReadsSettings) {
  const Settings settings = ParseSettings(
      "; LANGUAGE\r\n  language = ja \r\n= nothing\nLocal_Charset=-1\nFONT_NAME = a = b\n"
      "PRINT_FONT_TITLE = ＭＳ 明朝 , 10.5 , TRUE , yes\nprint_font_title = Other,1,false,true\n"
      "PRINT_FONT_X = ,,,true\nUNKNOWN = 1");
  EXPECT_EQ(settings.Language, "ja");
  EXPECT_EQ(settings.Charset, -1);
  EXPECT_EQ(settings.FontFace, "a = b");
  const PrintFont& title = settings.PrintFonts.at("TITLE");
  EXPECT_EQ(title.Face, "ＭＳ 明朝");
  EXPECT_EQ(title.Size, 10.5);
  EXPECT_TRUE(title.Bold && !title.Italic && settings.PrintFonts.at("X").Italic);
  for (const auto& [text, first, second] : Table<3>(R"(
      9,12 9 12 | " 9pt , 12 pt" 9 12 | x,8 0 8 | 9 9 0 | 9.5,10.5 10 10 | "" 0 0)")) {
    const auto sizes = ParseSettings("FONT_SIZE=" + text).FontSizes;  // halves are rounded to even
    EXPECT_EQ(sizes, (std::array{std::stoi(first), std::stoi(second)})) << text;
  }
}

TEST_F(SettingsTest, ReadsResources) {
  const Text resources = "A\t氏名\r\nA\tother\r\n\tno key\nno tab\nB\tx\ty\\n\\nz\\";
  RestartSettings({.Folder = Folder("r", "LANGUAGE=ja", resources)});
  EXPECT_EQ(ResourceText("A"), "氏名");
  EXPECT_EQ(ResourceText("B"), "x\ty\\n\\nz\\");
  EXPECT_EQ(ResourceText("B", true), "x\ty\r\n\r\nz\\");
  EXPECT_EQ(ResourceText("") + ResourceText("no tab") + ResourceText("missing", true), "");
}

TEST_F(SettingsTest, Fonts) {
  const auto told = [](const Font& font) {
    return font.Face() + " " + std::to_string(font.Size()).substr(0, 4) + (font.Bold ? " b" : "") +
           (font.Italic ? " i" : "") + " " + std::to_string(font.Charset);
  };
  string bytes;  // the settings in one of the encodings of text files
  AppendEncoded(bytes,
                "FONT_NAME=表\nFONT_SIZE=9,12\nLOCAL_CHARSET=128\nPRINT_FONT_A=明朝,20,true,TRUE",
                Charset::kShiftJis, MissingCharacter::kQuestionMark);
  RestartSettings({.Folder = Folder("f", bytes)});
  Font font;
  font.Bold = true;
  ApplyFont(font);  // a flag that is false leaves the font's own
  EXPECT_EQ(told(font), "表 9.00 b 128");
  ApplyFont(font, true, false, true);
  EXPECT_EQ(told(font), "表 12.0 b i 128");
  EXPECT_EQ(told(MakePrintFont("a")), "明朝 20.0 b i 128");
  EXPECT_EQ(MakePrintFont("B"), Font());

  FormFonts form;
  form.Controls.resize(2);
  form.Controls[1].TypeName = "FloatButton";
  ApplyFormFonts(form);
  const FormControl& button = form.Controls[1];
  for (const Font& applied : {form.Font, form.Controls[0].Font, button.Font1, button.FontOnMouse1,
                              button.Font2, button.FontOnMouse2}) {
    EXPECT_EQ(told(applied), "表 9.00 128");
  }
  RestartSettings({.Folder = Folder("f", "LOCAL_CHARSET=-1\nPRINT_FONT_A=,0,x,")});
  ApplyFont(font);
  EXPECT_EQ(font.Charset, 128);
  EXPECT_EQ(MakePrintFont("A"), Font());
}

TEST_F(SettingsTest, EveryTextIsThereInBothLanguages) {
  std::set<string> keys[2];
  for (const bool english : {false, true}) {
    const string file = english ? "Keltrun2Res-en.txt" : "Keltrun2Res-ja.txt";
    for (const auto& [key, text] : ParseResources(ReadBytes(ResourceFile(file)))) {
      EXPECT_NE(text, "") << key;
      keys[english].insert(key);
    }
  }
  // In Japanese, what programs read on the pages is fixed.
  std::erase_if(keys[1], [](const string& key) { return key.starts_with("RES_TITLE_"); });
  EXPECT_EQ(keys[0], keys[1]);
  EXPECT_GE(keys[0].size(), 71u);
}

TEST_F(SettingsTest, LoadsOnceAndTakesStartValuesBefore) {
  RestartSettings({});
  SetStartup({.Language = "en"});
  SetStartup({.Language = "ja", .Locale = 1041, .Folder = Folder("s", "LANGUAGE=en", "K\told")});
  const auto root = std::make_shared<clsKeltrun2>();
  EXPECT_THROW(SetStartup({.Language = "en"}), AutomationError);
  Folder("s", "", "K\tnew");
  const auto second = std::make_shared<clsKeltrun2>();
  EXPECT_EQ(ResourceText("K"), "old");
  EXPECT_TRUE(IsJapaneseMode());
  RestartSettings({});
  Font font;
  ApplyFont(font);  // a font is a first use too
  EXPECT_THROW(SetStartup({}), AutomationError);
}

TEST_F(SettingsTest, JapaneseModeFollowsTheEnvironment) {
  // LC_ALL, LC_MESSAGES and LANG; "-" means not set.
  for (const auto& [lc_all, lc_messages, lang, japanese] : Table<4>(R"(
      ja_JP.UTF-8 C C yes | C ja_JP.UTF-8 ja_JP.UTF-8 no | - ja_JP.UTF-8 C yes | - C ja_JP.UTF-8 no
      - - ja_JP.eucJP yes | "" "" ja yes | - - jam_JM.UTF-8 no | - - - no)")) {
    ClearEnvironment();
    if (lc_all != "-") setenv("LC_ALL", lc_all.c_str(), 1);
    if (lc_messages != "-") setenv("LC_MESSAGES", lc_messages.c_str(), 1);
    if (lang != "-") setenv("LANG", lang.c_str(), 1);
    RestartSettings({.Language = "ja"});
    EXPECT_EQ(IsJapaneseMode(), japanese == "yes") << lc_all << lc_messages << lang;
    for (const Startup& other : {Startup{.Language = "en"}, {.Language = "ja", .Locale = 1033}}) {
      RestartSettings(other);
      EXPECT_FALSE(IsJapaneseMode());
    }
  }
}

// A course of 11 controls with the codes 31, 32, ...; leg 12 leads to the finish.
TEST_F(SettingsTest, LegLabels) {
  const Text symbols =
      "RES_META_START_SYMBOL\t[S]\nRES_META_FINISH_SYMBOL\t[F]\nRES_META_RIGHT_ARROW\t->";
  const string folder = Folder("l", "LANGUAGE=ja", symbols);
  for (const bool japanese : {false, true}) {
    RestartSettings({.Locale = japanese ? 1041 : 1033, .Folder = folder});
    for (const auto& [number, plain, wide, controls, full] : Table<5>(R"(
        1  [S]->1 [S]->１ ->(31)     [S]->1(31)   | 2  1->2    １->２  (31)->(32) 1(31)->2(32)
        9  8->9   ８->９  (38)->(39) 8(38)->9(39) | 10 9->10   ９->10  (39)->(40) 9(39)->10(40)
        11 10->11 10->11 (40)->(41) 10(40)->11(41) | 12 11->[F] 11->[F] (41)-> 11(41)->[F])")) {
      const std::int32_t leg = std::stoi(number), from = leg + 29;
      for (const bool with_from : {true, false}) {
        const auto part = [&](const string& text) {
          return with_from ? text : text.substr(text.find("->"));
        };
        EXPECT_EQ(LegLabel(11, with_from, leg), part(japanese ? wide : plain));
        EXPECT_EQ(LegLabelWithControls(11, with_from, leg, from, from + 1), part(controls));
        EXPECT_EQ(LegLabelFull(11, with_from, leg, from, from + 1), part(full));
      }
    }
  }
}

}  // namespace
}  // namespace keltrun::test
