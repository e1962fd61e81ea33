// A lock between processes.
#pragma once

#include <string>

namespace keltrun {

/// Holds the lock on a lock file, or on an existing folder, until it goes out of scope. The file is
/// created if it is missing and never removed: removing it would let two processes hold locks on
/// two files with the same name. Threads of the same process exclude each other too. If the file
/// system does not support locks, the lock is granted.
class [[nodiscard]] FileLock {
 public:
  /// How many times a lock is tried, and the pause in seconds before it is tried again.
  struct Patience {
    int Tries;
    double Pause;
  };
  static constexpr Patience kAtOnce = {1, 0};

  FileLock(const std::string& name, const Patience& patience);
  ~FileLock();
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

  /// False if another holder kept the lock or the lock file could not be opened.
  bool IsHeld() const { return is_held_; }

 private:
  int handle_;
  bool is_held_ = false;
};

}  // namespace keltrun
