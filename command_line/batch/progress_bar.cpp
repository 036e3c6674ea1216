#include "batch/progress_bar.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "messages.h"
#include "standard_streams.h"

namespace nerova_zel {

namespace {

constexpr std::chrono::milliseconds interval(100);
constexpr std::size_t usual_width = 80;
constexpr std::size_t usual_text = 48;  // left free behind the bar, whose length thus stays the same
constexpr std::size_t brackets = 3;
constexpr std::size_t longest_bar = 40;

/** "1:02:03" or "2:03". */
std::string clock(double seconds) {
  const auto whole = static_cast<long long>(std::ceil(seconds));
  char text[40] = "";
  if (whole >= 3600) {
    std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", whole / 3600, whole / 60 % 60, whole % 60);
  } else {
    std::snprintf(text, sizeof text, "%lld:%02lld", whole / 60, whole % 60);
  }
  return text;
}

}  // namespace

std::string progress_line(const Progress& progress, std::size_t width) {
  std::string text = std::to_string(progress.finished);
  text += progress.total ? " of " + std::to_string(*progress.total) + " frames" : " frames";
  if (progress.worked_on > 0 && progress.seconds > 0.0) {
    const double rate = static_cast<double>(progress.worked_on) / progress.seconds;
    char number[40] = "";
    std::snprintf(number, sizeof number, rate < 10.0 ? ", %.2f frames/s" : ", %.1f frames/s", rate);
    text += number;
    if (progress.total) {
      text += ", " + clock(static_cast<double>(*progress.total - progress.finished) / rate) + " left";
    }
  }
  if (progress.total && *progress.total > 0 && width > usual_text + brackets) {
    const std::size_t length = std::min(longest_bar, width - usual_text - brackets);
    const auto full = static_cast<std::size_t>(static_cast<double>(length) * static_cast<double>(progress.finished) /
                                               static_cast<double>(*progress.total));
    text = "[" + std::string(full, '#') + std::string(length - full, '.') + "] " + text;
  }
  return text.substr(0, width);
}

ProgressBar::ProgressBar(bool wanted) : shown_(wanted && is_terminal(messages())) {}

ProgressBar::~ProgressBar() { erase(); }

void ProgressBar::draw(const Progress& progress) {
  const auto now = std::chrono::steady_clock::now();
  if (!shown_ || (drawn_ && now < next_)) {
    return;
  }
  // The last column stays free: some terminals would begin a new line.
  const std::size_t width = terminal_width(messages());
  print_message("\r" + progress_line(progress, (width > 0 ? width : usual_width) - 1) + "\x1b[K");
  drawn_ = true;
  next_ = now + interval;
}

void ProgressBar::erase() {
  if (drawn_) {
    print_message("\r\x1b[K");
    drawn_ = false;
  }
}

}  // namespace nerova_zel
