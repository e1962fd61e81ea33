#include "keltrun2/c/options.h"

#include <algorithm>
#include <charconv>
#include <initializer_list>
#include <iterator>

#include "keltrun2/analysis/untimed_legs.h"
#include "keltrun2/base/automation_error.h"

namespace keltrun::c {
namespace {

[[noreturn]] void Refuse(std::string_view option, const std::string& value,
                         std::string_view expected) {
  throw AutomationError(KR_ERROR_INVALID_CALL, std::string(option) + ": \"" + value + "\" is not " +
                                                   std::string(expected));
}

std::string OneOf(std::string_view option, const std::string& value,
                  std::initializer_list<std::string_view> words) {
  if (std::find(words.begin(), words.end(), value) != words.end()) return value;
  std::string expected = "one of";
  for (const std::string_view word : words) expected.append(" ").append(word);
  Refuse(option, value, expected);
}

std::int32_t Number(std::string_view option, const std::string& value, std::int32_t least) {
  std::int32_t number = 0;
  const char* const end = value.data() + value.size();
  const auto read = std::from_chars(value.data(), end, number);
  if (read.ec != std::errc() || read.ptr != end || number < least) {
    Refuse(option, value, "a number from " + std::to_string(least) + " on");
  }
  return number;
}

void SetInputFormat(Options& options, std::string_view name, const std::string& value) {
  const KrLapFileTypeConst type = LapFileTypeOfWord(value);
  if (type == KR_FILETYPE_UNKNOWN) Refuse(name, value, "the short name of a format");
  options.input_format = type;
}

void SetInputCharset(Options& options, std::string_view name, const std::string& value) {
  const std::optional<Charset> charset = CharsetFromName(value);
  if (!charset) Refuse(name, value, "a known charset");
  options.input_charset = charset;
}

void SetRace(Options& options, std::string_view name, const std::string& value) {
  options.race = Number(name, value, 1);
}

void SetMatch(Options& options, std::string_view name, const std::string& value) {
  options.match = OneOf(name, value, {"name", "id", "none"});
}

void SetPrefer(Options& options, std::string_view name, const std::string& value) {
  options.prefer_new = OneOf(name, value, {"old", "new"}) == "new";
}

void SetUntimed(Options& options, std::string_view name, const std::string& value) {
  if (!UntimedLegsChoice::Parse(value)) Refuse(name, value, "auto, none or a list of legs, 8,15");
  options.untimed = value;
}

void ChooseNoSet(Options& options) {
  options.class_name.reset();
  options.course.reset();
  options.segment.reset();
}

void SetClass(Options& options, std::string_view /*name*/, const std::string& value) {
  ChooseNoSet(options);
  options.class_name = value;
}

void SetCourse(Options& options, std::string_view name, const std::string& value) {
  const std::int32_t number = Number(name, value, 0);
  ChooseNoSet(options);
  options.course = number;
}

void SetSegment(Options& options, std::string_view /*name*/, const std::string& value) {
  ChooseNoSet(options);
  options.segment = value;
}

void SetCharset(Options& options, std::string_view name, const std::string& value) {
  if (!TextEncodingFromName(value)) Refuse(name, value, "a known charset");
  options.charset = value;
}

void SetDelimiter(Options& options, std::string_view name, const std::string& value) {
  const std::string word = OneOf(name, value, {",", ";", "|", "tab"});
  options.delimiter = word == "tab" ? "\t" : word;
}

template <auto field>
void SetText(Options& options, std::string_view /*name*/, const std::string& value) {
  options.*field = value;
}

template <auto field>
void SetYesOrNo(Options& options, std::string_view name, const std::string& value) {
  options.*field = OneOf(name, value, {"yes", "no"}) == "yes";
}

template <auto field>
void Reset(Options& options) {
  options.*field = Options().*field;
}

struct Option {
  std::string_view name;
  void (*set)(Options& options, std::string_view name, const std::string& value);
  void (*reset)(Options& options);
};

constexpr Option kOptions[] = {
    {"input-format", SetInputFormat, Reset<&Options::input_format>},
    {"input-charset", SetInputCharset, Reset<&Options::input_charset>},
    {"race", SetRace, Reset<&Options::race>},
    {"member", SetText<&Options::member>, Reset<&Options::member>},
    {"match", SetMatch, Reset<&Options::match>},
    {"prefer", SetPrefer, Reset<&Options::prefer_new>},
    {"known-only", SetYesOrNo<&Options::known_only>, Reset<&Options::known_only>},
    {"renew-ranks", SetYesOrNo<&Options::renew_ranks>, Reset<&Options::renew_ranks>},
    {"untimed", SetUntimed, Reset<&Options::untimed>},
    {"class", SetClass, Reset<&Options::class_name>},
    {"course", SetCourse, Reset<&Options::course>},
    {"segment", SetSegment, Reset<&Options::segment>},
    {"charset", SetCharset, Reset<&Options::charset>},
    {"delimiter", SetDelimiter, Reset<&Options::delimiter>},
    {"splits", SetYesOrNo<&Options::splits>, Reset<&Options::splits>},
    {"full", SetYesOrNo<&Options::full>, Reset<&Options::full>},
};

}  // namespace

void SetOption(Options& options, std::string_view name, const std::string& value) {
  const auto* const found = std::find_if(std::begin(kOptions), std::end(kOptions),
                                         [&](const Option& option) { return option.name == name; });
  if (found == std::end(kOptions)) {
    std::string names;
    for (const Option& option : kOptions) names.append(" ").append(option.name);
    throw AutomationError(KR_ERROR_INVALID_CALL, "there is no option \"" + std::string(name) +
                                                     "\"; the options are" + names);
  }
  if (value.empty()) {
    found->reset(options);
  } else {
    found->set(options, name, value);
  }
}

}  // namespace keltrun::c
