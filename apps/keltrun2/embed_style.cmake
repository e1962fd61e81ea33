# Writes the text file INPUT as a C++ source OUTPUT that defines StyleSheet().
file(READ "${INPUT}" text)
file(WRITE "${OUTPUT}" "// Made from style.css by embed_style.cmake.
#include \"apps/keltrun2/style_sheet.h\"

namespace keltrun::cli {

std::string_view StyleSheet() { return R\"keltrun2(${text})keltrun2\"; }

}  // namespace keltrun::cli
")
