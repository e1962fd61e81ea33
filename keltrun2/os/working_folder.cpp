#include "keltrun2/os/working_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#include "keltrun2/os/files.h"

namespace keltrun {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kExtractionPrefix = "extract-";

// An open folder. A lock on it shows other processes that the extraction folder is in use; the
// system releases the lock when the process ends.
class OpenFolder {
 public:
  OpenFolder() = default;
  // Stays closed if `path` is a link or not a folder.
  explicit OpenFolder(const std::string& path)
      : handle_(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)) {}
  OpenFolder(OpenFolder&& other) noexcept
      : handle_(std::exchange(other.handle_, -1)), owner_(other.owner_) {}
  OpenFolder& operator=(OpenFolder&& other) noexcept {
    std::swap(handle_, other.handle_);
    std::swap(owner_, other.owner_);
    return *this;
  }
  ~OpenFolder() {
    if (handle_ < 0) return;
    // A forked child inherits the lock. It must not release the parent's lock; and the parent must
    // release it explicitly, since a child may still have the folder open.
    if (owner_ == getpid()) flock(handle_, LOCK_UN);
    close(handle_);
  }

  bool IsOpen() const { return handle_ >= 0; }
  int get() const { return handle_; }

  // False if another holder has the lock. If the file system does not support locks, it is granted.
  bool Lock() const {
    return !IsOpen() || flock(handle_, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
  }

  bool IsRemoved() const {
    struct stat info;
    return fstat(handle_, &info) != 0 || info.st_nlink == 0;
  }

 private:
  int handle_ = -1;
  pid_t owner_ = getpid();
};

// A file or folder of ours in the working folder. It is removed when the next one takes its place
// and when the thread ends; for the main thread that is the end of the process. A forked child
// leaves it alone.
class Kept {
 public:
  Kept() = default;
  explicit Kept(std::string path, OpenFolder folder = {})
      : path_(std::move(path)), folder_(std::move(folder)) {}
  Kept(const Kept&) = delete;
  Kept& operator=(Kept&& other) noexcept {
    std::swap(path_, other.path_);
    std::swap(folder_, other.folder_);
    std::swap(owner_, other.owner_);
    return *this;
  }
  ~Kept() {
    std::error_code ignored;
    if (!path_.empty() && owner_ == getpid()) fs::remove_all(path_, ignored);
  }

 private:
  std::string path_;
  OpenFolder folder_;  // open and locked if this is a folder
  pid_t owner_ = getpid();
};

// The value of a variable, with a trailing separator, if it is the absolute path of a folder.
std::optional<std::string> FolderVariable(const char* variable) {
  const char* value = std::getenv(variable);
  if (value == nullptr || *value != '/' || !FolderExists(value)) return std::nullopt;
  return WithTrailingSeparator(value);
}

std::string WorkingFolderName() {
  if (const auto runtime = FolderVariable("XDG_RUNTIME_DIR")) return *runtime + "Keltrun2";
  return FolderVariable("TMPDIR").value_or("/tmp/") + "Keltrun2-" + std::to_string(geteuid());
}

// Why the folder must not be used, or "" if it may be used.
std::string Objection(const std::string& name) {
  struct stat info;
  const OpenFolder folder(name);
  if (!folder.IsOpen()) {
    const int code = errno;
    if (lstat(name.c_str(), &info) == 0) {
      if (S_ISLNK(info.st_mode)) return "it is a link";
      if (!S_ISDIR(info.st_mode)) return "it is not a folder";
    }
    return std::strerror(code);
  }
  if (fstat(folder.get(), &info) != 0) return std::strerror(errno);
  if (info.st_uid != geteuid()) return "it belongs to another user";
  if ((info.st_mode & 07777) != 0700 && fchmod(folder.get(), 0700) != 0)
    return std::strerror(errno);
  return "";
}

bool IsLapFile(const fs::directory_entry& entry) {
  const std::string extension = FileExtension(entry.path().string());
  return (extension == "lxm" || extension == "lap" || extension == "xml") &&
         fs::is_regular_file(entry.symlink_status());
}

// Removes the lap files of earlier archives, and the folders of earlier extractions that are not
// in use by any thread or process.
void RemoveLeftovers(const std::string& working) {
  std::error_code code;
  for (fs::directory_iterator entry(working, code), end; !code && entry != end;
       entry.increment(code)) {
    const std::string path = entry->path().string();
    std::error_code ignored;
    if (FileNamePart(path).starts_with(kExtractionPrefix)) {
      const OpenFolder folder(path);
      if (folder.Lock()) fs::remove_all(path, ignored);  // removes a link, not its target
    } else if (IsLapFile(*entry)) {
      fs::remove(path, ignored);
    }
  }
}

}  // namespace

std::optional<std::string> WorkingFolder(std::string& error) {
  const std::string name = WorkingFolderName();
  std::string reason;
  if (mkdir(name.c_str(), 0700) != 0 && errno != EEXIST)
    reason = std::strerror(errno);
  else
    reason = Objection(name);
  if (reason.empty()) return name;
  error = "cannot use the working folder " + name + ": " + reason;
  return std::nullopt;
}

std::optional<std::string> NewExtractionFolder(std::string& error) {
  static thread_local Kept in_use;
  const std::optional<std::string> working = WorkingFolder(error);
  if (!working) return std::nullopt;
  in_use = Kept();
  RemoveLeftovers(*working);
  // Until the new folder is locked, another process may think it is unused and remove it.
  constexpr int kTries = 10;
  for (int i = 0; i < kTries; ++i) {
    std::string name = *working + "/" + std::string(kExtractionPrefix) + "XXXXXX";
    if (mkdtemp(name.data()) == nullptr) break;
    OpenFolder folder(name);
    if (!folder.IsOpen() || !folder.Lock() || folder.IsRemoved()) continue;
    in_use = Kept(name, std::move(folder));
    return name;
  }
  error = "cannot create a folder in " + *working + ": " + std::strerror(errno);
  return std::nullopt;
}

std::optional<std::string> NewWorkingFile(const std::string& name, std::string& error) {
  static thread_local Kept in_use;
  const std::optional<std::string> working = WorkingFolder(error);
  if (!working) return std::nullopt;
  RemoveLeftovers(*working);
  const std::string path = *working + "/" + name;
  in_use = Kept(path);
  return path;
}

}  // namespace keltrun
