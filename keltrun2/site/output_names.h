// File names for the pages of a site.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace keltrun {

/// The names of a page and of the pictures on it.
struct PictureNames {
  std::string Page;
  std::string Pictures;  // "?" stands for the number of the picture, and nowhere else

  /// The file of a picture.
  std::string Picture(std::int32_t number) const;
  /// The pictures' address on the page, "?" still in it.
  std::string Address() const;
};

/// Hands out file names that stay in the folder and are different even where letter case does not
/// count.
class OutputNames {
 public:
  /// Keeps a name for somebody else.
  void Reserve(const std::string& name);

  /// The name of a page: the pattern with "*" replaced by `file_name`, of which at most 200 bytes
  /// stay, a "_2", "_3" ... behind that (or in front of the extension of a pattern without "*")
  /// when the name is taken. "" for an empty pattern.
  std::string Assign(const std::string& pattern, const std::string& file_name);

  /// The same with the names of pictures: those of the page with "_" and the number of the picture
  /// behind what replaced "*", and the extension "png".
  PictureNames AssignWithPictures(const std::string& pattern, const std::string& file_name);

  /// The name without folders, separators and control characters.
  static std::string Safe(std::string_view name);

 private:
  int TakeNumber(const std::string& pattern, const std::string& file_name);

  std::unordered_set<std::string> used_;
  std::unordered_map<std::string, int> last_number_;  // by the name without a number
};

}  // namespace keltrun
