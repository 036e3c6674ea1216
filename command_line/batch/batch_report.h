#pragma once

#include <chrono>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "batch/frame_job.h"
#include "batch/progress_bar.h"

namespace nerova_zel {

/**
 * Tells the user about the frames of a batch in their order, whatever the order in which they end: a line each, or on a
 * terminal a progress bar and what goes wrong. Thread-safe.
 */
class BatchReport {
 public:
  /** What goes to standard output; what goes wrong, and the bar, go to the standard error stream. */
  enum class Detail {
    full,     ///< a line for each frame, and a summary
    nothing,  ///< for what is to be read by programs
  };

  /** A lone frame has no bar, no summary, and its failure is for the caller to tell. */
  BatchReport(std::optional<std::uint64_t> total, bool lone_frame, Detail detail);

  /** Something to know about all frames, which is said with the first of them. Before frames are added. */
  void add_note(const std::string& sentence);

  /** Throws Failure when standard output cannot be written. */
  void add(std::uint64_t index, FrameReport report);

  /** To be called when all is over: prints the summary; throws Failure if not all frames are done. */
  void finish(bool interrupted);

  std::uint64_t done() const { return done_; }
  std::uint64_t failed() const { return failed_; }

 private:
  void print(const FrameReport& report);
  double seconds() const;

  const std::optional<std::uint64_t> total_;
  const bool lone_frame_;
  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  std::mutex mutex_;
  ProgressBar bar_;
  const bool writes_files_;
  const Detail detail_;
  /** Not where they would get between the bar. */
  const bool lines_;
  /** Ended before a frame that comes earlier. */
  std::map<std::uint64_t, FrameReport> waiting_;
  std::uint64_t next_ = 0;
  std::uint64_t finished_ = 0;
  std::uint64_t done_ = 0;
  std::uint64_t skipped_ = 0;
  std::uint64_t failed_ = 0;
  std::uint64_t pixels_ = 0;
  std::string lone_failure_;
  std::vector<std::string> general_notes_;
};

}  // namespace nerova_zel
