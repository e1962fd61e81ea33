#include "keltrun2/report/json_writer.h"

#include <cstddef>

#include "keltrun2/codec/utf8.h"
#include "keltrun2/text/numbers.h"

namespace keltrun {
namespace {

constexpr double kMillionths = 1e6;

bool NeedsEscape(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < 0x20 || byte == 0x7F || c == '"' || c == '\\';
}

void AppendEscape(std::string& out, char c) {
  constexpr std::string_view kHex = "0123456789abcdef";
  if (c == '"' || c == '\\') {
    out += '\\';
    out += c;
    return;
  }
  const auto byte = static_cast<unsigned char>(c);
  out += "\\u00";
  out += kHex[byte >> 4];
  out += kHex[byte & 0xF];
}

void AppendEscapedText(std::string& out, std::string_view text) {
  std::size_t copied = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (!NeedsEscape(text[i])) continue;
    out.append(text, copied, i - copied);
    AppendEscape(out, text[i]);
    copied = i + 1;
  }
  out.append(text, copied);
}

}  // namespace

void JsonWriter::Integer(std::int32_t value) {
  Separate();
  AppendInteger(out_, value);
}

void JsonWriter::Text(std::string_view text) {
  Separate();
  out_ += '"';
  if (FindInvalidUtf8(text) == std::string_view::npos) {
    AppendEscapedText(out_, text);
  } else {
    AppendEscapedText(out_, ValidUtf8(text));
  }
  out_ += '"';
}

void JsonWriter::Time(DateTime days) {
  const double milliseconds = days * kMillisecondsPerDay;
  if (!std::isfinite(milliseconds)) return Null();
  Separate();
  AppendThousandths(out_, milliseconds);
}

void JsonWriter::Factor(double value) {
  const double millionths = value * kMillionths;
  if (!std::isfinite(millionths)) return Null();
  Separate();
  AppendMillionths(out_, millionths);
}

}  // namespace keltrun
