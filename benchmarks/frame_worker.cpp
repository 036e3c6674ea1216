// Times frames for another process, so that one benchmark run can compare builds of different word sizes. Reads one
// case a line from standard input and answers each with the nanoseconds of one call, or with "error" and a sentence.

#include <chrono>
#include <exception>
#include <iostream>
#include <string>

#include "frame_case.h"
#include "routes.h"

namespace {

using nerova_zel::benchmark::FrameCase;
using nerova_zel::benchmark::PreparedFrame;

double nanoseconds_per_call(const FrameCase& frame_case, const PreparedFrame& frame) {
  const auto route = nerova_zel::benchmark::find_route(frame_case.route);
  const auto start = std::chrono::steady_clock::now();
  for (unsigned i = 0; i < frame_case.repetitions; ++i) {
    route(frame.parameters(), frame.matrices());
  }
  const std::chrono::duration<double, std::nano> elapsed = std::chrono::steady_clock::now() - start;
  return elapsed.count() / frame_case.repetitions;
}

}  // namespace

int main() {
  std::string line;
  std::string prepared_line;
  std::unique_ptr<PreparedFrame> frame;
  while (std::getline(std::cin, line)) {
    try {
      const FrameCase frame_case = nerova_zel::benchmark::from_line(line);
      if (line != prepared_line) {
        frame = std::make_unique<PreparedFrame>(frame_case);
        nanoseconds_per_call(frame_case, *frame);
        prepared_line = line;
      }
      std::cout << nanoseconds_per_call(frame_case, *frame) << std::endl;
    } catch (const std::exception& error) {
      std::cout << "error " << error.what() << std::endl;
    }
  }
  return 0;
}
