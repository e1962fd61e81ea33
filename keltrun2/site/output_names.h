// File names for the pages of a site.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "keltrun2/drawing/cairo_picture.h"

namespace keltrun {

/// The extension of pictures on pages, "png" or "svg". Raises invalid procedure call (5) for
/// another format, with the option's name.
std::string_view PictureExtension(PictureFormatConst format, std::string_view option);

/// The names of a page and of the pictures on it.
struct PictureNames {
  std::string Page;
  std::string Pictures;  // "?" is the place of the number, and occurs nowhere else

  /// The file of a picture.
  std::string Picture(std::int32_t number) const;
  /// The pictures' address on the page, with "?" still in it.
  std::string Address() const;
};

/// Hands out file names that stay in the folder and are different even when letter case is ignored.
class OutputNames {
 public:
  /// Reserves a name for another use.
  void Reserve(const std::string& name);

  /// The name of a page: the pattern with "*" replaced by at most 200 bytes of `file_name`. When
  /// the name is taken, "_2", "_3" and so on follow the file name (or precede the extension, in a
  /// pattern without "*"). "" for an empty pattern.
  std::string Assign(const std::string& pattern, const std::string& file_name);

  /// The same with the names of pictures: each is the name of the page with "_" and the number of
  /// the picture after what replaced "*", and with their extension.
  PictureNames AssignWithPictures(const std::string& pattern, const std::string& file_name,
                                  std::string_view extension);

  /// The name without folders, separators and control characters.
  static std::string Safe(std::string_view name);

 private:
  int TakeNumber(const std::string& pattern, const std::string& file_name);

  std::unordered_set<std::string> used_;
  std::unordered_map<std::string, int> last_number_;  // by the name without a number
};

}  // namespace keltrun
