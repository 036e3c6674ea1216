#include "frame_case.h"

#include <sstream>
#include <stdexcept>

namespace nerova_zel::benchmark {

std::string to_line(const FrameCase& c) {
  std::ostringstream line;
  line << c.route << ' ' << c.width << ' ' << c.height << ' ' << c.phase << ' ' << c.outputs << ' ' << c.equal_maximum
       << ' ' << c.custom_matrices << ' ' << c.repetitions;
  return line.str();
}

FrameCase from_line(const std::string& line) {
  FrameCase c;
  std::istringstream words(line);
  words >> c.route >> c.width >> c.height >> c.phase >> c.outputs >> c.equal_maximum >> c.custom_matrices >>
      c.repetitions;
  if (!words) {
    throw std::invalid_argument("not a benchmark case: " + line);
  }
  return c;
}

}  // namespace nerova_zel::benchmark
