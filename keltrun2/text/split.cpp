#include "keltrun2/text/split.h"

#include "keltrun2/text/letters.h"

namespace keltrun {
namespace {

constexpr std::int32_t kLargestIndex = 1 << 20;  // no real list is that long; bounds the memory

}  // namespace

std::pair<std::string_view, std::string_view> SplitAt(std::string_view text,
                                                      std::string_view separator, bool trim) {
  const std::size_t pos = text.find(separator);
  if (pos == std::string_view::npos) return {trim ? TrimSpaces(text) : text, {}};
  return {TrimSpaces(text.substr(0, pos)), TrimSpaces(text.substr(pos + separator.size()))};
}

std::vector<std::string_view> SplitLines(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::size_t end = text.find_first_of("\r\n");
    lines.push_back(text.substr(0, end));
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + (text.substr(end, 2) == "\r\n" ? 2 : 1));
  }
  return lines;
}

void CclsSplit::SetExpression(std::string_view separator, std::string_view text) {
  parts_.clear();
  if (text.empty()) return;
  if (!separator.empty()) {
    for (std::size_t pos; (pos = text.find(separator)) != std::string_view::npos;) {
      parts_.emplace_back(text.substr(0, pos));
      text.remove_prefix(pos + separator.size());
    }
  }
  parts_.emplace_back(text);
}

std::string CclsSplit::AfterValue(std::int32_t index, std::string_view separator) const {
  std::string out;
  if (index < 0) return out;
  for (std::int32_t i = index; i <= Bound(); ++i) {
    if (i > index) out += separator;
    out += parts_[static_cast<std::size_t>(i)];
  }
  return out;
}

std::string CclsSplit::Value(std::int32_t index) const {
  if (index < 0 || index > Bound()) return "";
  return std::string(TrimSpaces(parts_[static_cast<std::size_t>(index)]));
}

void CclsSplit::SetValue(std::int32_t index, std::string_view text) {
  text = TrimSpaces(text);
  if (index < 0 || index > kLargestIndex || (index > Bound() && text.empty())) return;
  if (index > Bound()) parts_.resize(static_cast<std::size_t>(index) + 1);
  parts_[static_cast<std::size_t>(index)] = text;
}

}  // namespace keltrun
