#include "apps/keltrun2/words.h"

#include <algorithm>
#include <cmath>
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

std::optional<ClockCorrection> ClockCorrectionOf(const std::string& text) {
  constexpr float kDay = 86400;
  const std::size_t colon = text.find(':');
  const std::string code = text.substr(0, colon);
  const bool is_code = !code.empty() && code.size() <= 5 &&
                       code.find_first_not_of("0123456789") == std::string::npos;
  if (!is_code || colon == std::string::npos) return std::nullopt;
  std::string seconds = text.substr(colon + 1);
  if (seconds.ends_with('s')) seconds.pop_back();
  const auto number = NumberOf(seconds);
  if (!number || !(std::fabs(*number) < kDay)) return std::nullopt;
  return ClockCorrection{std::stoi(code), static_cast<double>(*number)};
}

}  // namespace keltrun::cli
