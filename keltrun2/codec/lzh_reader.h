// Reading LZH archives.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace keltrun {

/// A file extracted from an archive.
struct ExtractedFile {
  std::string Name;  // the name in its folder, UTF-8
  std::string Path;
};

/// The maximum that may come out of an archive. Without limits, a few bytes of a hostile archive
/// could unpack to gigabytes.
struct ExtractionLimits {
  std::size_t MemberBytes = std::size_t{64} << 20;
  std::size_t TotalBytes = std::size_t{256} << 20;
  std::size_t Members = 1000;
};

/// Unpacks the files of an LZH archive (header levels 0 to 3; methods -lh0-, -lh5- to -lh7-) into
/// an existing folder, in the order of the archive. Names are read as Shift-JIS, or as UTF-8 or
/// UTF-16 if the archive says so, and only their last part is used; when several files have the
/// same name, the later ones get a number ("a-2.lxm"). Folders and links in the archive are
/// skipped. An existing file is never replaced. On failure (not an archive, damaged, unknown
/// method, beyond the limits) the result is empty, `error` names the archive and says why, and the
/// files extracted so far are removed.
[[nodiscard]] std::optional<std::vector<ExtractedFile>> ExtractArchive(
    const std::string& archive_name, const std::string& folder, std::string& error,
    const ExtractionLimits& limits = {});
/// The same with the bytes of the archive; errors call it by the name.
[[nodiscard]] std::optional<std::vector<ExtractedFile>> ExtractArchiveBytes(
    std::string_view bytes, const std::string& archive_name, const std::string& folder,
    std::string& error, const ExtractionLimits& limits = {});

}  // namespace keltrun
