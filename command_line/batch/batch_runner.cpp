#include "batch/batch_runner.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>

#include "batch/interruption.h"
#include "picture.h"

namespace nerova_zel {

namespace {

/** What the threads share. */
class Work {
 public:
  Work(FrameSequence& frames, const MakeJob& make_job, BatchReport& report)
      : frames_(frames), make_job_(make_job), report_(report) {}

  /** Runs frames until none is left. */
  void run() {
    try {
      const std::unique_ptr<FrameJob> job = make_job_();
      FrameTicket ticket;
      while (!is_over_ && !Interruption::is_requested() && frames_.next(ticket, job->bytes())) {
        report_.add(ticket.index, job->run(ticket));
      }
    } catch (...) {
      const std::lock_guard<std::mutex> lock(mutex_);
      failure_ = std::current_exception();
      is_over_ = true;
    }
  }

  void rethrow_failure() const {
    if (failure_) {
      std::rethrow_exception(failure_);
    }
  }

 private:
  FrameSequence& frames_;
  const MakeJob& make_job_;
  BatchReport& report_;
  std::mutex mutex_;
  std::exception_ptr failure_;
  /** What went wrong concerns all frames. */
  std::atomic<bool> is_over_{false};
};

}  // namespace

void run_batch(FrameSequence& frames, int jobs, const MakeJob& make_job, BatchReport& report) {
  const auto wanted = static_cast<std::uint64_t>(jobs);
  const auto threads = static_cast<std::size_t>(std::min(wanted, frames.total().value_or(wanted)));
  if (threads > 1) {
    draw_in_one_thread();  // every core has a frame of its own
  }
  Work work(frames, make_job, report);
  std::vector<std::thread> others;
  others.reserve(threads);
  try {
    while (others.size() + 1 < threads) {
      others.emplace_back([&work] { work.run(); });
    }
  } catch (const std::exception&) {
    // The system has no thread more to give: those that are there do the work.
  }
  work.run();
  for (std::thread& other : others) {
    other.join();
  }
  work.rethrow_failure();
}

}  // namespace nerova_zel
