# How modules become one script, for the pages that are made of them: the report, and the page in
# web/ that opens files and shows the report.
#
# Each module is a block, so that its own names stay its own; what it exports is a variable around all
# blocks, so that imports can be dropped. Exported names must therefore be different in all modules,
# and each module stands after those that it imports. Indentation and comment lines, which only make
# pages larger, are dropped, too: no string may go over several lines.

# The modules that show an event, without the one that finds its data.
set(report_modules
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

# One script of module files, which may also stand in a page as a script that is no module: what is
# exported can then be used by the scripts after it.
function(join_modules files result)
  set(script "")
  set(exported "")
  foreach(file IN LISTS files)
    file(READ "${file}" text)
    string(REGEX REPLACE "(^|\n)import [^;]*;" "\\1" text "${text}")
    string(REGEX MATCHALL "\nexport [a-z ]*(function|class|const|let) [A-Za-z0-9_]+" exports "\n${text}")
    foreach(export IN LISTS exports)
      string(REGEX REPLACE ".* " "" export "${export}")
      list(APPEND exported "${export}")
    endforeach()
    string(REGEX REPLACE "\nexport function ([A-Za-z0-9_]+)" "\n\\1 = function \\1" text "\n${text}")
    string(REGEX REPLACE "\nexport async function ([A-Za-z0-9_]+)" "\n\\1 = async function \\1" text "${text}")
    string(REGEX REPLACE "\nexport class ([A-Za-z0-9_]+)" "\n\\1 = class \\1" text "${text}")
    string(REGEX REPLACE "\nexport (const|let) " "\n" text "${text}")
    string(APPEND script "{\n${text}}\n")
  endforeach()
  set(different ${exported})
  list(REMOVE_DUPLICATES different)
  if(NOT different STREQUAL exported)
    message(FATAL_ERROR "two modules export the same name: ${exported}")
  endif()
  list(JOIN exported ", " exported)
  string(PREPEND script "'use strict';\nlet ${exported};\n")
  dense("${script}" script)
  set(${result} "${script}" PARENT_SCOPE)
endfunction()

# The script and style of the report.
function(join_report folder script style)
  set(files ${report_modules} main.js)
  list(TRANSFORM files PREPEND "${folder}/")
  join_modules("${files}" joined)
  file(READ "${folder}/report.css" text)
  dense("${text}" text)
  set(${script} "${joined}" PARENT_SCOPE)
  set(${style} "${text}" PARENT_SCOPE)
endfunction()
