// The options of a command line.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace keltrun::cli {

/// How a chart looks.
struct ChartOptions {
  std::string mode = "normal";
  std::int32_t width = 1200;  // pixels
  std::int32_t height = 800;
  float zoom_x = 1;  // 1 shows the whole chart
  float zoom_y = 1;
  float scroll_x = 0;  // 0 is the start of a zoomed chart, 1 its end
  float scroll_y = 0;
  std::vector<std::string> highlight;  // positions in the analysis, or parts of names
  bool names = false;                  // every runner's name at the line or mark
};

/// What is printed, and on what.
struct PrintOptions {
  std::string what = "results";  // or "analysis"
  std::string paper = "A4";
  bool landscape = false;
  std::string per_sheet = "1x1";  // pages side by side x one below the other
  float margin = 12;              // mm
  float line_interval = 1.5F;     // of result lists
  bool ids = false;
  bool ages = false;
  bool new_pages = false;    // each list on a page of its own
  std::string legs = "lap";  // of analyses: "lap" or "miss"
  std::string printer;       // "" writes a PDF file
  bool list_printers = false;
};

/// Which pages a site has.
enum class SitePages { kReport, kClassic, kBoth };

/// The arguments of every command; each command reads those that it offers.
struct Options {
  std::string language;  // "ja" or "en"; "" is that of the locale
  bool quiet = false;
  std::string event;  // lap file, "-" is standard input

  // The site.
  std::string folder;
  SitePages pages = SitePages::kReport;
  std::string style_file;  // of classic pages; "" is the style sheet of the program, "none" is no
                           // style sheet
  std::string prefix;      // before the names of all files except index.html
  bool courses = false;
  bool add = false;
  bool official_site = true;
  bool legs = true;                  // leg-data pages of the classic site
  std::vector<std::string> charts;   // modes to draw, or "all"
  std::string chart_format = "png";  // or "svg"
  std::int32_t jobs = 0;             // threads, 0 for one for each core
  bool viewer = false;               // the report beside the classic pages
  std::string charset = "x-sjis";    // or "utf-8"

  // Commands that write one file.
  std::string output = "-";  // "-" is standard output
  bool force = false;
  std::string delimiter = ",";  // of tables
  bool splits = false;          // a result table has the times at the controls as well
  std::optional<bool> mark;     // whether a table in UTF-8 begins with a byte-order mark
  std::string output_charset;   // of texts and tables; "" is the usual one of the form
  bool json = false;
  std::string form;           // of an analysis or result list: "html", "json" and so on
  std::string style_address;  // of the style sheet an HTML page links, "" for none

  std::vector<std::string> clocks;  // corrections of the clocks of controls, "45:+40s"
  std::string untimed = "auto";     // legs that analyses leave out: "none", "auto" or "8,15"

  ChartOptions chart;
  PrintOptions print;

  // Loading.
  std::string member;         // which lap file of an archive that contains several
  std::string input_charset;  // of lists without a byte-order mark; "" detects it
  std::string input_format;   // a short name of a format; "" detects it
  std::int32_t race = 0;      // of several in a file; 0 is the first one with results

  // Converting and merging.
  std::string to;           // a short name of a format; "" takes it from the ending of the output
  bool full = false;        // save the fixed ranks and ages as well
  std::string import_file;  // what is merged into the event
  std::string match = "name";  // how a runner is recognized: "name", "id", or "none"
  bool prefer_new = false;     // new values overwrite existing ones
  bool known_only = false;     // runners who are not in the event are left out
  bool renew_ranks = true;     // of classes that were ranked by their results

  // Which data set; when none of these is set, every one that the event offers.
  std::optional<std::string> class_name;
  std::optional<std::int32_t> course;
  std::optional<std::string> segment;
};

}  // namespace keltrun::cli
