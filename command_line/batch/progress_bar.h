#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace nerova_zel {

/** How far a batch is. */
struct Progress {
  std::uint64_t finished = 0;
  /** Of these, the ones that took work, which the rate goes by. */
  std::uint64_t worked_on = 0;
  std::optional<std::uint64_t> total;
  double seconds = 0.0;
};

/** "[####......] 40 of 100 frames, 12.5 frames/s, 0:05 left", at most `width` characters. */
std::string progress_line(const Progress& progress, std::size_t width);

/** One line at the bottom of a terminal, which messages() leads to. Nothing is ever drawn if there is no terminal. */
class ProgressBar {
 public:
  explicit ProgressBar(bool wanted);
  ~ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  bool is_shown() const { return shown_; }
  /** Draws, unless it was drawn a moment ago. */
  void draw(const Progress& progress);
  /** Makes room for a line of text; to be called before one is printed. */
  void erase();

 private:
  const bool shown_;
  bool drawn_ = false;
  std::chrono::steady_clock::time_point next_;
};

}  // namespace nerova_zel
