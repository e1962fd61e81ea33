// File names for the pages of a site.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace keltrun {

/// Hands out file names that stay in the folder and are different even where letter case does not
/// count.
class OutputNames {
 public:
  /// Keeps a name for somebody else.
  void Reserve(const std::string& name);

  /// The name of a page: the pattern with "*" replaced by `file_name`, a "_2", "_3" ... behind that
  /// (or in front of the extension of a pattern without "*") when the name is taken. "" for an
  /// empty pattern.
  std::string Assign(const std::string& pattern, const std::string& file_name);

  /// The name without folders, separators and control characters.
  static std::string Safe(std::string_view name);

 private:
  std::unordered_set<std::string> used_;
  std::unordered_map<std::string, int> last_number_;  // by the name without a number
};

}  // namespace keltrun
