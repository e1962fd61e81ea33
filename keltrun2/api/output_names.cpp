#include "keltrun2/api/output_names.h"

#include <algorithm>

#include "keltrun2/text/html.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/split.h"
#include "keltrun2/text/utf16.h"

namespace keltrun {
namespace {

// Separators, and what some file systems do not allow.
constexpr std::string_view kUnsafe = "/\\:*?\"<>|";
constexpr std::string_view kUnsafeInPatterns = "/\\:?\"<>|";

std::string ReplaceUnsafe(std::string_view name, std::string_view unsafe) {
  std::string out;
  for (const char c : name) {
    const bool control = static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
    out += control || unsafe.find(c) != std::string_view::npos ? '_' : c;
  }
  return out;
}

std::string ReplaceAll(std::string_view text, std::string_view what, std::string_view by) {
  return CclsSplit(what, text).Expression(by);
}

std::string Numbered(std::string_view file_name, int number) {
  constexpr std::size_t kLongestName = 60;  // file systems allow 255 bytes, a letter takes up to 3
  const std::string suffix = number == 1 ? "" : "_" + std::to_string(number);
  return std::string(Utf16Prefix(file_name, kLongestName)) + suffix;
}

// The pattern up to its extension; a dot in front of a "*" begins none.
std::string_view Stem(std::string_view pattern) {
  const std::size_t dot = pattern.rfind('.');
  const bool extension = dot != pattern.npos && pattern.find('*', dot) == pattern.npos;
  return pattern.substr(0, extension ? dot : pattern.size());
}

std::string Substitute(const std::string& pattern, const std::string& file_name, int number) {
  if (pattern.find('*') != std::string::npos) {
    return OutputNames::Safe(ReplaceAll(pattern, "*", Numbered(file_name, number)));
  }
  const std::string_view stem = Stem(pattern);
  return OutputNames::Safe(std::string(stem) + Numbered("", number) + pattern.substr(stem.size()));
}

std::string PictureName(const std::string& pattern, const std::string& file_name, int number) {
  std::string stem = ReplaceUnsafe(Stem(pattern), kUnsafeInPatterns);
  if (stem.find('*') == std::string::npos) stem += Numbered("", number) + "_?";
  const std::string name = ReplaceUnsafe(Numbered(file_name, number), kUnsafe);
  return ReplaceAll(stem, "*", name + "_?") + ".png";
}

}  // namespace

std::string PictureNames::Picture(std::int32_t number) const {
  return ReplaceAll(Pictures, "?", std::to_string(number));
}

std::string PictureNames::Address() const {
  return ReplaceAll(PercentEncode(Pictures), PercentEncode("?"), "?");
}

void OutputNames::Reserve(const std::string& name) { used_.insert(FoldCase(name)); }

// The first number that makes the name of the page a new one, which is taken from now on.
int OutputNames::TakeNumber(const std::string& pattern, const std::string& file_name) {
  int& number = last_number_[FoldCase(Substitute(pattern, file_name, 1))];
  do {
    ++number;
  } while (!used_.insert(FoldCase(Substitute(pattern, file_name, number))).second);
  return number;
}

std::string OutputNames::Assign(const std::string& pattern, const std::string& file_name) {
  if (pattern.empty()) return "";
  return Substitute(pattern, file_name, TakeNumber(pattern, file_name));
}

PictureNames OutputNames::AssignWithPictures(const std::string& pattern,
                                             const std::string& file_name) {
  if (pattern.empty()) return {};
  const int number = TakeNumber(pattern, file_name);
  return {Substitute(pattern, file_name, number), PictureName(pattern, file_name, number)};
}

std::string OutputNames::Safe(std::string_view name) {
  const std::string out = ReplaceUnsafe(name, kUnsafe);
  return out == "." || out == ".." ? "_" + out : out;
}

}  // namespace keltrun
