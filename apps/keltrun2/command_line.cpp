#include "apps/keltrun2/command_line.h"

#include <CLI/CLI.hpp>
#include <cstdint>
#include <iostream>
#include <limits>
#include <string>

#include "apps/keltrun2/command_error.h"
#include "keltrun2/keltrun2.h"

namespace keltrun::cli {
namespace {

constexpr std::int32_t kLastCourse = std::numeric_limits<std::int32_t>::max();

constexpr char kDescription[] =
    "Analyses orienteering split times and publishes them as HTML pages.";
constexpr char kFooter[] =
    "Examples:\n"
    "  keltrun2 site event.lxm public_html        the event as a web site\n"
    "  keltrun2 info event.lxm                    what the event holds\n"
    "  keltrun2 analyze event.lxm --class M21A --as html -o m21a.html\n"
    "  keltrun2 results event.lxm --as json | jq .\n"
    "\"keltrun2 COMMAND --help\" explains a command.\n"
    "The program ends with 0 when it is done, 1 when it failed, 2 when it was used wrongly.";

constexpr char kSiteFooter[] =
    "The folder gets index.html, a result page and an analysis page for each class, a copy of the\n"
    "lap file (event.lxm) and style.css. Files of these names are replaced, with --add too: give\n"
    "each of several events in one folder a --prefix.\n"
    "Examples:\n"
    "  keltrun2 site event.lxm public_html\n"
    "  keltrun2 site event.lxm public_html --courses --style club.css\n"
    "  keltrun2 site sunday.lxm public_html --add --prefix sunday_ --lang en";
constexpr char kInfoFooter[] =
    "Examples:\n"
    "  keltrun2 info event.lxm\n"
    "  keltrun2 info event.lxm --json -o event.json\n"
    "  ssh club cat event.lxm | keltrun2 info -";
constexpr char kConvertFooter[] =
    "Reads native lap files, their previous generation, SPORTident results printouts, OEvent "
    "split\n"
    "lists, comma-separated result lists, and LZH archives of lap files. The ending of the output "
    "is\n"
    "its format: .lxm native, .lap previous generation, .xml IOF XML 2.0.3 result list, .lzh "
    "archive.\n"
    "Examples:\n"
    "  keltrun2 convert sportident.txt event.lxm\n"
    "  keltrun2 convert event.lxm results.xml --force";
constexpr char kMergeFooter[] =
    "Examples:\n"
    "  keltrun2 merge event.lxm import.txt -o out.lxm --match name --prefer new\n"
    "  keltrun2 merge day.lxm late.lxm -o all.lxm --match none\n"
    "  keltrun2 merge event.lxm cards.lxm -o out.lxm --match id --known-only";
constexpr char kAnalyzeFooter[] =
    "HTML is the page of one class or course. JSON is one object for a class or course that is\n"
    "named, otherwise an array with one object per class and per course that classes share.\n"
    "Examples:\n"
    "  keltrun2 analyze event.lxm --class M21A --as html -o m21a.html\n"
    "  keltrun2 analyze event.lxm --course 3 --as json | jq .set\n"
    "  keltrun2 analyze event.lxm --all --as json -o analysis.json --force";
constexpr char kResultsFooter[] =
    "HTML is the page of one class or course. JSON holds the class or course that is named,\n"
    "otherwise every class and every course that classes share.\n"
    "Examples:\n"
    "  keltrun2 results event.lxm --class M21A --as html -o m21a.html\n"
    "  keltrun2 results event.lxm --as json | jq .";

void AddGeneralOptions(CLI::App& app, Options& options) {
  app.add_option("--lang", options.language, "language of the pages")
      ->type_name("ja|en")
      ->capture_default_str()
      ->check(CLI::IsMember({"ja", "en"}).description(""));
  app.add_flag("-q,--quiet", options.quiet, "no progress bar, no closing line");
}

void AddEvent(CLI::App& app, Options& options) {
  app.add_option("EVENT", options.event, "lap file; - is standard input (UTF-8)")
      ->type_name("")
      ->required();
  app.add_option("--member", options.member, "which lap file of an archive that holds several")
      ->type_name("NAME");
}

// A file name whose ending names a format that can be written.
CLI::Validator LapFileName() {
  return CLI::Validator(
      [](const std::string& name) {
        for (const char* ending : {".lxm", ".lap", ".xml", ".lzh"}) {
          if (name.size() > 4 && CLI::detail::to_lower(name.substr(name.size() - 4)) == ending) {
            return std::string();
          }
        }
        return std::string("a file name must end in .lxm, .lap, .xml or .lzh");
      },
      "");
}

void AddOutput(CLI::App& app, Options& options) {
  app.add_option("-o,--output", options.output, "file to write; - is standard output")
      ->type_name("FILE")
      ->capture_default_str();
  app.add_flag("--force", options.force, "replace the file when it is there already");
}

// Which data set and in which form.
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
  app.add_option_function<std::string>(
         "--as", [&options](const std::string& form) { options.json = form == "json"; },
         "form of the output")
      ->type_name("html|json")
      ->check(CLI::IsMember({"html", "json"}).description(""))
      ->required();
  app.add_option("--style-url", options.style_address, "address of a style sheet for the HTML page")
      ->type_name("URL")
      ->check(CLI::Validator(
          [](const std::string& url) {
            return url.find_first_of("\"<>") == std::string::npos
                       ? std::string()
                       : std::string("an address must not hold quotes or angle brackets");
          },
          ""));
  return by_class;
}

void AddConvertOptions(CLI::App& app, Options& options) {
  AddEvent(app, options);
  app.add_option("OUTPUT", options.output, "file to write, a .lxm, .lap, .xml or .lzh")
      ->type_name("")
      ->required()
      ->check(LapFileName());
  app.add_flag("--force", options.force, "replace the file when it is there already");
  app.add_flag("--full", options.full, "save fixed ranks and ages, too (.lxm)");
}

void AddMergeOptions(CLI::App& app, Options& options) {
  AddEvent(app, options);
  app.add_option("IMPORT", options.import_file, "file with more about the event")
      ->type_name("")
      ->required();
  app.add_option("-o,--output", options.output, "file to write, a .lxm, .lap, .xml or .lzh")
      ->type_name("FILE")
      ->required()
      ->check(LapFileName());
  app.add_flag("--force", options.force, "replace the file when it is there already");
  app.add_flag("--full", options.full, "save fixed ranks and ages, too (.lxm)");
  app.add_option("--match", options.match,
                 "how a runner of the import is recognised in his class: by name (without regard\n"
                 "to blanks, case and width), by id, or not at all: then everybody is added")
      ->type_name("name|id|none")
      ->check(CLI::IsMember({"name", "id", "none"}).description(""))
      ->capture_default_str();
  app.add_option_function<std::string>(
         "--prefer", [&options](const std::string& word) { options.prefer_new = word == "new"; },
         "which value counts where both have one (default old)")
      ->type_name("old|new")
      ->check(CLI::IsMember({"old", "new"}).description(""));
  app.add_flag("--known-only", options.known_only, "leave out runners who are not in the event");
}

void AddSiteOptions(CLI::App& app, Options& options) {
  AddEvent(app, options);
  app.add_option("DIR", options.folder, "folder of the site, made when it does not exist")
      ->type_name("")
      ->required();
  app.add_flag("--courses", options.courses, "pages for courses that classes share, too");
  app.add_option("--style", options.style_file,
                 "style sheet to publish as style.css; none for pages without one")
      ->type_name("FILE|none");
  app.add_option("--prefix", options.prefix, "in front of the names of all pages but the index")
      ->type_name("TEXT");
  app.add_flag("--add", options.add, "keep an index.html that is there and put the event in front");
  app.add_flag_callback(
      "--no-official-site", [&options] { options.official_site = false; },
      "no link from the index to the event's own web site");
}

void AddInfoOptions(CLI::App& app, Options& options) {
  AddEvent(app, options);
  app.add_flag("--json", options.json, "JSON in place of a summary to read");
  AddOutput(app, options);
}

void AddAnalyzeOptions(CLI::App& app, Options& options) {
  AddEvent(app, options);
  CLI::Option* by_class = AddDataSet(app, options);
  app.add_flag("--all")
      ->description("every class and every shared course, which is what naming none means")
      ->excludes(by_class)
      ->excludes("--course");
  AddOutput(app, options);
}

void AddResultsOptions(CLI::App& app, Options& options) {
  AddEvent(app, options);
  AddDataSet(app, options);
  AddOutput(app, options);
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
    {"site", "Publish the event as a web site in a folder", kSiteFooter, AddSiteOptions,
     PublishSite},
    {"convert", "Write the event in another format", kConvertFooter, AddConvertOptions,
     ConvertEvent},
    {"merge", "Add what another file knows to the event", kMergeFooter, AddMergeOptions,
     MergeEvents},
    {"info", "Show what the event holds", kInfoFooter, AddInfoOptions, ShowInfo},
    {"analyze", "Write the split analysis of a class or course", kAnalyzeFooter, AddAnalyzeOptions,
     WriteAnalysis},
    {"results", "Write the result list of a class or course", kResultsFooter, AddResultsOptions,
     WriteResults},
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
  app.set_version_flag("--version", ProgramVersion, "show the version and end");
  app.set_help_flag("-h,--help", "show this help and end");
  app.get_formatter()->label("REQUIRED", "(required)");
  app.get_formatter()->label("Excludes", "not with");
  app.get_formatter()->label("SUBCOMMAND", "COMMAND");
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
    return ExplainWrongUse(app, error.what());
  }
  if (line.command == nullptr) return ExplainWrongUse(app, "a command is missing");
  return line;
}

}  // namespace keltrun::cli
