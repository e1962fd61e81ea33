#include "apps/keltrun2/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdint>
#include <iostream>
#include <limits>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "apps/keltrun2/chart_modes.h"
#include "apps/keltrun2/command_error.h"
#include "apps/keltrun2/words.h"
#include "keltrun2/keltrun2.h"

namespace keltrun::cli {
namespace {

constexpr std::int32_t kLastCourse = std::numeric_limits<std::int32_t>::max();

constexpr char kDescription[] =
    "Analyzes orienteering split times and publishes them as HTML pages.";
constexpr char kFooter[] =
    "Examples:\n"
    "  keltrun2 report event.lxm -o report.html   one page for the runners\n"
    "  keltrun2 site event.lxm public_html        the event as a web site\n"
    "  keltrun2 info event.lxm                    what is in the event\n"
    "  keltrun2 analyze event.lxm --class M21A --as html -o m21a.html\n"
    "  keltrun2 results event.lxm --as json | jq .\n"
    "\"keltrun2 COMMAND --help\" explains a command.\n"
    "Exit codes are 0 for success, 1 for failure and 2 for wrong use.";

constexpr char kReportFooter[] =
    "The report is one file that needs no network: results, splits, the development of the race,\n"
    "legs, a card for every runner, comparisons and a search, on phones and on paper.\n"
    "Examples:\n"
    "  keltrun2 report event.lxm -o report.html\n"
    "  keltrun2 report results.xml -o report.html --force --lang en";
constexpr char kSiteFooter[] =
    "The folder gets the report as index.html and, to take away, event.lxm, results.xml (IOF XML\n"
    "3.0) and results.csv. Publishing again replaces them; files of others are replaced only with\n"
    "--force. For several events in one folder give each a --prefix and add it with --add:\n"
    "index.html then lists them. Classic pages are an index, results, splits and legs of each\n"
    "class, event.lxm, event.lap and style.css.\n"
    "Examples:\n"
    "  keltrun2 site event.lxm public_html\n"
    "  keltrun2 site event.lxm public_html --charts all --courses\n"
    "  keltrun2 site sunday.lxm public_html --add --prefix sunday_ --lang en\n"
    "  keltrun2 site event.lxm public_html --also-classic\n"
    "  keltrun2 site event.lxm public_html --classic --charset utf-8 --style club.css";
constexpr char kInfoFooter[] =
    "Examples:\n"
    "  keltrun2 info event.lxm\n"
    "  keltrun2 info event.lxm --json -o event.json\n"
    "  ssh club cat event.lxm | keltrun2 info -";
constexpr char kConvertFooter[] =
    "Reads native lap files, their previous generation, SPORTident results printouts, OEvent "
    "split\n"
    "lists, comma-separated result lists, and LZH archives of lap files. The ending of the output\n"
    "chooses its format: .lxm native, .lap previous generation, .xml IOF XML 2.0.3 result list,\n"
    ".lzh archive. --to names another one, for other programs: iof3 and iof2 for Livelox, "
    "Eventor,\n"
    "SplitsBrowser and most others, splitsbrowser, winsplits and oe2010 for those that read these\n"
    "tables; iof2-plain is what .xml means.\n"
    "Examples:\n"
    "  keltrun2 convert sportident.txt event.lxm\n"
    "  keltrun2 convert event.lxm results.xml --to iof3\n"
    "  keltrun2 convert event.lxm splits.csv --to splitsbrowser --force";
constexpr char kMergeFooter[] =
    "An import-only text adds clubs and sexes to the runners with a name in every class; in it "
    "only\n"
    "blanks are ignored when names are compared.\n"
    "Examples:\n"
    "  keltrun2 merge event.lxm import.txt -o out.lxm --match name --prefer new\n"
    "  keltrun2 merge day.lxm late.lxm -o all.lxm --match none\n"
    "  keltrun2 merge event.lxm cards.lxm -o out.lxm --match id --known-only";
constexpr char kAnalyzeFooter[] =
    "HTML is the page of one class, course or segment. JSON is one object if one of them is "
    "named,\n"
    "otherwise an array with one object for each class and each course that classes share. An\n"
    "estimate says what every lap would have been without mistakes: in sentences, or one lap in a\n"
    "line; it is that of a class or of all classes. tidy-csv is a table with a row for each runner "
    "and\n"
    "leg, of all classes if none is named.\n"
    "Examples:\n"
    "  keltrun2 analyze event.lxm --class M21A --as html -o m21a.html\n"
    "  keltrun2 analyze event.lxm --course 3 --as json | jq .set\n"
    "  keltrun2 analyze event.lxm --class M21A --as estimate-text --lang en\n"
    "  keltrun2 analyze event.lxm --all --as json -o analysis.json --force";
constexpr char kResultsFooter[] =
    "The output is the class, course or segment that is named, otherwise the lists of all "
    "classes;\n"
    "JSON then also has every course that classes share. csv is a table with a row for every "
    "runner,\n"
    "whatever the status.\n"
    "Examples:\n"
    "  keltrun2 results event.lxm --as text\n"
    "  keltrun2 results event.lxm --class M21A --as html -o m21a.html\n"
    "  keltrun2 results event.lxm --as json | jq .";

constexpr char kChartFooter[] =
    "The modes normal, realtime, relative, relative110 and relative130 draw a line down the "
    "course\n"
    "for each runner; missrate, halfratio and map draw a mark for each runner.\n"
    "Examples:\n"
    "  keltrun2 chart event.lxm --class M21A --mode normal -o chart.png\n"
    "  keltrun2 chart event.lxm --class M21A --mode map --highlight 12,15 -o map.svg\n"
    "  keltrun2 chart event.lxm --course 3 --mode relative --zoom-y 2 --names -o relative.pdf";
constexpr char kPrintFooter[] =
    "Examples:\n"
    "  keltrun2 print event.lxm -o results.pdf\n"
    "  keltrun2 print event.lxm --what analysis -o analysis.pdf --landscape --per-sheet 2x1\n"
    "  keltrun2 print --list-printers\n"
    "  keltrun2 print event.lxm --class M21A --printer office";

void AddGeneralOptions(CLI::App& app, Options& options) {
  app.add_option("--lang", options.language,
                 "language of pages, charts and texts (default: Japanese if the locale of the\n"
                 "environment is, else English)")
      ->type_name("ja|en")
      ->check(CLI::IsMember({"ja", "en"}).description(""));
  app.add_flag("-q,--quiet", options.quiet,
               "show only errors: no progress bar, remarks or closing line");
}

CLI::Validator KnownCharset() {
  return CLI::Validator(
      [](const std::string& name) {
        try {
          clsFileControl().SetInputCharset(name);
          return std::string();
        } catch (const AutomationError&) {
          return "the charset " + name + " is unknown; use utf-8, x-sjis or windows-1252";
        }
      },
      "");
}

CLI::Option* AddEvent(CLI::App& app, Options& options) {
  CLI::Option* event = app.add_option("EVENT", options.event, "lap file; - is standard input")
                           ->type_name("")
                           ->required();
  app.add_option("--member", options.member,
                 "which lap file to load from an archive that contains several")
      ->type_name("NAME");
  app.add_option("--input-charset", options.input_charset,
                 "charset of a list: utf-8, x-sjis, windows-1252 (default: detected)")
      ->type_name("NAME")
      ->check(KnownCharset());
  app.add_option("--input-format", options.input_format,
                 "format of the file; with merge, of IMPORT (default: detected)")
      ->type_name(Joined(LapFileTypeWords(), "|"))
      ->check(CLI::IsMember(LapFileTypeWords()).description(""));
  app.add_option("--race", options.race,
                 "which race or day of a file with several (default: the first with results)")
      ->type_name("N")
      ->check(CLI::Range(1, 1000).description(""));
  return event;
}

// A file name whose ending names a format that can be written; with "-" among the endings, "-" is
// accepted as a name.
CLI::Validator FileNameEnding(const std::vector<std::string>& endings) {
  return CLI::Validator(
      [endings](const std::string& name) {
        for (const std::string& ending : endings) {
          const std::string lower = LowerCase(name);
          if (lower == ending ? ending == "-" : ending != "-" && lower.ends_with(ending)) {
            return std::string();
          }
        }
        return "a file name must end in " + Joined(endings, ", ");
      },
      "");
}

// A part of a file name that is allowed on every system.
CLI::Validator PlainNamePart() {
  return CLI::Validator(
      [](const std::string& text) {
        static constexpr std::string_view kNotInNames = "/\\:*?\"<>|";
        const bool bad = std::any_of(text.begin(), text.end(), [](char c) {
          return static_cast<unsigned char>(c) < 0x20 || c == 0x7F ||
                 kNotInNames.find(c) != std::string_view::npos;
        });
        return bad ? "must not contain any of " + std::string(kNotInNames) : std::string();
      },
      "");
}

CLI::Validator LapFileName() { return FileNameEnding({".lxm", ".lap", ".xml", ".lzh"}); }

// A number in a range; the check of the library accepts "nan".
CLI::Validator NumberWithin(float least, float most) {
  return CLI::Validator(
      [least, most](const std::string& text) {
        const std::optional<float> number = NumberOf(text);
        if (number && *number >= least && *number <= most) return std::string();
        std::ostringstream error;
        error << "must be a number from " << least << " to " << most;
        return error.str();
      },
      "");
}

// Two whole numbers with an x between them.
CLI::Validator TwoNumbers(int least, int most, const std::string& wanted) {
  return CLI::Validator(
      [least, most, wanted](const std::string& text) {
        const std::size_t x = text.find('x');
        const auto fits = [least, most](const std::string& part) {
          const bool digits = !part.empty() && part.size() <= 4 &&
                              part.find_first_not_of("0123456789") == std::string::npos;
          return digits && std::stoi(part) >= least && std::stoi(part) <= most;
        };
        const bool good =
            x != std::string::npos && fits(text.substr(0, x)) && fits(text.substr(x + 1));
        return good ? std::string() : "must be " + wanted;
      },
      "");
}

void AddForce(CLI::App& app, Options& options) {
  app.add_flag("--force", options.force, "replace the file if it exists already");
}

// One of a few words.
CLI::Option* AddChoice(CLI::App& app, const std::string& name, std::string& word,
                       const std::vector<std::string>& words, const std::string& description) {
  return app.add_option(name, word, description)
      ->type_name(Joined(words, "|"))
      ->check(CLI::IsMember(words).description(""));
}

CLI::Validator KnownOutputCharset() {
  return CLI::Validator(
      [](const std::string& name) {
        try {
          clsFileControl().SetOutputCharset(name);
          return std::string();
        } catch (const AutomationError&) {
          return "the charset " + name + " is unknown; use utf-8, utf-8-bom, cp932 or windows-1252";
        }
      },
      "");
}

void AddOutputCharset(CLI::App& app, Options& options, const std::string& of) {
  app.add_option("--charset", options.output_charset,
                 "charset of " + of + ": utf-8, utf-8-bom, cp932, windows-1252")
      ->type_name("NAME")
      ->check(KnownOutputCharset());
}

// What convert and merge save. Without --to the name of the output has to tell the format.
void AddSaving(CLI::App& app, Options& options, const std::string& output) {
  AddForce(app, options);
  CLI::Option* const to = AddChoice(app, "--to", options.to, SaveTypeWords(),
                                    "format of the output (default: as its ending says)");
  AddOutputCharset(app, options, "the output, if its format lets you choose");
  app.parse_complete_callback([to, output, &options] {
    if (to->count() > 0 || options.output.empty()) return;
    const std::string error = LapFileName()(options.output);
    if (!error.empty()) throw CLI::ValidationError(output, error);
  });
  app.add_flag("--full", options.full, "save fixed ranks and ages as well (.lxm)");
}

void AddOutput(CLI::App& app, Options& options) {
  app.add_option("-o,--output", options.output, "file to write; - is standard output")
      ->type_name("FILE")
      ->capture_default_str();
  AddForce(app, options);
}

// Which data set.
CLI::Option* AddDataSet(CLI::App& app, Options& options) {
  CLI::Option* by_class =
      app.add_option("--class", options.class_name, "only this class")->type_name("NAME");
  app.add_option("--course", options.course, "all classes that run this course")
      ->type_name("NUMBER")
      ->check(CLI::Range(1, kLastCourse).description(""))
      ->excludes(by_class);
  app.add_option("--segment", options.segment, "a run of controls that courses share")
      ->type_name("NAME")
      ->excludes(by_class)
      ->excludes("--course");
  return by_class;
}

// Legs that analyses leave out.
void AddUntimed(CLI::App& app, Options& options) {
  app.add_option(
         "--untimed", options.untimed,
         "legs that were not timed and count for nobody: auto finds those on which at least\n"
         "half of the runners show 0, none leaves out no leg")
      ->type_name("none|auto|LEGS")
      ->capture_default_str()
      ->check(CLI::Validator(
          [](const std::string& legs) {
            try {
              clsAnalyzer().SetUntimedLegs(legs);
              return std::string();
            } catch (const AutomationError&) {
              return std::string("must be none, auto or numbers of legs from 1 to 51, as in 8,15");
            }
          },
          ""));
}

// Corrections of the clocks of controls.
void AddClocks(CLI::App& app, Options& options) {
  app.add_option("--clock", options.clocks,
                 "correct the clock of a control: 45:+40s adds 40 s to every punch at control 45;\n"
                 "info names clocks that went wrong during the day")
      ->type_name("CODE:SECONDS")
      ->allow_extra_args(false)
      ->check(CLI::Validator(
          [](const std::string& text) {
            return ClockCorrectionOf(text)
                       ? std::string()
                       : std::string(
                             "must be the code of a control and a time below a day, as in "
                             "45:+40s");
          },
          ""));
}

// How texts and tables are written.
void AddTable(CLI::App& app, Options& options) {
  AddOutputCharset(app, options, "texts and tables");
  app.add_option("--delimiter", options.delimiter, "what separates the cells of csv and tidy-csv")
      ->type_name(",|;|tab")
      ->check(CLI::IsMember({",", ";", "|", "tab"}).description(""));
  const auto add_mark = [&](const char* name, bool mark, const char* description) {
    app.add_flag_callback(
        name, [&options, mark] { options.mark = mark; }, description);
  };
  add_mark("--bom", true, "begin UTF-8 with a byte-order mark (csv does so)");
  add_mark("--no-bom", false, "write UTF-8 without a byte-order mark");
}

// In which form a data set is written.
void AddForm(CLI::App& app, Options& options, const std::vector<std::string>& forms) {
  AddChoice(app, "--as", options.form, forms, "form of the output")->required();
  app.add_option("--style-url", options.style_address, "address of a style sheet for the HTML page")
      ->type_name("URL")
      ->check(CLI::Validator(
          [](const std::string& url) {
            return url.find_first_of("\"<>") == std::string::npos
                       ? std::string()
                       : std::string("an address must not contain quotes or angle brackets");
          },
          ""));
}

void AddConvertOptions(CLI::App& app, Options& options) {
  AddEvent(app, options);
  app.add_option("OUTPUT", options.output, "file to write; without --to a .lxm, .lap, .xml or .lzh")
      ->type_name("")
      ->required();
  AddSaving(app, options, "OUTPUT");
}

void AddMergeOptions(CLI::App& app, Options& options) {
  AddEvent(app, options);
  app.add_option("IMPORT", options.import_file, "file with more about the event")
      ->type_name("")
      ->required();
  app.add_option("-o,--output", options.output,
                 "file to write; without --to a .lxm, .lap, .xml or .lzh")
      ->type_name("FILE")
      ->required();
  AddSaving(app, options, "--output");
  app.add_option("--match", options.match,
                 "how a runner of the import is recognized in the class: by name (blanks and the\n"
                 "case of the letters A to Z are ignored), by id, or not at all, which adds\n"
                 "every runner")
      ->type_name("name|id|none")
      ->check(CLI::IsMember({"name", "id", "none"}).description(""))
      ->capture_default_str();
  app.add_option_function<std::string>(
         "--prefer", [&options](const std::string& word) { options.prefer_new = word == "new"; },
         "which value to keep where both files have one (default old)")
      ->type_name("old|new")
      ->check(CLI::IsMember({"old", "new"}).description(""));
  app.add_flag("--known-only", options.known_only, "leave out runners who are not in the event");
  app.add_option_function<std::string>(
         "--ranks", [&options](const std::string& word) { options.renew_ranks = word == "renew"; },
         "official ranks of a class that changes: renewed if they were exactly those of the\n"
         "results, otherwise kept with a remark that they may be stale (default); or all kept")
      ->type_name("renew|keep")
      ->check(CLI::IsMember({"renew", "keep"}).description(""));
}

// An option that means nothing without the classic pages is most likely a mistake.
void CheckClassicOptions(const CLI::App& app, const Options& options) {
  if (options.pages != SitePages::kReport) return;
  for (const char* name : {"--charset", "--style", "--no-legs"}) {
    if (app.get_option(name)->count() == 0) continue;
    throw CLI::ValidationError(name,
                               "only for classic pages: add --classic or --also-classic; the "
                               "report is in UTF-8 and has a style and legs of its own");
  }
}

// Which pages, and what concerns only the classic ones.
void AddClassicOptions(CLI::App& app, Options& options) {
  const auto add_pages = [&](const char* name, SitePages pages, const char* description) {
    return app.add_flag_callback(
        name, [&options, pages] { options.pages = pages; }, description);
  };
  CLI::Option* const classic =
      add_pages("--classic", SitePages::kClassic,
                "make the classic pages, one for each class, instead of the report");
  add_pages("--also-classic", SitePages::kBoth,
            "make the classic pages as well; classic.html is their index")
      ->excludes(classic);
  app.add_flag("--viewer", options.viewer,
               "beside classic pages, make viewer.html, the report (index.html is it otherwise)");
  AddChoice(app, "--charset", options.charset, {"x-sjis", "utf-8"}, "charset of the classic pages")
      ->capture_default_str();
  app.add_option("--style", options.style_file,
                 "style sheet of the classic pages, published as style.css; none makes pages\n"
                 "without one. A style.css of somebody else stays with --add")
      ->type_name("FILE|none");
  app.add_flag_callback(
      "--no-legs", [&options] { options.legs = false; }, "make no classic pages about the legs");
  app.parse_complete_callback([&app, &options] { CheckClassicOptions(app, options); });
}

void AddSiteCharts(CLI::App& app, Options& options) {
  auto modes = ChartModeNames();
  modes.push_back("all");
  CLI::Option* const charts =
      app.add_option("--charts", options.charts,
                     "publish these charts: all, or some of " + Joined(ChartModeNames(), ", "))
          ->type_name("MODES")
          ->delimiter(',')
          ->allow_extra_args(false)
          ->check(CLI::IsMember(modes).description(""));
  AddChoice(app, "--chart-format", options.chart_format, {"png", "svg"},
            "format of the charts; svg is sharp at any size, and usually smaller")
      ->capture_default_str()
      ->needs(charts);
}

void AddSiteOptions(CLI::App& app, Options& options) {
  AddEvent(app, options);
  app.add_option("DIR", options.folder, "folder of the site, created if it does not exist")
      ->type_name("")
      ->required();
  AddClassicOptions(app, options);
  app.add_flag("--courses", options.courses,
               "make charts and classic pages for courses that classes share as well; the report\n"
               "always has them");
  app.add_option("--prefix", options.prefix, "text before the names of all files but index.html")
      ->type_name("TEXT")
      ->check(PlainNamePart());
  AddSiteCharts(app, options);
  AddUntimed(app, options);
  app.add_option(
         "--jobs", options.jobs,
         "on how many threads charts and classic pages are made (default: one for each core)")
      ->type_name("N")
      ->check(CLI::Range(1, 1000).description(""));
  app.add_flag("--add", options.add,
               "make index.html a list of the events in the folder, the newest first; an event\n"
               "with the same --prefix is replaced, and all else on an existing page stays");
  app.add_flag("--force", options.force, "replace files that are not of this event");
  app.add_flag_callback(
      "--no-official-site", [&options] { options.official_site = false; },
      "do not link the event's own web site");
}

void AddReportOptions(CLI::App& app, Options& options) {
  AddEvent(app, options);
  AddUntimed(app, options);
  AddClocks(app, options);
  AddOutput(app, options);
}

void AddInfoOptions(CLI::App& app, Options& options) {
  AddEvent(app, options);
  app.add_flag("--json", options.json, "write JSON instead of a summary");
  AddClocks(app, options);
  AddOutput(app, options);
}

void AddAnalyzeOptions(CLI::App& app, Options& options) {
  AddEvent(app, options);
  CLI::Option* by_class = AddDataSet(app, options);
  AddForm(app, options,
          {"html", "legs", "mail", "macro-csv", "splitsbrowser", "json", "estimate-text",
           "estimate-csv", "tidy-csv"});
  AddTable(app, options);
  app.add_flag("--all")
      ->description("every class and every shared course (the default)")
      ->excludes(by_class)
      ->excludes("--course")
      ->excludes("--segment");
  AddUntimed(app, options);
  AddClocks(app, options);
  AddOutput(app, options);
}

void AddResultsOptions(CLI::App& app, Options& options) {
  AddEvent(app, options);
  AddDataSet(app, options);
  AddForm(app, options, {"html", "text", "json", "csv"});
  AddTable(app, options);
  app.add_flag("--splits", options.splits, "with csv, also the times at the controls");
  AddOutput(app, options);
}

// "1200x800"
void AddSize(CLI::App& app, ChartOptions& chart) {
  app.add_option_function<std::string>(
         "--size",
         [&chart](const std::string& size) {
           const std::size_t x = size.find('x');
           chart.width = std::stoi(size.substr(0, x));
           chart.height = std::stoi(size.substr(x + 1));
         },
         "width and height in pixels (default 1200x800)")
      ->type_name("WxH")
      ->check(TwoNumbers(200, 9999, "a size such as 1200x800, each from 200 to 9999"));
}

void AddChartOptions(CLI::App& app, Options& options) {
  ChartOptions& chart = options.chart;
  AddEvent(app, options);
  AddDataSet(app, options);
  AddChoice(app, "--mode", chart.mode, ChartModeNames(), "kind of chart")->capture_default_str();
  app.add_option("--highlight", chart.highlight,
                 "runners to draw in color: their positions in the analysis, or parts of names")
      ->type_name("RUNNERS")
      ->delimiter(',')
      ->allow_extra_args(false);
  app.add_flag("--names", chart.names, "write every runner's name at the line or mark");
  AddSize(app, chart);
  const auto add_number = [&app](const char* name, float& value, float least, float most,
                                 const char* description) {
    app.add_option(name, value, description)
        ->type_name("NUMBER")
        ->check(NumberWithin(least, most))
        ->capture_default_str();
  };
  AddUntimed(app, options);
  AddClocks(app, options);
  add_number("--zoom-x", chart.zoom_x, 0.1F, 100, "width of the chart, in picture widths");
  add_number("--zoom-y", chart.zoom_y, 1, 100, "height of the chart, in picture heights");
  add_number("--scroll-x", chart.scroll_x, 0, 1, "part of a zoomed chart: 0 left, 1 right");
  add_number("--scroll-y", chart.scroll_y, 0, 1, "part of a zoomed chart: 0 top, 1 bottom");
  app.add_option("-o,--output", options.output,
                 "picture to write, a .png, .svg or .pdf; - writes a PNG to standard output")
      ->type_name("FILE")
      ->required()
      ->check(FileNameEnding({"-", ".png", ".svg", ".pdf"}));
  AddForce(app, options);
}

void AddPrintOptions(CLI::App& app, Options& options) {
  PrintOptions& print = options.print;
  CLI::Option* list = app.add_flag("--list-printers", print.list_printers,
                                   "show the names of the printers and exit");
  AddEvent(app, options)->required(false);
  AddDataSet(app, options);
  AddChoice(app, "--what", print.what, {"results", "analysis"}, "what to print")
      ->capture_default_str();
  AddChoice(app, "--legs", print.legs, {"lap", "miss"},
            "what an analysis shows of each leg: lap and split, or lap and time lost")
      ->capture_default_str();
  AddUntimed(app, options);
  AddClocks(app, options);
  AddChoice(app, "--paper", print.paper, {"A3", "A4", "A5", "B4", "B5", "Letter", "Legal"},
            "paper size")
      ->capture_default_str();
  app.add_flag("--landscape", print.landscape, "landscape orientation");
  app.add_option("--per-sheet", print.per_sheet, "pages on a sheet: columns x rows")
      ->type_name("COLSxROWS")
      ->check(TwoNumbers(1, 10, "a number of columns and rows such as 2x1, each from 1 to 10"))
      ->capture_default_str();
  app.add_option("--margin", print.margin, "margins in mm")
      ->type_name("MM")
      ->check(NumberWithin(0, 60))
      ->capture_default_str();
  app.add_option("--line-interval", print.line_interval, "line spacing of result lists")
      ->type_name("NUMBER")
      ->check(NumberWithin(1, 10))
      ->capture_default_str();
  app.add_flag("--ids", print.ids, "show the runners' numbers in result lists");
  app.add_flag("--ages", print.ages, "show the runners' ages in result lists");
  app.add_flag("--new-pages", print.new_pages, "start each result list on a new page");
  CLI::Option* printer =
      app.add_option("--printer", print.printer, "printer to print on")->type_name("NAME");
  app.add_option("-o,--output", options.output, "PDF file to write; - is standard output")
      ->type_name("FILE")
      ->check(FileNameEnding({"-", ".pdf"}))
      ->excludes(printer);
  AddForce(app, options);
  app.parse_complete_callback([list, printer, &app, &options] {
    if (list->count() > 0) return;
    if (options.event.empty()) throw CLI::RequiredError("EVENT");
    if (printer->count() == 0 && app.get_option("--output")->count() == 0) {
      throw CLI::RequiredError("--output or --printer");
    }
  });
}

std::string ProgramVersion() { return "Keltrun " + clsKeltrun2().Version(); }

struct CommandEntry {
  const char* name;
  const char* description;
  const char* footer;
  void (*add_options)(CLI::App&, Options&);
  Command command;
};

constexpr CommandEntry kCommands[] = {
    {"report", "Write the report of the event, one page that contains everything", kReportFooter,
     AddReportOptions, WriteReport},
    {"site", "Publish the event as a web site in a folder", kSiteFooter, AddSiteOptions,
     PublishSite},
    {"convert", "Write the event in another format", kConvertFooter, AddConvertOptions,
     ConvertEvent},
    {"merge", "Add what another file knows to the event", kMergeFooter, AddMergeOptions,
     MergeEvents},
    {"info", "Show what is in the event", kInfoFooter, AddInfoOptions, ShowInfo},
    {"analyze", "Write the split analysis of a class, course or segment", kAnalyzeFooter,
     AddAnalyzeOptions, WriteAnalysis},
    {"results", "Write the result list of a class, course or segment", kResultsFooter,
     AddResultsOptions, WriteResults},
    {"chart", "Draw a chart of a class, course or segment", kChartFooter, AddChartOptions,
     DrawChart},
    {"print", "Print result lists or analyses", kPrintFooter, AddPrintOptions, PrintPages},
};

void AddCommands(CLI::App& app, CommandLine& line) {
  for (const CommandEntry& entry : kCommands) {
    CLI::App* command = app.add_subcommand(entry.name, entry.description);
    command->group("Commands")->footer(entry.footer);
    entry.add_options(*command, line.options);
    AddGeneralOptions(*command, line.options);
    command->callback([&line, &entry] { line.command = entry.command; });
  }
  app.require_subcommand(0, 1);
}

void SetWords(CLI::App& app) {
  app.set_version_flag("--version", ProgramVersion, "show the version and exit");
  app.set_help_flag("-h,--help", "show this help and exit");
  app.get_formatter()->label("REQUIRED", "(required)");
  app.get_formatter()->label("Excludes", "not with");
  app.get_formatter()->label("SUBCOMMAND", "COMMAND");
}

// The word in the place of a command that is none, or "".
std::string UnknownCommand(const CLI::App& app) {
  const std::vector<std::string> words = app.remaining();
  const bool unknown = app.get_subcommands().empty() && !words.empty();
  return unknown && !words.front().starts_with('-') ? words.front() : "";
}

std::string CommandNames() {
  std::vector<std::string> names;
  for (const CommandEntry& entry : kCommands) names.emplace_back(entry.name);
  return Joined(names, ", ");
}

int ExplainWrongUse(const CLI::App& app, const std::string& text) {
  const auto commands = app.get_subcommands();
  const std::string command = commands.empty() ? "" : commands.front()->get_name() + " ";
  std::cerr << "keltrun2: " << text << "\nTry \"keltrun2 " << command << "--help\".\n";
  return kWrongUse;
}

}  // namespace

std::variant<CommandLine, int> ReadCommandLine(int argc, char** argv) {
  CommandLine line;
  CLI::App app(kDescription, "keltrun2");
  app.footer(kFooter);
  SetWords(app);
  AddGeneralOptions(app, line.options);
  AddCommands(app, line);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& help_or_version) {
    return app.exit(help_or_version);
  } catch (const CLI::ParseError& error) {
    const std::string unknown = UnknownCommand(app);
    return ExplainWrongUse(app, unknown.empty() ? error.what()
                                                : "unknown command " + unknown +
                                                      "; the commands are " + CommandNames());
  }
  if (line.command == nullptr) return ExplainWrongUse(app, "a command is missing");
  return line;
}

}  // namespace keltrun::cli
