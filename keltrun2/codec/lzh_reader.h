// LZH archives, read.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace keltrun {

/// A file that came out of an archive.
struct ExtractedFile {
  std::string Name;  // in its folder, UTF-8
  std::string Path;
};

/// How much comes out of an archive at most: a few bytes of a hostile one unpack to gigabytes.
struct ExtractionLimits {
  std::size_t MemberBytes = std::size_t{64} << 20;
  std::size_t TotalBytes = std::size_t{256} << 20;
  std::size_t Members = 1000;
};

/// Which kind of archive or packed file the bytes begin like: "LZH", "ZIP", "7z", "RAR" or "gzip";
/// "" for none of these.
std::string_view KindOfArchive(std::string_view bytes);

/// Unpacks the files of an LZH archive (header levels 0 to 3; methods -lh0-, -lh5- to -lh7-) into
/// an existing folder, in the archive's order. Names are read as Shift-JIS, or as UTF-8 or UTF-16
/// where the archive says so, and only their last part is used; of files with equal names the later
/// ones get a number ("a-2.lxm"). Folders and links in the archive are skipped. An existing file is
/// never replaced. On failure (no archive, damaged, unknown method, beyond the limits) nothing is
/// returned, `error` names the archive and says why, and the files that came out so far are removed
/// again.
[[nodiscard]] std::optional<std::vector<ExtractedFile>> ExtractArchive(
    const std::string& archive_name, const std::string& folder, std::string& error,
    const ExtractionLimits& limits = {});

}  // namespace keltrun
