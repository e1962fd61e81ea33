#include "apps/keltrun2/files.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <memory>
#include <system_error>
#include <utility>

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
  constexpr std::size_t kLargestInput = std::size_t{512} << 20;
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

// The file that links lead to, so that a link stays a link.
fs::path ReplacedFile(const std::string& name) {
  std::error_code code;
  const fs::path target = fs::canonical(name, code);
  return code ? fs::path(name) : target;
}

// A new file in a folder, removed unless it gets its final name. Its name is random and not in use:
// a second program may write into the folder at the same time, even one with the same process
// number.
class TemporaryFile {
 public:
  // Throws std::system_error, as the other members do.
  TemporaryFile(const fs::path& folder, mode_t mode) {
    std::uint64_t number = 0;
    Check(getrandom(&number, sizeof number, 0) == sizeof number);
    path_ = folder / (".keltrun2-" + std::to_string(number) + ".tmp");
    handle_ = open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    Check(handle_ >= 0);
  }
  ~TemporaryFile() {
    if (handle_ >= 0) close(handle_);
    if (exists_) unlink(path_.c_str());
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  void SetMode(mode_t mode) { Check(fchmod(handle_, mode) == 0); }
  void Write(std::string_view bytes) {
    while (!bytes.empty()) {
      const ssize_t written = write(handle_, bytes.data(), bytes.size());
      Check(written >= 0 || errno == EINTR);
      bytes.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    }
  }
  // The bytes are on the disk before the old file is replaced.
  void Replace(const fs::path& target) {
    Check(fsync(handle_) == 0 || errno == EINVAL || errno == ENOTSUP);
    Check(close(std::exchange(handle_, -1)) == 0);
    Check(rename(path_.c_str(), target.c_str()) == 0);
    exists_ = false;
  }

 private:
  static void Check(bool good) {
    if (!good) throw std::system_error(errno, std::generic_category());
  }

  fs::path path_;
  int handle_ = -1;
  bool exists_ = true;
};

// The new file gets the permissions of the one it replaces.
void WriteReplacing(const std::string& name, std::string_view bytes) {
  const fs::path target = ReplacedFile(name);
  struct stat old;
  const bool replaces = stat(target.c_str(), &old) == 0;
  const mode_t mode = replaces ? old.st_mode & 0777 : 0666;
  try {
    TemporaryFile file(target.has_parent_path() ? target.parent_path() : ".", mode);
    if (replaces) file.SetMode(mode);
    file.Write(bytes);
    file.Replace(target);
  } catch (const std::system_error& error) {
    Fail("write", name, error.code().value());
  }
}

bool IsSameFile(const std::string& a, const std::string& b) {
  std::error_code none;
  return fs::equivalent(a, b, none);
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
  // Permissions do not say it for file systems such as /proc, so a file is made and removed.
  try {
    const TemporaryFile probe(folder, 0600);
  } catch (const std::system_error& error) {
    Fail("write into the folder", folder, error.code().value());
  }
}

void CheckEventIsKept(const Options& options, const std::vector<std::string>& outputs,
                      const std::string& advice) {
  if (options.event == kStandardStream) return;
  for (const std::string& output : outputs) {
    if (!IsSameFile(options.event, output)) continue;
    std::string text = output;
    text.append(" is the event ").append(options.event).append(" itself, which would be lost: ");
    throw CommandError(text.append(advice));
  }
}

void CheckOutput(const Options& options) {
  std::error_code code;
  if (options.output == kStandardStream || !fs::exists(options.output, code)) return;
  if (fs::is_directory(options.output, code)) Fail("write", options.output, EISDIR);
  if (options.force || IsDevice(options.output)) return;
  throw CommandError(options.output + " exists already; --force replaces it");
}

void CheckReport(const Options& options) {
  CheckOutput(options);
  CheckEventIsKept(options, {options.output}, "choose another --output");
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

void WarnWithoutJapaneseFont(const Options& options) {
  if (options.quiet || HasJapaneseFont()) return;
  std::cerr << "keltrun2: no font of this system has Japanese letters, which will show as boxes; "
               "install the package fonts-ipafont-gothic\n";
}

}  // namespace keltrun::cli
