#include "keltrun2/config/settings.h"

#include <atomic>
#include <memory>
#include <mutex>

#include "keltrun2/base/automation_error.h"
#include "keltrun2/codec/encodings.h"
#include "keltrun2/config/built_in_resources.h"
#include "keltrun2/config/settings_internal.h"
#include "keltrun2/config/startup.h"
#include "keltrun2/os/data_folders.h"
#include "keltrun2/os/files.h"
#include "keltrun2/os/locale.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/numbers.h"
#include "keltrun2/text/split.h"

namespace keltrun {
namespace {

constexpr char kSettingsFile[] = "Keltrun2.ini";
constexpr std::string_view kPrintFontPrefix = "PRINT_FONT_";

struct BuiltInTexts {
  std::string_view language, texts;
};
constexpr BuiltInTexts kBuiltInTexts[] = {{"ja", kBuiltInTextsJa}, {"en", kBuiltInTextsEn}};

// The settings never change once they are loaded, so all threads may read them.
struct ProcessSettings {
  std::mutex mutex;  // guards the first load and everything before it
  Startup startup;
  std::unique_ptr<const Settings> settings;
  std::atomic<const Settings*> loaded = nullptr;
};

ProcessSettings& Process() {
  static ProcessSettings process;
  return process;
}

std::string InFolder(const std::string& folder, std::string_view file) {
  return folder + "/" + std::string(file);
}

// The first folder with a settings file among the component's folder, its parent, its grandparent
// and the folders of an installation; the component's folder if none of them has one.
std::string FindSettingsFolder() {
  std::string component = ComponentFolder();
  std::string folder = component;
  for (int level = 0; level < 3 && !folder.empty(); ++level) {
    if (FileExists(InFolder(folder, kSettingsFile))) return folder;
    folder = ParentFolder(folder);
  }
  for (const std::string& installed : InstalledDataFolders()) {
    if (FileExists(InFolder(installed, kSettingsFile))) return installed;
  }
  return component;
}

std::string ResourceFileName(std::string_view language) {
  return "Keltrun2Res-" + std::string(language) + ".txt";
}

// The text of a file, or the built-in text if the file cannot be read.
std::string TextOfFile(const std::string& name, std::string_view built_in) {
  std::string error;
  const std::optional<std::string> bytes = ReadFile(name, error);
  return DecodeTextFile(bytes ? *bytes : built_in);
}

// The built-in texts of a language. Every page needs texts, so for an unknown language they are the
// English ones.
std::string_view TextsOf(std::string_view language) {
  for (const BuiltInTexts& known : kBuiltInTexts) {
    if (known.language == language) return known.texts;
  }
  return kBuiltInTextsEn;
}

// Whether a host can really mean this folder: it contains the settings file or a resource file.
bool HasComponentFiles(const std::string& folder, const Startup& startup) {
  if (FileExists(InFolder(folder, kSettingsFile))) return true;
  if (startup.Language && FileExists(InFolder(folder, ResourceFileName(*startup.Language)))) {
    return true;
  }
  for (const BuiltInTexts& known : kBuiltInTexts) {
    if (FileExists(InFolder(folder, ResourceFileName(known.language)))) return true;
  }
  return false;
}

bool IsTrue(const std::string& field) { return LowerAscii(field) == "true"; }

PrintFont ParsePrintFont(std::string_view value) {
  const CclsSplit fields(",", value);
  return {fields.Value(0), LeadingNumber(fields.Value(1)), IsTrue(fields.Value(2)),
          IsTrue(fields.Value(3))};
}

void StoreSetting(Settings& settings, const std::string& name, std::string_view value) {
  if (name == "LANGUAGE") {
    settings.Language = value;
  } else if (name == "LOCAL_CHARSET") {
    settings.Charset = LeadingLong(value);
  } else if (name == "FONT_NAME") {
    settings.FontFace = value;
  } else if (name == "FONT_SIZE") {
    const CclsSplit sizes(",", value);
    settings.FontSizes = {LeadingLong(sizes.Value(0)), LeadingLong(sizes.Value(1))};
  } else if (name.starts_with(kPrintFontPrefix)) {
    settings.PrintFonts.emplace(name.substr(kPrintFontPrefix.size()), ParsePrintFont(value));
  }
}

// The language that the host chose, or left to the user's locale.
std::string LanguageOf(const Startup& startup) {
  if (!startup.Language->empty()) return *startup.Language;
  return startup.Locale.value_or(UserLocale()) == kLocaleJapanese ? "ja" : "en";
}

Settings Load(const Startup& startup) {
  const std::string folder = startup.Folder ? *startup.Folder : FindSettingsFolder();
  Settings settings = ParseSettings(TextOfFile(InFolder(folder, kSettingsFile), kBuiltInSettings));
  settings.Folder = folder;
  if (startup.Language) settings.Language = LanguageOf(startup);
  const std::string resources = InFolder(folder, ResourceFileName(settings.Language));
  settings.Resources = ParseResources(TextOfFile(resources, TextsOf(settings.Language)));
  return settings;
}

const Settings& LoadedSettings() {
  ProcessSettings& process = Process();
  if (const Settings* loaded = process.loaded.load(std::memory_order_acquire)) return *loaded;
  const std::lock_guard lock(process.mutex);
  if (!process.settings) {
    SetUserLocale(process.startup.Locale);
    process.settings = std::make_unique<const Settings>(Load(process.startup));
    process.loaded.store(process.settings.get(), std::memory_order_release);
  }
  return *process.settings;
}

void SetCharset(Font& font, std::int32_t charset) {
  if (charset >= 0) font.Charset = charset;
}

}  // namespace

void SetStartup(const Startup& Values) {
  if (Values.Folder && !HasComponentFiles(*Values.Folder, Values)) {
    throw AutomationError(KR_ERROR_INVALID_CALL,
                          "SetStartup: the folder \"" + *Values.Folder +
                              "\" contains neither Keltrun2.ini nor a resource file such as "
                              "Keltrun2Res-ja.txt; choose a folder that does, or none to use the "
                              "built-in texts");
  }
  const std::lock_guard lock(Process().mutex);
  if (Process().settings) {
    throw AutomationError(KR_ERROR_INVALID_CALL,
                          "SetStartup: the settings are already loaded; call it before the first "
                          "root object is created");
  }
  Process().startup = Values;
}

void RestartSettings(const Startup& values) {
  const std::lock_guard lock(Process().mutex);
  Process().loaded = nullptr;
  Process().settings.reset();
  Process().startup = values;
}

void LoadSettings() { LoadedSettings(); }

const Settings& CurrentSettings() { return LoadedSettings(); }

std::string ResourceText(std::string_view Key, bool ExpandNewLines) {
  const auto& resources = CurrentSettings().Resources;
  const auto found = resources.find(std::string(Key));
  if (found == resources.end()) return "";
  if (!ExpandNewLines) return found->second;
  return CclsSplit("\\n", found->second).Expression("\r\n");
}

bool IsJapaneseMode() {
  return CurrentSettings().Language == "ja" && UserLocale() == kLocaleJapanese;
}

void ApplyFont(Font& Target, bool SecondSize, bool Bold, bool Italic) {
  const Settings& settings = CurrentSettings();
  Target.SetFace(settings.FontFace);
  SetCharset(Target, settings.Charset);
  Target.SetSize(settings.FontSizes[SecondSize ? 1 : 0]);
  if (Bold) Target.Bold = true;
  if (Italic) Target.Italic = true;
}

void ApplyFormFonts(FormFonts& Form) {
  ApplyFont(Form.Font);
  for (FormControl& control : Form.Controls) {
    if (control.TypeName != "FloatButton") {
      ApplyFont(control.Font);
      continue;
    }
    for (Font* font :
         {&control.Font1, &control.FontOnMouse1, &control.Font2, &control.FontOnMouse2}) {
      ApplyFont(*font);
    }
  }
}

Font MakePrintFont(std::string_view Role) {
  const Settings& settings = CurrentSettings();
  Font font;
  const auto found = settings.PrintFonts.find(UpperAscii(Role));
  if (found == settings.PrintFonts.end()) return font;
  font.SetFace(found->second.Face);
  font.SetSize(found->second.Size);
  font.Bold = found->second.Bold;
  font.Italic = found->second.Italic;
  SetCharset(font, settings.Charset);
  return font;
}

Settings ParseSettings(std::string_view text) {
  Settings settings;
  for (const std::string_view line : SplitLines(text)) {
    if (line.find('=') == std::string_view::npos) continue;
    const auto [name, value] = SplitAt(TrimSpaces(line), "=", true);
    StoreSetting(settings, UpperAscii(name), value);
  }
  return settings;
}

std::unordered_map<std::string, std::string> ParseResources(std::string_view text) {
  std::unordered_map<std::string, std::string> resources;
  for (const std::string_view line : SplitLines(text)) {
    const std::size_t tab = line.find('\t');
    const std::string_view key = TrimSpaces(line.substr(0, tab));
    if (key.empty() || tab == std::string_view::npos) continue;
    resources.emplace(key, line.substr(tab + 1));
  }
  return resources;
}

}  // namespace keltrun
