#include "keltrun2/site/output_names.h"

#include <algorithm>
#include <charconv>
#include <vector>

#include "keltrun2/base/automation_error.h"
#include "keltrun2/codec/utf8.h"
#include "keltrun2/print/text_layout.h"
#include "keltrun2/text/html.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/split.h"
#include "keltrun2/text/utf16.h"

namespace keltrun {
namespace {

// Separators, and other characters that some file systems do not allow.
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

// A file name as text in UTF-16, with "u" and four hexadecimal digits decoded to the character that
// they stand for, and the place in the name where each unit ends.
struct NameUnits {
  std::u16string Text;
  std::vector<std::size_t> Ends;
};

NameUnits UnitsOf(std::string_view name) {
  constexpr std::size_t kGroup = 5;
  NameUnits units;
  for (std::size_t pos = 0; pos < name.size();) {
    unsigned unit = 0;
    const char* const group_end = name.data() + std::min(pos + kGroup, name.size());
    const auto read = std::from_chars(name.data() + pos + 1, group_end, unit, 16);
    if (name[pos] == 'u' && pos + kGroup <= name.size() && read.ptr == group_end) {
      units.Text += static_cast<char16_t>(unit);
      units.Ends.push_back(pos += kGroup);
      continue;
    }
    std::size_t next = pos;
    NextCodePoint(name, next);
    units.Text += ToUtf16(name.substr(pos, next - pos));
    units.Ends.resize(units.Text.size(), pos = next);
  }
  return units;
}

// The beginning of a file name, in at most `bytes` bytes, cut between characters as a reader sees
// them.
std::string_view Beginning(std::string_view name, std::size_t bytes) {
  if (name.size() <= bytes) return name;
  const NameUnits units = UnitsOf(name);
  const std::string text = ToUtf8(units.Text);
  std::size_t end = 0;
  std::size_t last = 0;
  std::size_t unit = 0;
  for (const std::size_t next : CharacterEnds(text)) {
    unit += ToUtf16(std::string_view(text).substr(last, next - last)).size();
    last = next;
    if (units.Ends[unit - 1] > bytes) break;
    end = units.Ends[unit - 1];
  }
  return name.substr(0, end);
}

std::string NumberSuffix(int number) { return number == 1 ? "" : "_" + std::to_string(number); }

// The replacement of "*" in a pattern: the file name with the number, cut so that the resulting
// name has at most the 255 bytes that file systems allow.
std::string Numbered(std::string_view pattern, std::string_view file_name, int number) {
  constexpr std::size_t kLongestPart = 200;
  constexpr std::size_t kLongestName = 255;
  constexpr std::size_t kPictureEnd =
      6;  // "_7.png" or "_7.svg", which may take the place of ".html"
  const auto stars = static_cast<std::size_t>(std::count(pattern.begin(), pattern.end(), '*'));
  const std::string suffix = NumberSuffix(number);
  const std::size_t others = pattern.size() + kPictureEnd + stars * suffix.size();
  const std::size_t room =
      others < kLongestName ? (kLongestName - others) / std::max(stars, std::size_t{1}) : 0;
  return std::string(Beginning(file_name, std::min(room, kLongestPart))) + suffix;
}

// The pattern without its extension. A dot before a "*" does not begin an extension.
std::string_view Stem(std::string_view pattern) {
  const std::size_t dot = pattern.rfind('.');
  const bool extension = dot != pattern.npos && pattern.find('*', dot) == pattern.npos;
  return pattern.substr(0, extension ? dot : pattern.size());
}

std::string Substitute(const std::string& pattern, const std::string& file_name, int number) {
  if (pattern.find('*') != std::string::npos) {
    return OutputNames::Safe(ReplaceAll(pattern, "*", Numbered(pattern, file_name, number)));
  }
  const std::string_view stem = Stem(pattern);
  return OutputNames::Safe(std::string(stem) + NumberSuffix(number) + pattern.substr(stem.size()));
}

std::string PictureName(const std::string& pattern, const std::string& file_name, int number,
                        std::string_view extension) {
  std::string stem = ReplaceUnsafe(Stem(pattern), kUnsafeInPatterns);
  if (stem.find('*') == std::string::npos) stem += NumberSuffix(number) + "_?";
  const std::string name = ReplaceUnsafe(Numbered(pattern, file_name, number), kUnsafe);
  return ReplaceAll(stem, "*", name + "_?").append(".").append(extension);
}

}  // namespace

std::string_view PictureExtension(PictureFormatConst format, std::string_view option) {
  if (format == KR_PICTURE_PNG) return "png";
  if (format == KR_PICTURE_SVG) return "svg";
  throw AutomationError(KR_ERROR_INVALID_CALL, std::string(option) + " is " +
                                                   std::to_string(format) +
                                                   "; charts on pages can be 0 (PNG) or 1 (SVG)");
}

std::string PictureNames::Picture(std::int32_t number) const {
  return ReplaceAll(Pictures, "?", std::to_string(number));
}

std::string PictureNames::Address() const {
  return ReplaceAll(PercentEncode(Pictures), PercentEncode("?"), "?");
}

void OutputNames::Reserve(const std::string& name) { used_.insert(FoldCase(name)); }

// The first number with which the name of the page is new. The name is taken from now on.
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
                                             const std::string& file_name,
                                             std::string_view extension) {
  if (pattern.empty()) return {};
  const int number = TakeNumber(pattern, file_name);
  return {Substitute(pattern, file_name, number),
          PictureName(pattern, file_name, number, extension)};
}

std::string OutputNames::Safe(std::string_view name) {
  const std::string out = ReplaceUnsafe(name, kUnsafe);
  return out == "." || out == ".." ? "_" + out : out;
}

}  // namespace keltrun
