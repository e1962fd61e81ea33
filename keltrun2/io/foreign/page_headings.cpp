#include "keltrun2/io/foreign/page_headings.h"

#include <algorithm>
#include <utility>

#include "keltrun2/text/letters.h"

namespace keltrun {

void PageHeadings::Add(std::string text, std::string_view first_cell, bool is_heading) {
  constexpr std::size_t kMostTexts = 16;
  if (before_classes_) {
    if (!date_) date_ = DateIn(text);
    if (first_text_.empty()) first_text_ = first_cell;
    if (first_heading_.empty() && is_heading) first_heading_ = first_cell;
  }
  if (texts_.size() == kMostTexts) texts_.erase(texts_.begin());
  texts_.push_back({std::move(text), is_heading});
}

bool PageHeadings::HasHeading() const {
  return std::any_of(texts_.begin(), texts_.end(),
                     [](const Text& text) { return text.is_heading; });
}

std::optional<ClassLine> PageHeadings::TakeClass() {
  constexpr std::size_t kLongestName = 100;
  std::optional<ClassLine> numbers;  // a line with a length but without a name
  std::string nearest, nearest_heading;
  for (auto text = texts_.rbegin(); text != texts_.rend() && nearest_heading.empty(); ++text) {
    ClassLine line = ReadClassLine(text->text);
    if (line.name.size() > kLongestName) line.name.clear();
    if (line.has_numbers && !numbers) numbers = line;
    if (line.name.empty()) continue;
    if (nearest.empty()) nearest = line.name;
    if (text->is_heading || line.has_numbers) nearest_heading = line.name;
  }
  before_classes_ = false;
  texts_.clear();
  if (!numbers) numbers.emplace();
  if (numbers->name.empty()) numbers->name = nearest_heading.empty() ? nearest : nearest_heading;
  return numbers->name.empty() ? std::nullopt : numbers;
}

std::string PageHeadings::EventName(const std::string& title) const {
  const std::string& heading = first_heading_.empty() ? first_text_ : first_heading_;
  if (title.empty()) return heading;
  // A title often adds what the page is: "Cup of May - Split times".
  return !heading.empty() && Contains(title, heading) ? heading : title;
}

std::optional<DateTime> PageHeadings::EventDate(std::string_view title) const {
  return date_ ? date_ : DateIn(title);
}

}  // namespace keltrun
