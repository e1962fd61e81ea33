# Puts the parts of the report page in FOLDER together and writes the page as the C++ header OUTPUT.
#
# The modules become one script. Each is a block, so that its own names stay its own; what it exports
# is a variable around all blocks, so that imports can be dropped. Exported names must therefore be
# different in all modules, and each module stands after those that it imports. Indentation and
# comment lines, which only make pages larger, are dropped, too: no string may go over several lines.
set(modules
  texts_en.js texts_ja.js language.js format.js dom.js icons.js store.js route.js figures.js data.js
  search.js parts.js rows.js dots.js lines.js loss_bars.js view_event.js view_results.js view_splits.js
  view_race.js view_legs.js view_set.js explanation.js view_runner.js view_compare.js view_find.js
  help.js paper.js shell.js app.js)

# Without comment lines and indentation.
function(dense text result)
  string(REGEX REPLACE "\n[ \t]+" "\n" text "\n${text}")
  string(REGEX REPLACE "\n//[^\n]*" "" text "${text}")
  string(REGEX REPLACE "\n/\\*[^\n]*\\*/" "" text "${text}")
  string(REGEX REPLACE "\n\n+" "\n" text "${text}")
  set(${result} "${text}" PARENT_SCOPE)
endfunction()

# The SHA-256 of a text in Base64, by which a content security policy names a script or style.
function(hash_source text result)
  set(digits "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/")
  string(SHA256 hex "${text}")
  string(APPEND hex "00")  # 33 bytes, of which the last one becomes padding
  set(out "")
  foreach(group RANGE 0 10)
    math(EXPR begin "6 * ${group}")
    string(SUBSTRING "${hex}" ${begin} 6 bytes)
    foreach(shift 18 12 6 0)
      math(EXPR digit "(0x${bytes} >> ${shift}) & 63")
      string(SUBSTRING "${digits}" ${digit} 1 digit)
      string(APPEND out "${digit}")
    endforeach()
  endforeach()
  string(SUBSTRING "${out}" 0 43 out)
  set(${result} "sha256-${out}=" PARENT_SCOPE)
endfunction()

file(READ "${FOLDER}/report.html" page)
file(READ "${FOLDER}/report.css" style)
set(script "")
set(exported "")
foreach(name IN LISTS modules)
  file(READ "${FOLDER}/${name}" text)
  string(REGEX REPLACE "(^|\n)import [^;]*;" "\\1" text "${text}")
  string(REGEX MATCHALL "\nexport [a-z ]*(function|const|let) [A-Za-z0-9_]+" exports "\n${text}")
  foreach(export IN LISTS exports)
    string(REGEX REPLACE ".* " "" export "${export}")
    list(APPEND exported "${export}")
  endforeach()
  string(REGEX REPLACE "\nexport function ([A-Za-z0-9_]+)" "\n\\1 = function \\1" text "\n${text}")
  string(REGEX REPLACE "\nexport async function ([A-Za-z0-9_]+)" "\n\\1 = async function \\1" text "${text}")
  string(REGEX REPLACE "\nexport (const|let) " "\n" text "${text}")
  string(APPEND script "{\n${text}}\n")
endforeach()
list(JOIN exported ", " exported)
string(PREPEND script "let ${exported};\n")
dense("${script}" script)
dense("${style}" style)
hash_source("${script}" script_hash)
hash_source("${style}" style_hash)
foreach(gap style_hash script_hash style script)
  string(REPLACE "{${gap}}" "${${gap}}" page "${page}")
endforeach()

file(WRITE "${OUTPUT}" "// Made from report_page/ by embed_report.cmake.
#pragma once

#include <string_view>

namespace keltrun {

inline constexpr std::string_view kReportTemplate = R\"keltrun2(${page})keltrun2\";

}  // namespace keltrun
")
