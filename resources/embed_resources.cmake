# Writes the C++ header OUTPUT with the settings file and the texts of both languages from FOLDER,
# byte for byte, so that the library works without these files.
set(files "Settings|Keltrun2.ini" "TextsJa|Keltrun2Res-ja.txt" "TextsEn|Keltrun2Res-en.txt")

set(constants "")
foreach(file IN LISTS files)
  string(REPLACE "|" ";" fields "${file}")
  list(GET fields 0 name)
  list(GET fields 1 file_name)
  file(READ "${FOLDER}/${file_name}" bytes HEX)
  string(REGEX REPLACE "(..)" "\\\\x\\1" bytes "${bytes}")
  string(REGEX REPLACE "(....................................................................)"
    "\\1\"\n    \"" bytes "${bytes}")
  string(APPEND constants "// ${file_name}
inline constexpr std::string_view kBuiltIn${name} =
    \"${bytes}\";

")
endforeach()

file(WRITE "${OUTPUT}" "// Generated from resources/ by embed_resources.cmake.
#pragma once

#include <string_view>

namespace keltrun {

${constants}}  // namespace keltrun
")
