# Puts the parts of the report page in FOLDER together and writes the page as the C++ header OUTPUT. With
# GAPS its script and style are left out, because the host has them and fills them in.
include(${CMAKE_CURRENT_LIST_DIR}/join_modules.cmake)

file(READ "${FOLDER}/report.html" page)
if(NOT GAPS)
  join_report("${FOLDER}" script style)
  hash_source("${script}" script_hash)
  hash_source("${style}" style_hash)
  foreach(gap style_hash script_hash style script)
    string(REPLACE "{${gap}}" "${${gap}}" page "${page}")
  endforeach()
endif()

file(WRITE "${OUTPUT}" "// Made from report_page/ by embed_report.cmake.
#pragma once

#include <string_view>

namespace keltrun {

inline constexpr std::string_view kReportTemplate = R\"keltrun2(${page})keltrun2\";

}  // namespace keltrun
")
