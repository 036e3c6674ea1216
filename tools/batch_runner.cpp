#include "batch_runner.h"

#include <algorithm>
#include <exception>
#include <mutex>
#include <opencv2/core.hpp>
#include <thread>

#include "interruption.h"

namespace nerova_zel {

namespace {

/** What the threads share. */
class Work {
 public:
  Work(FrameSequence& frames, const TransformRequest& request, const Library& library, BatchReport& report)
      : frames_(frames), request_(request), library_(library), report_(report) {}

  /** Runs frames until none is left. */
  void run() {
    try {
      FrameJob job(request_, library_);
      FrameTicket ticket;
      while (!Interruption::is_requested() && frames_.next(ticket, job.bytes())) {
        report_.add(ticket.index, job.run(ticket));
      }
    } catch (...) {
      const std::lock_guard<std::mutex> lock(mutex_);
      failure_ = std::current_exception();
    }
  }

  void rethrow_failure() const {
    if (failure_) {
      std::rethrow_exception(failure_);
    }
  }

 private:
  FrameSequence& frames_;
  const TransformRequest& request_;
  const Library& library_;
  BatchReport& report_;
  std::mutex mutex_;
  std::exception_ptr failure_;
};

}  // namespace

void run_batch(FrameSequence& frames, const TransformRequest& request, const Library& library, BatchReport& report) {
  const auto wanted = static_cast<std::uint64_t>(request.jobs);
  const std::uint64_t jobs = std::min(wanted, frames.total().value_or(wanted));
  if (jobs > 1) {
    cv::setNumThreads(1);  // every core has a frame of its own
  }
  Work work(frames, request, library, report);
  std::vector<std::thread> others;
  others.reserve(jobs);
  try {
    while (others.size() + 1 < jobs) {
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
