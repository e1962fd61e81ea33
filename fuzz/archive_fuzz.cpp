// LZH archives: everything extracted is a regular file inside the folder and within the limits, and
// after a failure no file is left.
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

#include "keltrun2/codec/lzh_reader.h"

namespace {

namespace fs = std::filesystem;

// The limits are small, since a few bytes of input could fill the disk.
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

// A folder that is removed at the end of the process.
struct Folder {
  Folder() { fs::create_directories(Path); }
  ~Folder() {
    std::error_code ignored;
    fs::remove_all(Path, ignored);
  }
  fs::path Path = fs::temp_directory_path() / ("keltrun2-archive-fuzz-" + std::to_string(getpid()));
};

// Puts the bytes into a file in memory and returns its name.
std::string InputFile(const std::uint8_t* data, std::size_t size) {
  static const int handle = memfd_create("input", MFD_CLOEXEC);
  Require(ftruncate(handle, 0) == 0);
  Require(pwrite(handle, data, size, 0) == static_cast<ssize_t>(size));
  return "/proc/self/fd/" + std::to_string(handle);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Folder folder;
  const std::string archive = InputFile(data, size);
  std::string error;
  const auto files = keltrun::ExtractArchive(archive, folder.Path, error, kLimits);
  Require(files.has_value() || error.find(archive) != std::string::npos);
  if (files) {
    Require(files->size() <= kLimits.Members);
    for (const keltrun::ExtractedFile& file : *files) CheckFile(file, folder.Path);
  }
  Require(fs::is_empty(folder.Path));
  return 0;
}
