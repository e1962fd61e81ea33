// The settings file "Keltrun2.ini" and the resource texts, loaded once per process.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "keltrun2/drawing/font.h"

namespace keltrun {

/// A print font of the settings file.
struct PrintFont {
  std::string Face;
  double Size = 0;
  bool Bold = false;
  bool Italic = false;
};

/// The settings as loaded. Where there is no file, those that the library holds itself.
struct Settings {
  std::string Folder;                       // where the file was found, else the component's folder
  std::string Language;                     // LANGUAGE
  std::int32_t Charset = 0;                 // LOCAL_CHARSET; negative leaves the fonts' own
  std::string FontFace;                     // FONT_NAME
  std::array<std::int32_t, 2> FontSizes{};  // FONT_SIZE
  std::map<std::string, PrintFont> PrintFonts;             // PRINT_FONT_<role>, role in upper case
  std::unordered_map<std::string, std::string> Resources;  // key to text
};

/// Loads settings and resources; later calls do nothing. Everything below calls it. Once loaded
/// they never change: any thread may read them.
void LoadSettings();

/// The settings in use.
const Settings& CurrentSettings();

/// The text of a resource key, "" for a missing key. With ExpandNewLines every backslash-"n" pair
/// becomes CR LF.
std::string ResourceText(std::string_view Key, bool ExpandNewLines = false);

/// True when the user's locale is Japanese and the language is "ja".
bool IsJapaneseMode();

/// Gives a font of the component's windows its face, character set and size (the second size when
/// SecondSize), and makes it bold or italic when asked.
void ApplyFont(Font& Target, bool SecondSize = false, bool Bold = false, bool Italic = false);

/// One control on a window of the component, as far as fonts are concerned.
struct FormControl {
  std::string TypeName;  // kind of control, such as "FloatButton"
  keltrun::Font Font;    // what its text is written in
  /// Used by a control whose TypeName is "FloatButton" in place of Font: its own four fonts.
  keltrun::Font Font1;
  keltrun::Font FontOnMouse1;
  keltrun::Font Font2;
  keltrun::Font FontOnMouse2;
};

/// The fonts of a window of the component and of every control on it.
struct FormFonts {
  keltrun::Font Font;                 // of the window itself
  std::vector<FormControl> Controls;  // in the order of the window
};

/// Applies `ApplyFont` to a window and to every control on it.
void ApplyFormFonts(FormFonts& Form);

/// The print font of a role (letter case ignored); a default font for a role without an entry.
Font MakePrintFont(std::string_view Role);

/// Parses the text of a settings file. Unknown names are ignored, numbers read leniently.
Settings ParseSettings(std::string_view text);

/// Parses the text of a resource file; the first entry of a key counts.
std::unordered_map<std::string, std::string> ParseResources(std::string_view text);

}  // namespace keltrun
