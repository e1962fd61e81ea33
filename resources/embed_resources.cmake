# Writes the settings file and the texts of both languages in FOLDER as the C++ header OUTPUT, byte
# for byte: the library works without its files.
set(files "Settings|Keltrun2.ini" "TextsJa|Keltrun2Res-ja.txt" "TextsEn|Keltrun2Res-en.txt")

set(constants "")
foreach(file IN LISTS files)
  string(REPLACE "|" ";" parts "${file}")
  list(GET parts 0 name)
  list(GET parts 1 file_name)
  file(READ "${FOLDER}/${file_name}" bytes HEX)
  string(REGEX REPLACE "(..)" "\\\\x\\1" bytes "${bytes}")
  string(REGEX REPLACE "(....................................................................)"
    "\\1\"\n    \"" bytes "${bytes}")
  string(APPEND constants "// ${file_name}
inline constexpr std::string_view kBuiltIn${name} =
    \"${bytes}\";

")
endforeach()

file(WRITE "${OUTPUT}" "// Made from resources/ by embed_resources.cmake.
#pragma once

#include <string_view>

namespace keltrun {

${constants}}  // namespace keltrun
")
