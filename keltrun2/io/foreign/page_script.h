// Results that a page keeps in a script, as those of SiTiming do.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace keltrun {

/// Whether the script of a page has tables of results: it defines a function getData that returns
/// the rows of the table with a number.
bool HasScriptTables(std::string_view script);

/// The rows of a table as HTML; empty if the script has none. The script says
///     if (tableNumber == 0) return [["1st","1","Ann","ABC","27:00"],...];
/// where each text is HTML.
std::string ScriptTableRows(std::string_view script, std::int32_t table);

}  // namespace keltrun
