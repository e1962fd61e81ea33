# Puts the parts of the viewer page in FOLDER together and writes the page as the C++ header OUTPUT.
# One scope holds all scripts, in this order: each may use what stands before it.
set(scripts
  texts.js format.js dom.js data.js state.js selection.js table.js charts.js chart_pointer.js app.js)

file(READ "${FOLDER}/viewer.html" page)
file(READ "${FOLDER}/viewer.css" style)
set(script "")
foreach(name IN LISTS scripts)
  file(READ "${FOLDER}/${name}" text)
  string(APPEND script "${text}")
endforeach()
string(REPLACE "{style}" "${style}" page "${page}")
string(REPLACE "{script}" "${script}" page "${page}")

file(WRITE "${OUTPUT}" "// Made from viewer/ by embed_viewer.cmake.
#pragma once

#include <string_view>

namespace keltrun {

inline constexpr std::string_view kViewerTemplate = R\"keltrun2(${page})keltrun2\";

}  // namespace keltrun
")
