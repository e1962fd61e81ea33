#include "keltrun2/os/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

namespace keltrun {
namespace {

// Closes the descriptor when it goes out of scope, unless it has been closed already.
class Descriptor {
 public:
  explicit Descriptor(int handle) : handle_(handle) {}
  ~Descriptor() {
    if (handle_ >= 0) close(handle_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int get() const { return handle_; }
  bool Close() { return close(std::exchange(handle_, -1)) == 0; }

 private:
  int handle_;
};

std::string SystemError(std::string_view action, const std::string& name) {
  return std::string(action) + " " + name + ": " + std::strerror(errno);
}

// Refuses names with a NUL character: the system would cut such a name there and use another file.
bool HasNul(const std::string& name, std::string& error) {
  if (name.find('\0') == std::string::npos) return false;
  error = "a file name must not contain a NUL character";
  return true;
}

DiskSync& SyncReplacement() {
  static DiskSync sync;
  return sync;
}

#ifdef __EMSCRIPTEN__
// In a browser files are in memory.
int syncfs(int /*handle*/) { return 0; }
#endif

bool WaitForDisk(int handle, bool whole_file_system) {
  if (SyncReplacement()) return SyncReplacement()(handle, whole_file_system);
  while ((whole_file_system ? syncfs(handle) : fsync(handle)) != 0) {
    // Some file systems do not support it or have nothing to wait for.
    if (errno == EINVAL || errno == ENOTSUP || errno == ENOSYS || errno == EROFS) return true;
    if (errno != EINTR) return false;
  }
  return true;
}

// Waits until the names in a folder are on the disk. A folder that may be written but not opened is
// passed over.
bool SyncFolder(const std::filesystem::path& folder) {
  Descriptor handle(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  return handle.get() < 0 || WaitForDisk(handle.get(), false);
}

bool WriteAll(int handle, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(handle, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

bool WriteDirectly(const std::string& name, std::string_view bytes, std::string& error) {
  Descriptor file(open(name.c_str(), O_WRONLY | O_CLOEXEC));
  if (file.get() < 0 || !WriteAll(file.get(), bytes) || !file.Close()) {
    error = SystemError("cannot write", name);
    return false;
  }
  return true;
}

// The file that the rename has to replace: the target, if `name` is a link.
std::string LinkTarget(const std::string& name) {
  std::error_code code;
  if (!std::filesystem::is_symlink(name, code)) return name;
  const std::filesystem::path target = std::filesystem::canonical(name, code);
  if (!code) return target.string();
  // The link points to a file that does not exist yet.
  const std::filesystem::path path(name);
  const std::filesystem::path link = std::filesystem::read_symlink(path, code);
  return code ? name : (path.parent_path() / link).string();
}

// A new file in a folder, removed again unless it is given its final name. The name is random and
// opened exclusively, not made from the process ID: two processes with the same ID, for example in
// two containers, may share the folder.
class TemporaryFile {
 public:
  // The permissions are those of `mode`, less the bits that the process's umask removes.
  TemporaryFile(const std::filesystem::path& folder, mode_t mode) {
    constexpr int kTries = 100;
    for (int i = 0; i < kTries && handle_ < 0; ++i) {
      std::uint64_t number = 0;
      if (getentropy(&number, sizeof number) != 0) return;
      path_ = (folder / (".keltrun2-" + std::to_string(number) + ".tmp")).string();
      handle_ = open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode & 0777);
      if (handle_ < 0 && errno != EEXIST) return;
    }
    exists_ = IsOpen();
  }
  ~TemporaryFile() {
    if (IsOpen()) close(handle_);
    if (exists_) unlink(path_.c_str());
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  // These members return false and set errno on failure.
  bool IsOpen() const { return handle_ >= 0; }
  bool SetMode(mode_t mode) const { return fchmod(handle_, mode) == 0; }
  bool Write(std::string_view bytes) const { return WriteAll(handle_, bytes); }
  bool WaitForDisk() const { return keltrun::WaitForDisk(handle_, false); }
  // Some systems report only on closing that the bytes could not be stored.
  bool MoveTo(const std::string& name) {
    if (close(std::exchange(handle_, -1)) != 0) return false;
    exists_ = rename(path_.c_str(), name.c_str()) != 0;
    return !exists_;
  }

 private:
  std::string path_;
  int handle_ = -1;
  bool exists_ = false;  // under its temporary name
};

std::filesystem::path FolderOf(const std::string& name) {
  const std::filesystem::path folder = std::filesystem::path(name).parent_path();
  return folder.empty() ? "." : folder;
}

}  // namespace

std::optional<std::string> ReadFile(const std::string& name, std::string& error,
                                    std::size_t largest) {
  if (HasNul(name, error)) return std::nullopt;
  Descriptor file(open(name.c_str(), O_RDONLY | O_CLOEXEC));
  struct stat info;
  if (file.get() < 0 || fstat(file.get(), &info) != 0) {
    error = SystemError("cannot open", name);
    return std::nullopt;
  }
  if (S_ISDIR(info.st_mode)) {
    error = "cannot read " + name + ": it is a folder";
    return std::nullopt;
  }
  // A character device may never end.
  if (S_ISCHR(info.st_mode)) largest = std::min(largest, kLargestFileUnasked);
  const auto size = static_cast<std::size_t>(std::max<off_t>(info.st_size, 0));
  std::string bytes;
  std::size_t filled = 0;
  std::size_t room = std::min(size, largest) + 1;  // the extra byte detects the end of the file
  while (true) {
    bytes.resize(filled + room);
    const ssize_t got = read(file.get(), bytes.data() + filled, room);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) {
      error = SystemError("cannot read", name);
      return std::nullopt;
    }
    filled += static_cast<std::size_t>(got);
    if (got == 0) break;
    if (filled > largest || size > largest) {
      error =
          "cannot read " + name + ": it is larger than " + std::to_string(largest >> 20) + " MiB";
      return std::nullopt;
    }
    room -= static_cast<std::size_t>(got);
    if (room == 0) room = std::max<std::size_t>(4096, filled / 8);
  }
  bytes.resize(filled);
  return bytes;
}

bool WriteFile(const std::string& name, std::string_view bytes, std::string& error, Sync sync) {
  if (HasNul(name, error)) return false;
  struct stat info;
  const bool exists = stat(name.c_str(), &info) == 0;
  if (exists && S_ISDIR(info.st_mode)) {
    error = "cannot write " + name + ": it is a folder";
    return false;
  }
  if (exists && !S_ISREG(info.st_mode)) return WriteDirectly(name, bytes, error);

  const std::string target = LinkTarget(name);
  const std::filesystem::path folder = FolderOf(target);
  const mode_t mode = exists ? info.st_mode & 07777 : 0666;
  TemporaryFile file(folder, mode);
  const bool waits = sync == Sync::kNow;
  if (file.IsOpen() && (!exists || file.SetMode(mode)) && file.Write(bytes) &&
      (!waits || file.WaitForDisk()) && file.MoveTo(target) && (!waits || SyncFolder(folder))) {
    return true;
  }
  error = SystemError("cannot write", name);
  return false;
}

bool SyncFileSystem(const std::string& folder, std::string& error) {
  Descriptor handle(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (handle.get() < 0 || WaitForDisk(handle.get(), true)) return true;
  error = SystemError("cannot make sure that the disk holds what was written to", folder);
  return false;
}

void SetDiskSync(DiskSync sync) { SyncReplacement() = std::move(sync); }

bool FileExists(const std::string& name) {
  std::error_code code;
  return std::filesystem::is_regular_file(name, code);
}

bool FolderExists(const std::string& name) {
  std::error_code code;
  return std::filesystem::is_directory(name, code);
}

bool CreateFolder(const std::string& name, std::string& error) {
  std::error_code code;
  std::filesystem::create_directories(name, code);
  if (FolderExists(name)) return true;
  error = "cannot create the folder " + name + ": " +
          (code ? code.message() : std::string("a file with that name already exists"));
  return false;
}

bool CanMakeFiles(const std::string& folder, std::string& error) {
  if (HasNul(folder, error)) return false;
  if (TemporaryFile(folder, 0600).IsOpen()) return true;
  error = SystemError("cannot create files in the folder", folder);
  return false;
}

std::string WithTrailingSeparator(std::string_view folder) {
  std::string out(folder.empty() ? "." : folder);
  std::replace(out.begin(), out.end(), '\\', '/');
  if (out.back() != '/') out += '/';
  return out;
}

std::string_view FileNamePart(std::string_view name) {
  const std::size_t separator = name.find_last_of("/\\");
  return separator == std::string_view::npos ? name : name.substr(separator + 1);
}

std::string FileExtension(std::string_view name) {
  const std::string_view part = FileNamePart(name);
  const std::size_t dot = part.rfind('.');
  if (dot == std::string_view::npos) return "";
  std::string extension(part.substr(dot + 1));
  for (char& c : extension) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return extension;
}

}  // namespace keltrun
