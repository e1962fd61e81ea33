// Reads the packed data blocks of pages.
#pragma once

#include <archive.h>
#include <archive_entry.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "tests/test_support.h"

namespace keltrun::test {

/// What a gzip member holds.
inline std::string Unpacked(const std::string& packed) {
  archive* reader = archive_read_new();
  archive_read_support_filter_gzip(reader);
  archive_read_support_format_raw(reader);
  archive_entry* entry = nullptr;
  std::string out;
  if (archive_read_open_memory(reader, packed.data(), packed.size()) == ARCHIVE_OK &&
      archive_read_next_header(reader, &entry) == ARCHIVE_OK) {
    char part[4096];
    for (la_ssize_t size; (size = archive_read_data(reader, part, sizeof part)) > 0;) {
      out.append(part, static_cast<std::size_t>(size));
    }
  }
  archive_read_free(reader);
  return out;
}

/// The bytes of a text in Base64.
inline std::string FromBase64(std::string_view text) {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out;
  std::uint32_t bits = 0;
  int count = 0;
  for (const char c : text.substr(0, text.find('='))) {
    bits = bits << 6 | static_cast<std::uint32_t>(kDigits.find(c));
    if ((count += 6) < 8) continue;
    out += static_cast<char>(bits >> (count -= 8) & 0xFF);
  }
  return out;
}

}  // namespace keltrun::test
