#include "keltrun2/io/lap_file_types.h"

#include <algorithm>
#include <array>

namespace keltrun {
namespace {

struct TypeNames {
  KrLapFileTypeConst type;
  std::string_view word;
  std::string_view name;
};

constexpr std::array<TypeNames, 14> kTypes = {{
    {KR_FILETYPE_KELTRUN2, "lxm", "Keltrun2 lap file"},
    {KR_FILETYPE_KELTRUN1, "lap", "Keltrun lap file or result list"},
    {KR_FILETYPE_SPORTIDENT, "sportident", "SPORTident results as text"},
    {KR_FILETYPE_OEVENT, "oevent", "OEvent split times"},
    {KR_FILETYPE_IMPORT_ONLY, "import", "clubs and sexes to add"},
    {KR_FILETYPE_IOF_XML_30_RESULT, "iof3", "IOF XML 3.0"},
    {KR_FILETYPE_IOF_XML_20_RESULT, "iof2", "IOF XML 2.0.3"},
    {KR_FILETYPE_OE_CSV, "oe", "OE or SPORTident CSV"},
    {KR_FILETYPE_OS_CSV, "os", "OS relay CSV"},
    {KR_FILETYPE_SPLITSBROWSER_CSV, "splitsbrowser", "SplitsBrowser CSV"},
    {KR_FILETYPE_TRIPLE_CSV, "triple", "SPORTident AutoDownload CSV"},
    {KR_FILETYPE_RESULT_HTML, "html", "result page (HTML)"},
    {KR_FILETYPE_WINSPLITS_TEXT, "winsplits", "WinSplits Standard Text"},
    {KR_FILETYPE_SWISS_CSV, "swiss", "Swiss result CSV"},
}};

struct SaveWord {
  std::string_view word;
  KrLapFileTypeConst type;
};

constexpr auto kSaveWords = std::to_array<SaveWord>({
    {"lxm", KR_FILETYPE_KELTRUN2},
    {"lap", KR_FILETYPE_KELTRUN1},
    {"iof3", KR_FILETYPE_IOF_XML_30_RESULT},
    {"iof2", KR_FILETYPE_IOF_XML_20_EXCHANGE},
    {"iof2-plain", KR_FILETYPE_IOF_XML_20_RESULT},
    {"splitsbrowser", KR_FILETYPE_SPLITSBROWSER_CSV},
    {"winsplits", KR_FILETYPE_WINSPLITS_TEXT},
    {"oe2010", KR_FILETYPE_OE_CSV},
});

}  // namespace

std::string_view LapFileTypeName(KrLapFileTypeConst Type) {
  const auto found = std::find_if(kTypes.begin(), kTypes.end(),
                                  [&](const TypeNames& names) { return names.type == Type; });
  if (Type == KR_FILETYPE_IOF_XML_20_EXCHANGE) {
    return LapFileTypeName(KR_FILETYPE_IOF_XML_20_RESULT);
  }
  return found == kTypes.end() ? "" : found->name;
}

KrLapFileTypeConst LapFileTypeOfWord(std::string_view Word) {
  const auto found = std::find_if(kTypes.begin(), kTypes.end(),
                                  [&](const TypeNames& names) { return names.word == Word; });
  return found == kTypes.end() ? KR_FILETYPE_UNKNOWN : found->type;
}

std::vector<std::string> LapFileTypeWords() {
  std::vector<std::string> words;
  for (const TypeNames& names : kTypes) words.emplace_back(names.word);
  return words;
}

KrLapFileTypeConst SaveTypeOfWord(std::string_view Word) {
  const auto found = std::find_if(kSaveWords.begin(), kSaveWords.end(),
                                  [&](const SaveWord& save) { return save.word == Word; });
  return found == kSaveWords.end() ? KR_FILETYPE_UNKNOWN : found->type;
}

std::vector<std::string> SaveTypeWords() {
  std::vector<std::string> words;
  for (const SaveWord& save : kSaveWords) words.emplace_back(save.word);
  return words;
}

}  // namespace keltrun
