// Results that a page keeps in a script, as those of SiTiming do.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

namespace keltrun {

/// The tables in the scripts of a page: a function getData returns the rows of the table with a
/// number, as in
///     if (tableNumber == 0) return [["1st","1","Ann","ABC","27:00"],...];
/// where each text is HTML.
class ScriptTables {
 public:
  /// Adds the tables of a script.
  void Add(std::string_view script);

  bool IsEmpty() const { return tables_.empty(); }

  /// The rows of a table as HTML, once; afterwards, and for other numbers, an empty text.
  std::string TakeRows(std::int32_t table);

 private:
  std::unordered_map<std::int32_t, std::string> tables_;  // what is returned
};

}  // namespace keltrun
