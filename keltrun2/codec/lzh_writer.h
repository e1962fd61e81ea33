// Writing LZH archives with one member, compressed with the method -lh5-.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace keltrun {

/// Makes an archive (level 2 header) that contains one file. The name of the member is the part of
/// `member_name_utf8` after the last "/" or "\", in Shift-JIS, with "_" for each character that
/// Shift-JIS does not have or a file name cannot contain, cut at 255 bytes. `modified` is local
/// time as a day number (clock.h); a moment that the header cannot express (before 1970 or after
/// 2105) becomes the nearest one that it can. Bytes that -lh5- would make larger are stored
/// uncompressed (-lh0-). Requires fewer than 4 GiB.
std::string MakeLzhArchive(std::string_view member_name_utf8, std::string_view bytes,
                           double modified);

/// The checksum of LZH archives: CRC-16 with the reversed polynomial 0xA001. `before` is the
/// checksum of the bytes that come before `bytes`.
std::uint16_t LzhCrc16(std::string_view bytes, std::uint16_t before = 0);

}  // namespace keltrun
