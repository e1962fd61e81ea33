// What the user asked for.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace keltrun::cli {

/// The arguments of every command; each command reads those that it offers.
struct Options {
  std::string language = "ja";  // or "en"
  bool quiet = false;
  std::string event;  // lap file, "-" is standard input

  // The site.
  std::string folder;
  std::string style_file;  // "" is the style sheet of the program, "none" is no style sheet
  std::string prefix;      // in front of the names of all pages but the index
  bool courses = false;
  bool add = false;
  bool official_site = true;

  // Commands that write one file.
  std::string output = "-";  // "-" is standard output
  bool force = false;
  bool json = false;
  std::string style_address;  // of the style sheet an HTML page links, "" for none

  // Loading.
  std::string member;  // which lap file of an archive that holds several

  // Converting and merging.
  bool full = false;           // save the fixed ranks and ages, too
  std::string import_file;     // what is merged into the event
  std::string match = "name";  // how a runner is recognised: "name", "id", or "none"
  bool prefer_new = false;     // new values overwrite existing ones
  bool known_only = false;     // runners who are not there already are left out

  // Which data set; nothing set is every one that the event offers.
  std::optional<std::string> class_name;
  std::optional<std::int32_t> course;
  std::optional<std::string> segment;
};

}  // namespace keltrun::cli
