#include "keltrun2/site/ordered_jobs.h"

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "keltrun2/base/automation_error.h"
#include "keltrun2/model/process_state.h"

namespace keltrun {
namespace {

// Threads that take the jobs in order. Its end lets them finish the jobs that they are at.
class Team {
 public:
  Team(std::size_t count, const RunJob& run) : run_(run), jobs_(count) {}

  ~Team() {
    {
      const std::lock_guard lock(mutex_);
      stopped_ = true;
    }
    for (std::thread& thread : threads_) thread.join();
  }
  Team(const Team&) = delete;
  Team& operator=(const Team&) = delete;

  /// Starts as many threads as the system gives; false if it gives none.
  bool Start(std::size_t threads) {
    const std::function<void()> share_state = StateSharing();
    try {
      for (std::size_t worker = 0; worker < threads; ++worker) {
        threads_.emplace_back([this, share_state, worker] {
          share_state();
          Work(worker);
        });
      }
    } catch (const std::system_error&) {
      // The others do all of the work.
    }
    return !threads_.empty();
  }

  /// Waits for the end of a job, and throws what it threw.
  void WaitFor(std::size_t job) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return jobs_[job].is_done; });
    if (jobs_[job].error) std::rethrow_exception(jobs_[job].error);
  }

 private:
  struct Job {
    bool is_done = false;
    std::exception_ptr error;
  };

  void Work(std::size_t worker) {
    std::unique_lock lock(mutex_);
    while (!stopped_ && next_ < jobs_.size()) {
      Job& job = jobs_[next_];
      const std::size_t number = next_++;
      lock.unlock();
      std::exception_ptr error;
      try {
        run_(number, worker);
      } catch (...) {
        error = std::current_exception();
      }
      lock.lock();
      job.error = std::move(error);
      job.is_done = true;
      changed_.notify_one();
    }
  }

  const RunJob& run_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<Job> jobs_;
  std::size_t next_ = 0;
  bool stopped_ = false;
  std::vector<std::thread> threads_;
};

}  // namespace

std::size_t ThreadCount(std::int32_t jobs, std::size_t count, std::string_view option) {
  if (jobs < 0) {
    throw AutomationError(KR_ERROR_INVALID_CALL, std::string(option) + ": " + std::to_string(jobs) +
                                                     " is not a number of threads (from 0)");
  }
  const std::size_t wanted =
      jobs == 0 ? std::thread::hardware_concurrency() : static_cast<std::size_t>(jobs);
  return std::clamp<std::size_t>(wanted, 1, std::max<std::size_t>(count, 1));
}

void RunInOrder(std::size_t count, std::size_t threads, const RunJob& run,
                const std::function<void(std::size_t job)>& finish) {
  Team team(count, run);
  const bool has_threads = threads > 1 && team.Start(std::min(threads, count));
  for (std::size_t job = 0; job < count; ++job) {
    if (has_threads) {
      team.WaitFor(job);
    } else {
      run(job, 0);
    }
    finish(job);
  }
}

}  // namespace keltrun
