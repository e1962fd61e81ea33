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

/// The settings as loaded. If there is no file, they are the ones built into the library.
struct Settings {
  std::string Folder;                       // where the file was found, else the component's folder
  std::string Language;                     // LANGUAGE
  std::int32_t Charset = 0;                 // LOCAL_CHARSET; negative: fonts keep their own
  std::string FontFace;                     // FONT_NAME
  std::array<std::int32_t, 2> FontSizes{};  // FONT_SIZE
  std::map<std::string, PrintFont> PrintFonts;             // PRINT_FONT_<role>, role in upper case
  std::unordered_map<std::string, std::string> Resources;  // key to text
};

/// Loads settings and resources; later calls do nothing. The functions below call it. Once loaded,
/// settings and resources never change, so any thread may read them.
void LoadSettings();

/// The settings in use.
const Settings& CurrentSettings();

/// The text of a resource key, "" if the key is missing. With ExpandNewLines every backslash
/// followed by "n" becomes CR LF.
std::string ResourceText(std::string_view Key, bool ExpandNewLines = false);

/// Whether Japanese mode is on: the language is "ja" and the user's locale is Japanese.
bool IsJapaneseMode();

/// Sets face, character set and size of a font for the component's windows. SecondSize chooses the
/// second of the two sizes. Bold and Italic make the font bold or italic; false leaves it as it is.
void ApplyFont(Font& Target, bool SecondSize = false, bool Bold = false, bool Italic = false);

/// The fonts of one control on a window of the component.
struct FormControl {
  std::string TypeName;  // kind of control, such as "FloatButton"
  keltrun::Font Font;    // the font of its text
  /// The four fonts that a control whose TypeName is "FloatButton" uses instead of Font.
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

/// Calls `ApplyFont` for a window and for every control on it.
void ApplyFormFonts(FormFonts& Form);

/// The print font of a role (letter case is ignored); a default font if the role has no entry.
Font MakePrintFont(std::string_view Role);

/// Parses the text of a settings file. Unknown names are ignored. A number is read from the start
/// of its field; anything after it is ignored.
Settings ParseSettings(std::string_view text);

/// Parses the text of a resource file. If a key has several entries, the first one is used.
std::unordered_map<std::string, std::string> ParseResources(std::string_view text);

}  // namespace keltrun
