// The options of an event, by name.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "keltrun2/codec/encodings.h"
#include "keltrun2/io/lap_file_types.h"

namespace keltrun::c {

/// What keltrun2_set sets. The comments of the header say what each option means.
struct Options {
  KrLapFileTypeConst input_format = KR_FILETYPE_AUTODETECT;
  std::optional<Charset> input_charset;
  std::int32_t race = 0;
  std::string member;
  std::string match = "name";
  bool prefer_new = false;
  bool known_only = false;
  bool renew_ranks = true;
  std::string untimed = "auto";
  std::optional<std::string> class_name;
  std::optional<std::int32_t> course;
  std::optional<std::string> segment;
  std::string charset;  // a name that is known, or ""
  std::string delimiter = ",";
  bool splits = false;
  bool full = false;
};

/// Sets an option; an empty value brings back the initial one. Raises invalid procedure call (5)
/// for an unknown option or value, changing nothing.
void SetOption(Options& options, std::string_view name, const std::string& value);

}  // namespace keltrun::c
