#include "keltrun2/config/page_texts.h"

#include "keltrun2/config/settings.h"

namespace keltrun {

bool HasJapaneseTexts() { return CurrentSettings().Language == "ja"; }

std::string PageText(std::string_view key, std::string_view japanese) {
  if (HasJapaneseTexts()) return std::string(japanese);
  std::string text = ResourceText(key);
  return text.empty() ? std::string(japanese) : text;
}

}  // namespace keltrun
