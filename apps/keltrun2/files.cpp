#include "apps/keltrun2/files.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <memory>
#include <system_error>

#include "apps/keltrun2/command_error.h"
#include "keltrun2/keltrun2.h"

namespace keltrun::cli {
namespace {

namespace fs = std::filesystem;

constexpr char kStandardStream[] = "-";

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

[[noreturn]] void Fail(const std::string& action, const std::string& name, int error) {
  throw CommandError("cannot " + action + " " + name + ": " + std::strerror(error));
}

std::string ReadAll(std::FILE* file, const std::string& name) {
  constexpr std::size_t kPiece = 1 << 16;
  constexpr std::size_t kLargestInput = std::size_t{64} << 20;
  std::string bytes;
  std::size_t filled = 0;
  do {
    if (filled > kLargestInput) throw CommandError(name + " is larger than a lap file can be");
    bytes.resize(filled + kPiece);
    filled += std::fread(bytes.data() + filled, 1, kPiece, file);
  } while (filled == bytes.size());
  if (std::ferror(file)) Fail("read", name, errno);
  bytes.resize(filled);
  return bytes;
}

bool WriteAll(std::FILE* file, std::string_view bytes) {
  return std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size() && std::fflush(file) == 0;
}

// Pipes and devices cannot be replaced, only written to.
bool IsDevice(const std::string& file) {
  std::error_code code;
  const fs::file_status status = fs::status(file, code);
  return fs::exists(status) && !fs::is_regular_file(status) && !fs::is_directory(status);
}

void WriteDirectly(const std::string& name, std::string_view bytes) {
  const File file(std::fopen(name.c_str(), "wb"));
  if (!file || !WriteAll(file.get(), bytes)) Fail("write", name, errno);
}

// The new file gets the permissions of the one it replaces.
void KeepPermissions(const fs::path& from, const fs::path& to) {
  std::error_code code;
  const fs::file_status status = fs::status(from, code);
  if (fs::exists(status)) fs::permissions(to, status.permissions(), code);
}

// Behind links, so that a link stays a link.
fs::path ReplacedFile(const std::string& name) {
  std::error_code code;
  const fs::path target = fs::canonical(name, code);
  return code ? fs::path(name) : target;
}

void WriteReplacing(const std::string& name, std::string_view bytes) {
  const fs::path target = ReplacedFile(name);
  const std::string temporary = target.string() + "." + std::to_string(getpid()) + ".tmp";
  std::remove(temporary.c_str());  // left over from a process of the same number that was killed
  File file(std::fopen(temporary.c_str(), "wbx"));
  if (!file) Fail("write", name, errno);
  bool written = WriteAll(file.get(), bytes);
  int error = errno;
  if (written) KeepPermissions(target, temporary);
  file.reset();
  if (written && std::rename(temporary.c_str(), target.c_str()) != 0) {
    written = false;
    error = errno;
  }
  if (written) return;
  std::remove(temporary.c_str());
  Fail("write", name, error);
}

}  // namespace

std::string ReadStandardInput() { return ReadAll(stdin, "standard input"); }

std::string ReadInput(const std::string& file) {
  const File input(std::fopen(file.c_str(), "rb"));
  if (!input) Fail("read", file, errno);
  return ReadAll(input.get(), file);
}

void MakeFolder(const std::string& folder) {
  std::error_code code;
  fs::create_directories(folder, code);
  if (code) throw CommandError("cannot make folder " + folder + ": " + code.message());
  if (!fs::is_directory(folder, code)) Fail("make folder", folder, ENOTDIR);
}

void CheckOutput(const Options& options) {
  std::error_code code;
  if (options.output == kStandardStream || !fs::exists(options.output, code)) return;
  if (fs::is_directory(options.output, code)) Fail("write", options.output, EISDIR);
  if (options.force || IsDevice(options.output)) return;
  throw CommandError(options.output + " is there already; --force replaces it");
}

void WriteOutput(const std::string& file, std::string_view bytes) {
  if (file == kStandardStream) {
    if (!WriteAll(stdout, bytes)) Fail("write", "standard output", errno);
  } else if (IsDevice(file)) {
    WriteDirectly(file, bytes);
  } else {
    WriteReplacing(file, bytes);
  }
}

void WarnWithoutJapaneseFont() {
  if (HasJapaneseFont()) return;
  std::cerr << "keltrun2: no font of this system has Japanese letters, they will show as boxes; "
               "install the package fonts-ipafont-gothic\n";
}

}  // namespace keltrun::cli
