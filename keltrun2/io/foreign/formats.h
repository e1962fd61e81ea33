// The formats of other programs that are read.
#pragma once

#include <span>
#include <string_view>

#include "keltrun2/io/foreign/foreign_event.h"
#include "keltrun2/io/lap_file_types.h"
#include "keltrun2/io/lap_records.h"

namespace keltrun {

struct ForeignFormat {
  KrLapFileTypeConst type;
  bool (*looks_like)(std::string_view text);  // the beginning of a text suffices
  ReadResult (*read)(std::string_view text, const ForeignOptions& options);
};

/// All formats, in the order in which they are looked for.
std::span<const ForeignFormat> ForeignFormats();

/// The format of a type; null for the types of our own.
const ForeignFormat* ForeignFormatOf(KrLapFileTypeConst type);

}  // namespace keltrun
