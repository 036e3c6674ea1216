#include "batch/batch_report.h"

#include <cstdio>
#include <utility>

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

#include "failure.h"
#include "messages.h"

namespace nerova_zel {

namespace {

#if defined(_WIN32)
bool output_is_terminal() { return _isatty(_fileno(stdout)) != 0; }
#else
bool output_is_terminal() { return isatty(fileno(stdout)) != 0; }
#endif

std::string frames(std::uint64_t count) { return std::to_string(count) + (count == 1 ? " frame" : " frames"); }

}  // namespace

BatchReport::BatchReport(std::optional<std::uint64_t> total, bool lone_frame, Detail detail)
    : total_(total),
      lone_frame_(lone_frame),
      bar_(!lone_frame),
      detail_(detail),
      lines_(detail == Detail::full && !(bar_.is_shown() && output_is_terminal())) {}

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
  if (failed || !report.note.empty()) {
    bar_.erase();
    std::fflush(stdout);
    std::fprintf(messages(), "nerova-polarize: %s\n", (failed ? report.line : report.note).c_str());
  }
  if (!failed && lines_) {
    std::printf("%s\n", report.line.c_str());
    std::fflush(stdout);
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
    std::printf("%s: %llu done, %llu skipped, %llu failed; %.2f s, %.1f frames/s, %.0f Mpixel/s\n",
                frames(finished_).c_str(), static_cast<unsigned long long>(done_),
                static_cast<unsigned long long>(skipped_), static_cast<unsigned long long>(failed_), seconds(),
                static_cast<double>(done_) / seconds(), static_cast<double>(pixels_) / 1e6 / seconds());
    std::fflush(stdout);
  }
  if (interrupted) {
    throw Failure("interrupted; the same command goes on with the frames that are left.");
  }
  if (failed_ > 0) {
    throw Failure(std::to_string(failed_) + " of " + frames(finished_) + " failed, as said above.");
  }
}

}  // namespace nerova_zel
