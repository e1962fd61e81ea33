#include "keltrun2/config/config_control.h"

#include <array>
#include <optional>

#include "keltrun2/config/config_store.h"
#include "keltrun2/os/app_data.h"
#include "keltrun2/os/pause.h"
#include "keltrun2/text/split.h"

namespace keltrun {
namespace {

constexpr std::string_view kStore = "/Keltrun2/Config/Keltrun2.dat";
constexpr std::string_view kLineBreakMarker = "/mk2er/";

std::string StoredName(KrConfigFolderConst folder, std::string_view item) {
  return (folder == KR_CONFIG_FOLDER_DATA ? "DATA_" : "CONFIG_") + std::string(item);
}

// Whether a line with this name can be found again under the name. Other lines would change a
// setting with a different name.
bool IsStorable(std::string_view item) {
  return item.find_first_of("=\r\n") == std::string_view::npos && !item.ends_with(' ');
}

// The text with every line break, of any kind, replaced by the marker.
std::string WithMarkers(std::string_view text) {
  std::string out;
  while (true) {
    const std::size_t at = text.find_first_of("\r\n");
    out += text.substr(0, at);
    if (at == std::string_view::npos) return out;
    out += kLineBreakMarker;
    text.remove_prefix(at + (text.substr(at, 2) == "\r\n" ? 2 : 1));
  }
}

std::string WithLineBreaks(std::string_view text) {
  return CclsSplit(kLineBreakMarker, text).Expression("\r\n");
}

// The store may be in use, or a network folder may be unavailable for a moment.
template <typename Attempt>
void TryThreeTimes(Attempt attempt) {
  for (int attempts_left = 3; !attempt() && --attempts_left > 0;) Pause(1 + Random());
}

// The value of a name, or nullopt. If there are several lines with the name, the last one is used.
std::optional<std::string> FindText(std::string_view bytes, std::string_view name) {
  for (const std::string& line : ParseConfigStore(bytes)) {
    const auto [line_name, text] = SplitAt(line, "=", true);
    if (line_name == name) return WithLineBreaks(text);
  }
  return std::nullopt;
}

}  // namespace

clsConfigControl::clsConfigControl() {
  const std::string folder = AppDataFolder();
  if (folder.empty()) return;
  file_ = folder + std::string(kStore);
  CompactConfigStore(file_, FileLock::kAtOnce);  // on failure the next root object tries again
}

std::string clsConfigControl::Value(KrConfigFolderConst ConfigFolder, std::string_view Item,
                                    std::string_view DefaultValue) const {
  std::optional<std::string> text;
  if (!file_.empty() && IsStorable(Item)) {
    TryThreeTimes([&] {
      const auto bytes = ReadConfigStore(file_);
      if (bytes) text = FindText(*bytes, StoredName(ConfigFolder, Item));
      return bytes.has_value();
    });
  }
  return text ? *text : std::string(DefaultValue);
}

void clsConfigControl::SetValue(KrConfigFolderConst ConfigFolder, std::string_view Item,
                                std::string_view NewValue, std::string_view DefaultValue) const {
  if (file_.empty() || !IsStorable(Item)) return;
  const std::string line = StoredName(ConfigFolder, Item) + "=" +
                           WithMarkers(NewValue.empty() ? DefaultValue : NewValue);
  TryThreeTimes([&] { return AppendToConfigStore(file_, line); });
}

}  // namespace keltrun
