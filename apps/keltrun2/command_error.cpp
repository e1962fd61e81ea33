#include "apps/keltrun2/command_error.h"

#include <algorithm>
#include <cctype>
#include <sstream>
#include <string>
#include <vector>

namespace keltrun::cli {
namespace {

std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    if (line.ends_with('\r')) line.pop_back();
    lines.push_back(line);
  }
  return lines;
}

// A line such as "clsFileControl.LoadOEvent" and nothing else.
bool IsOperation(const std::string& line) {
  return line.starts_with("cls") && line.find('.') != std::string::npos &&
         std::all_of(line.begin(), line.end(), [](char c) {
           return c == '.' || std::isalnum(static_cast<unsigned char>(c)) != 0;
         });
}

}  // namespace

std::string ReasonOf(const std::string& error_comment) {
  const std::vector<std::string> lines = LinesOf(error_comment);
  std::string reason;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const bool is_general = i + 2 < lines.size() && IsOperation(lines[i + 1]);
    if (is_general || IsOperation(lines[i])) continue;
    reason += (reason.empty() ? "" : "\n") + lines[i];
  }
  return reason;
}

}  // namespace keltrun::cli
