// Work on several threads whose results are taken in order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>

namespace keltrun {

/// How many threads to work with: `jobs`, or one for each core of the computer if that is 0, but at
/// most `count`. Raises invalid procedure call (5) for a negative number, with the option's name.
std::size_t ThreadCount(std::int32_t jobs, std::size_t count, std::string_view option);

/// Takes a job, counted from 0. Two jobs that run at the same time have different workers, which
/// are counted from 0 as well.
using RunJob = std::function<void(std::size_t job, std::size_t worker)>;

/// Runs the jobs 0 to `count` - 1 on that many threads and calls `finish` for each of them, in this
/// order and on the calling thread. With one thread nothing leaves the calling thread. The others
/// work on the event of the calling thread, and have ended when this returns. What a job throws is
/// thrown here when it is its turn; then, or when `finish` throws, no further job is begun.
void RunInOrder(std::size_t count, std::size_t threads, const RunJob& run,
                const std::function<void(std::size_t job)>& finish);

}  // namespace keltrun
