// Computes frames for another process, so that one benchmark run can compare builds of different word sizes. Reads one
// request a line from standard input and answers each with a line:
//   routes                 the names of the routes that run here
//   time CASE              the nanoseconds of one call, of the fastest batch of several
//   cycles CASE            the processor's cycles of one call
//   save DIRECTORY CASE    "saved", once input and images lie in the directory
// or, when a request fails, "error" and a sentence.

#include <algorithm>
#include <chrono>
#include <exception>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "frame_case.h"
#include "prepared_frame.h"
#include "routes.h"

namespace {

using nerova_zel::benchmark::FrameCase;
using nerova_zel::benchmark::PreparedFrame;
using nerova_zel::benchmark::Route;

using Clock = std::chrono::steady_clock;

// Fresh memory and a processor at rest are slower for some calls; a camera's frames meet neither.
constexpr std::chrono::milliseconds warm_up_time(40);

// What shares the machine slows it down for tenths of a second: the fastest of some short batches is met more often.
constexpr std::chrono::milliseconds measuring_time(60);
constexpr int fewest_batches = 3;

class Worker {
 public:
  std::string answer(const std::string& request) {
    std::istringstream words(request);
    std::string verb;
    words >> verb;
    if (verb == "routes") {
      return nerova_zel::benchmark::runnable_routes();
    }
    std::string directory;
    if (verb == "save") {
      words >> directory;
    } else if (verb != "time" && verb != "cycles") {
      throw std::invalid_argument("no such request: " + request);
    }
    std::string line;
    std::getline(words >> std::ws, line);
    return verb == "save" ? save(line, directory) : verb == "time" ? time(line) : cycles(line);
  }

 private:
  using Nanoseconds = std::chrono::duration<double, std::nano>;

  static Nanoseconds time_batch(const Route& route, const FrameCase& frame_case, const PreparedFrame& frame) {
    const auto start = Clock::now();
    for (unsigned i = 0; i < frame_case.repetitions; ++i) {
      route(frame.parameters(), frame.matrices());
    }
    return Clock::now() - start;
  }

  static double nanoseconds_per_call(const Route& route, const FrameCase& frame_case, const PreparedFrame& frame) {
    const auto end = Clock::now() + measuring_time;
    Nanoseconds fastest = time_batch(route, frame_case, frame);
    for (int batches = 1; batches < fewest_batches || Clock::now() < end; ++batches) {
      fastest = std::min(fastest, time_batch(route, frame_case, frame));
    }
    return fastest.count() / frame_case.repetitions;
  }

  const Route& route_of(const FrameCase& frame_case) {
    Route& route = routes_[frame_case.route];
    if (!route) {
      route = nerova_zel::benchmark::find_route(frame_case.route);
    }
    return route;
  }

  std::string time(const std::string& line) {
    const FrameCase frame_case = nerova_zel::benchmark::from_line(line);
    const Route& route = route_of(frame_case);
    if (line != prepared_line_) {
      frame_.reset();
      frame_ = std::make_unique<PreparedFrame>(frame_case);
      const auto end_of_warm_up = Clock::now() + warm_up_time;
      do {
        route(frame_->parameters(), frame_->matrices());
      } while (Clock::now() < end_of_warm_up);
      prepared_line_ = line;
    }
    return std::to_string(nanoseconds_per_call(route, frame_case, *frame_));
  }

  /** Of the calls during which the clock stood still; the lower decile, for others use the processor too. */
  std::string cycles(const std::string& line) {
    const FrameCase frame_case = nerova_zel::benchmark::from_line(line);
    const Route& route = route_of(frame_case);
    const Route thousand_cycles = nerova_zel::benchmark::find_route("cycles");
    const PreparedFrame frame(frame_case);
    const auto duration = [&](const Route& called, int calls) {
      const auto start = Clock::now();
      for (int i = 0; i < calls; ++i) {
        called(frame.parameters(), frame.matrices());
      }
      return Nanoseconds(Clock::now() - start).count() / calls;
    };
    std::vector<double> found;
    const auto end = Clock::now() + 10 * measuring_time;
    do {
      const double before = duration(thousand_cycles, 4);
      const double call = duration(route, 4);
      const double after = duration(thousand_cycles, 4);
      if (std::max(before, after) < 1.01 * std::min(before, after)) {
        found.push_back(1000 * call / std::min(before, after));
      }
    } while (found.empty() || Clock::now() < end);
    const auto decile = found.begin() + static_cast<std::ptrdiff_t>(found.size() / 10);
    std::nth_element(found.begin(), decile, found.end());
    return std::to_string(*decile);
  }

  std::string save(const std::string& line, const std::string& directory) {
    const FrameCase frame_case = nerova_zel::benchmark::from_line(line);
    const PreparedFrame frame(frame_case);
    route_of(frame_case)(frame.parameters(), frame.matrices());
    frame.save(directory);
    return "saved";
  }

  std::map<std::string, Route> routes_;
  std::string prepared_line_;
  std::unique_ptr<PreparedFrame> frame_;
};

}  // namespace

int main() {
  Worker worker;
  for (std::string request; std::getline(std::cin, request);) {
    try {
      std::cout << worker.answer(request) << std::endl;
    } catch (const std::exception& error) {
      std::cout << "error " << error.what() << std::endl;
    }
  }
  return 0;
}
