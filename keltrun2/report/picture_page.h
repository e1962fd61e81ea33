// A page with the charts of an event.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace keltrun {

/// A picture in the folder of the page.
struct PagePicture {
  std::string File;
  std::string Title;
};

/// The pictures of a class or course.
struct PictureGroup {
  std::string Name;
  std::vector<PagePicture> Pictures;
};

/// Appends a page with all groups, which needs no scripts. All pictures have the same size in
/// pixels; `report` is the address of the event's report.
void AppendPicturePage(std::string& page, std::string_view event_name, std::string_view report,
                       const std::vector<PictureGroup>& groups, int width, int height);

}  // namespace keltrun
