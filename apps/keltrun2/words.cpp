#include "apps/keltrun2/words.h"

#include <algorithm>
#include <cstdlib>

namespace keltrun::cli {

std::string LowerCase(std::string word) {
  std::transform(word.begin(), word.end(), word.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return word;
}

std::string Joined(const std::vector<std::string>& words, const std::string& separator) {
  std::string text;
  for (const std::string& word : words) {
    if (&word != &words.front()) text += separator;
    text += word;
  }
  return text;
}

std::optional<float> NumberOf(const std::string& text) {
  char* end = nullptr;
  const float number = std::strtof(text.c_str(), &end);
  if (text.empty() || end != text.c_str() + text.size()) return std::nullopt;
  return number;
}

}  // namespace keltrun::cli
