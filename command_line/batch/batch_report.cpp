#include "batch/batch_report.h"

#include <cstdio>
#include <utility>

#include "failure.h"
#include "formatted.h"
#include "messages.h"
#include "results.h"
#include "standard_streams.h"

namespace nerova_zel {

namespace {

std::string frames(std::uint64_t count) { return std::to_string(count) + (count == 1 ? " frame" : " frames"); }

}  // namespace

BatchReport::BatchReport(std::optional<std::uint64_t> total, bool lone_frame, Detail detail)
    : total_(total),
      lone_frame_(lone_frame),
      bar_(!lone_frame && verbosity() == Verbosity::usual),
      writes_files_(detail == Detail::full),
      detail_(verbosity() == Verbosity::quiet ? Detail::nothing : detail),
      lines_(detail_ == Detail::full && !(bar_.is_shown() && is_terminal(stdout))) {}

void BatchReport::add_note(const std::string& sentence) { general_notes_.push_back(sentence); }

void BatchReport::add(std::uint64_t index, FrameReport report) {
  const std::lock_guard<std::mutex> lock(mutex_);
  ++finished_;
  done_ += report.result == FrameReport::Result::done ? 1U : 0U;
  skipped_ += report.result == FrameReport::Result::skipped ? 1U : 0U;
  failed_ += report.result == FrameReport::Result::failed ? 1U : 0U;
  pixels_ += report.pixels;
  waiting_.emplace(index, std::move(report));
  for (auto first = waiting_.begin(); first != waiting_.end() && first->first == next_; first = waiting_.begin()) {
    print(first->second);
    waiting_.erase(first);
    ++next_;
  }
  bar_.draw({finished_, done_ + failed_, total_, seconds()});
}

void BatchReport::print(const FrameReport& report) {
  const bool failed = report.result == FrameReport::Result::failed;
  if (failed && lone_frame_) {
    lone_failure_ = report.line;
    return;
  }
  if (failed) {
    bar_.erase();
    print_message("nerova-polarize: " + report.line + "\n");
    return;
  }
  std::vector<std::string> notes = std::exchange(general_notes_, {});
  notes.insert(notes.end(), report.notes.begin(), report.notes.end());
  for (const std::string& sentence : notes) {
    bar_.erase();
    note(sentence);
  }
  if (lines_) {
    print_result(report.line + "\n");
  }
}

double BatchReport::seconds() const {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
}

void BatchReport::finish(bool interrupted) {
  const std::lock_guard<std::mutex> lock(mutex_);
  bar_.erase();
  if (lone_frame_) {
    if (failed_ > 0) {
      throw Failure(lone_failure_);
    }
    return;
  }
  if (finished_ == 0 && !interrupted) {
    throw Failure("standard input is empty; it should hold frames.");
  }
  if (detail_ == Detail::full) {
    print_result(formatted("%s: %llu done, %llu skipped, %llu failed; %.2f s, %.1f frames/s, %.0f Mpixel/s\n",
                           frames(finished_).c_str(), static_cast<unsigned long long>(done_),
                           static_cast<unsigned long long>(skipped_), static_cast<unsigned long long>(failed_),
                           seconds(), static_cast<double>(done_) / seconds(),
                           static_cast<double>(pixels_) / 1e6 / seconds()));
  }
  if (interrupted) {
    throw Failure(std::string("interrupted") +
                  (writes_files_ ? "; the same command with --resume does the frames that are left." : "."));
  }
  if (failed_ > 0) {
    throw Failure(std::to_string(failed_) + " of " + frames(finished_) + " failed, as said above.");
  }
}

}  // namespace nerova_zel
