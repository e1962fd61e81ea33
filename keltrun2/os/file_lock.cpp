#include "keltrun2/os/file_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

#include "keltrun2/os/pause.h"

namespace keltrun {
namespace {

bool TryLock(int handle) {
  while (flock(handle, LOCK_EX | LOCK_NB) != 0) {
    if (errno != EINTR) return errno != EWOULDBLOCK;
  }
  return true;
}

// O_NONBLOCK: if the name is that of a pipe, opening it must not block.
int OpenToLock(const std::string& name) {
  const int folder = open(name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder >= 0) return folder;
  return open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0600);
}

}  // namespace

FileLock::FileLock(const std::string& name, const Patience& patience) : handle_(OpenToLock(name)) {
  if (handle_ < 0) return;
  for (int tries = 1; !(is_held_ = TryLock(handle_)) && tries < patience.Tries; ++tries) {
    Pause(patience.Pause);
  }
}

FileLock::~FileLock() {
  if (handle_ < 0) return;
  // A child process may still have the file open; closing our handle alone would keep the lock.
  if (is_held_) flock(handle_, LOCK_UN);
  close(handle_);
}

}  // namespace keltrun
