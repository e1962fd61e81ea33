// Archives: what comes out is a plain file inside the folder and within the limits; after a failure
// nothing is left.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

#include "keltrun2/platform/archiver.h"
#include "keltrun2/platform/files.h"

namespace {

namespace fs = std::filesystem;

// Small, or a few bytes would fill the disk.
constexpr keltrun::ExtractionLimits kLimits{
    .MemberBytes = 100000, .TotalBytes = 300000, .Members = 20};

void Require(bool holds) {
  if (!holds) std::abort();
}

void CheckFile(const keltrun::ExtractedFile& file, const fs::path& folder) {
  Require(fs::path(file.Path).parent_path() == folder);
  Require(fs::path(file.Path).filename() == file.Name);
  Require(fs::is_regular_file(fs::symlink_status(file.Path)));
  Require(fs::file_size(file.Path) <= kLimits.MemberBytes);
  fs::remove(file.Path);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // One for the life of the process.
  static const fs::path base =
      fs::temp_directory_path() / ("keltrun2-archive-fuzz-" + std::to_string(getpid()));
  const fs::path folder = base / "out", archive = base / "in.lzh";
  fs::create_directories(folder);
  std::string error;
  Require(keltrun::WriteFile(archive, {reinterpret_cast<const char*>(data), size}, error));

  const auto files = keltrun::ExtractArchive(archive, folder, error, kLimits);
  Require(files.has_value() || error.find(archive.string()) != std::string::npos);
  if (files) {
    Require(files->size() <= kLimits.Members);
    for (const keltrun::ExtractedFile& file : *files) CheckFile(file, folder);
  }
  Require(fs::is_empty(folder));
  fs::remove_all(base);
  return 0;
}
