// LZH archives, written: one member, method -lh5-.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace keltrun {

/// An archive (level 2 header) that holds one file. Of `member_name_utf8` the part after the last
/// "/" or "\" is kept, in Shift-JIS, with "_" for what Shift-JIS or a file name cannot hold, and
/// cut at 255 bytes. `modified` is local time in day numbers (clock.h); a moment that the header
/// cannot hold (before 1970, after 2105) is moved to the nearest it can. Bytes that -lh5- would
/// make larger are stored as they are (-lh0-). Requires fewer than 4 GiB.
std::string MakeLzhArchive(std::string_view member_name_utf8, std::string_view bytes,
                           double modified);

/// The checksum of LZH archives (CRC-16 with the reversed polynomial 0xA001), of `bytes` behind
/// bytes whose checksum is `before`.
std::uint16_t LzhCrc16(std::string_view bytes, std::uint16_t before = 0);

}  // namespace keltrun
