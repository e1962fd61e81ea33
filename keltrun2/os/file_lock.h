// A lock between processes.
#pragma once

#include <string>

namespace keltrun {

/// Holds the lock of a lock file, or of an existing folder, until it goes out of scope. A file is
/// created when missing and stays: removing it would let two processes hold locks on two files of
/// one name. Threads of one
/// process exclude each other too. Where the file system knows no locks, it is granted.
class [[nodiscard]] FileLock {
 public:
  /// How often, and after what pause in seconds, a lock that another one holds is tried again.
  struct Patience {
    int Tries;
    double Pause;
  };
  static constexpr Patience kAtOnce = {1, 0};

  FileLock(const std::string& name, const Patience& patience);
  ~FileLock();
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

  /// False when another one kept the lock, or the lock file could not be opened.
  bool IsHeld() const { return is_held_; }

 private:
  int handle_;
  bool is_held_ = false;
};

}  // namespace keltrun
