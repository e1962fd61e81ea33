#include "keltrun2/chart/short_names.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <utility>

#include "keltrun2/codec/utf8.h"
#include "keltrun2/print/text_layout.h"

namespace keltrun {
namespace {

constexpr std::string_view kWideBlank = "\u3000";
constexpr char32_t kFirstIdeographic = 0x2E80;  // from here on scripts write the family name first

bool IsLatin(std::string_view text) {
  for (std::size_t pos = 0; pos < text.size();) {
    if (NextCodePoint(text, pos) >= kFirstIdeographic) return false;
  }
  return true;
}

bool IsAsciiLetter(char c, char first, char last) { return c >= first && c <= last; }

// At least two letters, none of them a small one.
bool IsInCapitals(std::string_view word) {
  const auto count = [&](char first, char last) {
    return std::count_if(word.begin(), word.end(),
                         [&](char c) { return IsAsciiLetter(c, first, last); });
  };
  return count('A', 'Z') >= 2 && count('a', 'z') == 0;
}

std::vector<std::string> Words(std::string_view name) {
  std::vector<std::string> words;
  std::string word;
  const auto end_word = [&] {
    if (!word.empty()) words.push_back(std::exchange(word, ""));
  };
  while (!name.empty()) {
    const std::size_t blank = name.starts_with(' ')          ? 1
                              : name.starts_with(kWideBlank) ? kWideBlank.size()
                                                             : 0;
    if (blank > 0) {
      end_word();
    } else {
      word += name.front();
    }
    name.remove_prefix(std::max<std::size_t>(blank, 1));
  }
  end_word();
  return words;
}

std::string Joined(std::vector<std::string>::const_iterator begin,
                   std::vector<std::string>::const_iterator end) {
  std::string text;
  for (auto word = begin; word != end; ++word) text += (text.empty() ? "" : " ") + *word;
  return text;
}

// Where the family name begins and ends among the words.
std::pair<std::size_t, std::size_t> FamilyWords(const std::vector<std::string>& words) {
  const auto capitals = [&](std::size_t i) { return IsInCapitals(words[i]); };
  if (!IsLatin(Joined(words.begin(), words.end()))) return {0, 1};
  if (words.front().ends_with(',')) return {0, 1};
  // Only the first word or words are in capitals.
  std::size_t end = 0;
  while (end < words.size() && capitals(end)) ++end;
  if (end > 0 && end < words.size()) return {0, end};
  return {words.size() - 1, words.size()};
}

// "P." of a Latin name, the first character of another one.
std::string Initial(const std::string& given) {
  if (given.empty()) return "";
  const std::string first = given.substr(0, CharacterEnds(given).front());
  return IsLatin(given) ? first + "." : first;
}

std::string WithSuffix(const std::string& family, const std::string& suffix) {
  return suffix.empty() ? family : family + " " + suffix;
}

}  // namespace

NameParts PartsOfName(const clsLapData& runner) {
  if (!runner.FamilyName.empty()) return {runner.FamilyName, runner.GivenName};
  const std::vector<std::string> words = Words(runner.RunnerName);
  if (words.size() < 2) return {words.empty() ? "" : words.front(), ""};
  const auto [first, end] = FamilyWords(words);
  const auto begin = words.begin();
  const auto at = [&](std::size_t i) { return begin + static_cast<std::ptrdiff_t>(i); };
  NameParts parts{Joined(at(first), at(end)),
                  first == 0 ? Joined(at(end), words.end()) : Joined(begin, at(first))};
  if (parts.Family.ends_with(',')) parts.Family.pop_back();
  return parts;
}

std::vector<std::string> ShortNames(const std::vector<const clsLapData*>& runners) {
  std::vector<NameParts> parts;
  std::vector<std::string> names;
  for (const clsLapData* runner : runners) {
    parts.push_back(PartsOfName(*runner));
    names.push_back(parts.back().Family);
  }
  for (const bool whole : {false, true}) {
    std::map<std::string, int> count;
    for (const std::string& name : names) ++count[name];
    for (std::size_t i = 0; i < names.size(); ++i) {
      if (count[names[i]] < 2) continue;
      const std::string& given = parts[i].Given;
      names[i] = WithSuffix(parts[i].Family, whole ? given : Initial(given));
    }
  }
  return names;
}

}  // namespace keltrun
