// What a result page says above its runners: the event, its date, and the classes.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/io/foreign/page_texts.h"
#include "keltrun2/text/datetime.h"

namespace keltrun {

/// Collects the texts between the runners of a page.
class PageHeadings {
 public:
  /// A text, as it stands in the page. `first_cell` is the part of it that can be a name.
  void Add(std::string text, std::string_view first_cell, bool is_heading);

  /// Whether a heading came after the last class began.
  bool HasHeading() const;

  /// The class that the texts since the last call announce: the nearest one with a length, a climb
  /// or a number of runners, otherwise the nearest heading, otherwise the nearest text. nullopt
  /// when there is none.
  std::optional<ClassLine> TakeClass();

  /// The name and date of the event, from the title of the page and the texts before the first
  /// class.
  std::string EventName(const std::string& title) const;
  std::optional<DateTime> EventDate(std::string_view title) const;

 private:
  struct Text {
    std::string text;
    bool is_heading = false;
  };

  std::vector<Text> texts_;  // since the last class began
  bool before_classes_ = true;
  std::string first_text_, first_heading_;
  std::optional<DateTime> date_;
};

}  // namespace keltrun
