#include "keltrun2/api/output_names.h"

#include <algorithm>

#include "keltrun2/text/letters.h"
#include "keltrun2/text/split.h"
#include "keltrun2/text/utf16.h"

namespace keltrun {
namespace {

std::string Substitute(const std::string& pattern, const std::string& file_name, int number) {
  constexpr std::size_t kLongestName = 100;  // file systems allow 255 bytes
  const std::string suffix = number == 1 ? "" : "_" + std::to_string(number);
  const std::string base(Utf16Prefix(file_name, kLongestName));
  const CclsSplit parts("*", pattern);
  if (parts.Bound() > 0) return OutputNames::Safe(parts.Expression(base + suffix));
  const std::size_t dot = std::min(pattern.rfind('.'), pattern.size());
  return OutputNames::Safe(pattern.substr(0, dot) + suffix + pattern.substr(dot));
}

}  // namespace

void OutputNames::Reserve(const std::string& name) { used_.insert(FoldCase(name)); }

std::string OutputNames::Assign(const std::string& pattern, const std::string& file_name) {
  if (pattern.empty()) return "";
  std::string name = Substitute(pattern, file_name, 1);
  int& number = last_number_[FoldCase(name)];  // numbers up to this one are taken
  do {
    name = Substitute(pattern, file_name, ++number);
  } while (!used_.insert(FoldCase(name)).second);
  return name;
}

std::string OutputNames::Safe(std::string_view name) {
  constexpr std::string_view kUnsafe = "/\\:*?\"<>|";
  std::string out;
  for (const char c : name) {
    const bool control = static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
    out += control || kUnsafe.find(c) != std::string_view::npos ? '_' : c;
  }
  return out == "." || out == ".." ? "_" + out : out;
}

}  // namespace keltrun
