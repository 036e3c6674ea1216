// Compares the library with the reference model over many frames, in memory that faults outside the buffers.
//
//   campaign --library PATH --route sse2|sse41|avx2|avx512 [--stand-in yes] [--cases N] [--large N] [--seed N]
//            [--only N]
//
// --cases is the number of random frames besides the systematic ones, --large that of the large ones; --only repeats
// the frame of one number, given the same other options. The route is what this processor must take, by itself or by a
// stand-in for the AVX-512 plugin; where it does not, nothing runs and the exit code says so.

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>
#include <utility>

#include "campaign/case_runner.h"
#include "campaign/route_rules.h"

namespace nerova_zel::test {
namespace {

using Placement = GuardedBuffer::Placement;

struct Options {
  std::string library;
  CpuRoute route = CpuRoute::Sse2;
  std::string route_name;
  bool stand_in = false;
  int random_frames = 40000;
  int large_frames = 4;
  std::uint64_t seed = 1;
  int only = -1;
};

Options parse(int argc, char** argv) {
  Options options;
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string name = argv[i];
    const std::string value = argv[i + 1];
    if (name == "--library") {
      options.library = value;
    } else if (name == "--route") {
      options.route_name = value;
    } else if (name == "--stand-in") {
      options.stand_in = value == "yes";
    } else if (name == "--cases") {
      options.random_frames = std::stoi(value);
    } else if (name == "--large") {
      options.large_frames = std::stoi(value);
    } else if (name == "--seed") {
      options.seed = std::stoull(value);
    } else if (name == "--only") {
      options.only = std::stoi(value);
    } else {
      throw std::invalid_argument("unknown option " + name);
    }
  }
  const auto route = route_by_name(options.route_name);
  if (argc % 2 == 0 || options.library.empty() || !route) {
    throw std::invalid_argument("--library PATH and --route sse2|sse41|avx2|avx512 are needed");
  }
  options.route = *route;
  return options;
}

std::string describe(const Call& call) {
  std::string text = "outputs " + std::to_string(call.outputs) + ", buffers ";
  for (const Placement placement : call.placements) {
    text += placement == Placement::AfterGuard ? "<" : ">";  // against the page before or the one behind
  }
  return text;
}

Call uniform_call(unsigned outputs, Placement placement) {
  Call call = {outputs, {}};
  call.placements.fill(placement);
  return call;
}

const std::vector<Call> all_outputs_both_placements = {uniform_call(all_outputs, Placement::AfterGuard),
                                                       uniform_call(all_outputs, Placement::BeforeGuard)};

// What runs now, for the message when the library crashes.
std::string running_frame;
const Call* running_call = nullptr;

extern "C" void report_crash(int signal) {
  std::fprintf(stderr, "signal %d (access outside a buffer?) in %s, %s\n", signal, running_frame.c_str(),
               running_call != nullptr ? describe(*running_call).c_str() : "no call");
  std::_Exit(EXIT_FAILURE);
}

class Campaign {
 public:
  Campaign(const Options& options, const LoadedProcessor& processor)
      : options_(options),
        rules_(rules_of(options.route)),
        widest_(rules_ == Route::PerPixel ? 100 : 24),
        random_(options.seed),
        processor_(processor) {}

  /** The number of frames with a fault. */
  int run() {
    output_combinations();
    sizes();
    long_rows();
    if (rules_ == Route::PerPixel) {
      large_frames();
    }
    random_mixtures();
    std::cout << frames_ << " frames, " << calls_ << " transforms, " << failures_ << " frames with faults\n";
    return failures_;
  }

 private:
  static constexpr int highest = 24;
  static constexpr std::size_t longest_row = 4099;
  static constexpr int most_reports = 10;

  void output_combinations() {
    std::vector<Call> calls;
    for (unsigned outputs = 1; outputs <= all_outputs; ++outputs) {
      calls.push_back(uniform_call(outputs, Placement::AfterGuard));
      calls.push_back(uniform_call(outputs, Placement::BeforeGuard));
    }
    CaseRunner runner(processor_, rules_, most_pixels());
    for (int phase = -1; phase < 4; ++phase) {
      for (const bool equal : {false, true}) {
        for (const int width : {widest_ - 4, widest_ - 3}) {
          for (const int height : {4, 5}) {
            FrameCase frame_case = random_frame(width, height, equal);
            frame_case.phase = phase;
            frame_case.origin_x = 0;
            frame_case.origin_y = 0;
            run_frame(runner, frame_case, calls);
          }
        }
      }
    }
  }

  void sizes() {
    CaseRunner runner(processor_, rules_, most_pixels());
    for (int width = 2; width <= 21; ++width) {
      for (int height = 2; height <= 21; ++height) {
        for (const bool equal : {false, true}) {
          run_frame(runner, random_frame(width, height, equal), all_outputs_both_placements);
        }
      }
    }
  }

  void long_rows() {
    CaseRunner runner(processor_, rules_, longest_row * 6);
    for (const int width : {64, 131, 254, 513, 1027, 1030, 2048, 2449, int{longest_row}}) {
      for (const int height : {3, 6}) {
        run_frame(runner, random_frame(width, height, random_.one_in(2)), all_outputs_both_placements);
      }
    }
  }

  /** Large enough for stores that bypass the caches, with rows that begin at every place of a cache line; and short
   * rows. */
  void large_frames() {
    struct LargeFrame {
      int width;
      int height;
      unsigned outputs[2];
    };
    constexpr unsigned stokes_pairs = 1;
    constexpr unsigned total_power = 2;
    constexpr unsigned diagonal = 8;
    constexpr LargeFrame frames[] = {{1031, 1019, {all_outputs, stokes_pairs}},
                                     {4130, 1019, {total_power, diagonal}},
                                     {1030, 1019, {all_outputs, stokes_pairs}},
                                     {62, 16930, {all_outputs, stokes_pairs}}};
    CaseRunner runner(processor_, rules_, std::size_t{4130} * 1019);
    for (int i = 0; i < options_.large_frames; ++i) {
      const auto& [width, height, outputs] = frames[i];
      FrameCase frame_case = random_frame(width, height, random_.one_in(2));
      frame_case.matrices = width % 2 == 0 ? MatrixKind::Default : MatrixKind::Mild;
      run_frame(runner, frame_case,
                {uniform_call(outputs[0], Placement::BeforeGuard), uniform_call(outputs[1], Placement::BeforeGuard)});
    }
  }

  void random_mixtures() {
    CaseRunner runner(processor_, rules_, most_pixels());
    for (int i = 0; i < options_.random_frames; ++i) {
      const int width = random_.between(2, random_.one_in(2) ? 24 : widest_);
      const int height = random_.between(2, width > 24 ? 6 : highest);
      const FrameCase frame_case = random_frame(width, height, random_.one_in(3));
      Call call = {random_.one_in(2) ? all_outputs : static_cast<unsigned>(random_.between(1, all_outputs)), {}};
      for (Placement& placement : call.placements) {
        placement = random_.one_in(2) ? Placement::AfterGuard : Placement::BeforeGuard;
      }
      run_frame(runner, frame_case, {call});
    }
  }

  FrameCase random_frame(int width, int height, bool equal) {
    FrameCase frame_case;
    frame_case.width = width;
    frame_case.height = height;
    frame_case.phase = random_.between(-1, 3);
    frame_case.origin_x = random_.between(-2, 3);
    frame_case.origin_y = random_.between(-2, 3);
    do {
      frame_case.bit_depth = random_bit_depth(random_);
    } while (equal && frame_case.bit_depth == 0);
    frame_case.output_maximum = random_output_maximum(random_, frame_case.bit_depth, equal);
    // Half of the frames hold random samples: those of the simpler kinds all say much the same.
    frame_case.samples = random_.one_in(2) ? static_cast<SampleKind>(random_.below(static_cast<int>(SampleKind::Count)))
                                           : (random_.one_in(2) ? SampleKind::WithinDepth : SampleKind::FewValues);
    frame_case.matrices = static_cast<MatrixKind>(random_.below(static_cast<int>(MatrixKind::Count)));
    frame_case.seed = random_.next();
    return frame_case;
  }

  void run_frame(CaseRunner& runner, const FrameCase& frame_case, const std::vector<Call>& calls) {
    const int number = frames_++;
    if ((options_.only >= 0 && number != options_.only) || failures_ >= most_reports) {
      return;
    }
    running_frame = "frame " + std::to_string(number) + ": " + nerova_zel::test::describe(frame_case);
    runner.begin_frame(frame_case);
    for (const Call& call : calls) {
      running_call = &call;
      ++calls_;
      const auto fault = runner.run(call);
      running_call = nullptr;
      if (fault) {
        ++failures_;
        std::cerr << running_frame << ", " << describe(call) << "\n  " << *fault << "\n  repeat with --route "
                  << options_.route_name << " --cases " << options_.random_frames << " --seed " << options_.seed
                  << " --only " << number << "\n";
        return;
      }
    }
  }

  std::size_t most_pixels() const { return static_cast<std::size_t>(widest_) * highest; }

  const Options& options_;
  const Route rules_;
  const int widest_;  ///< of the random frames: a few steps of the route
  Random random_;
  const LoadedProcessor& processor_;
  int frames_ = 0;
  int calls_ = 0;
  int failures_ = 0;
};

int run(int argc, char** argv) {
  const Options options = parse(argc, argv);
  if (const auto reason = why_route_is_not_taken(options.route, options.stand_in)) {
    return may_skip_route(options.route_name, *reason) ? exit_route_not_run : EXIT_FAILURE;
  }
  std::signal(SIGSEGV, report_crash);
  std::signal(SIGILL, report_crash);
  const LoadedProcessor processor(options.library);
  return Campaign(options, processor).run() == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace
}  // namespace nerova_zel::test

int main(int argc, char** argv) {
  try {
    return nerova_zel::test::run(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "campaign: " << error.what() << "\n";
    return EXIT_FAILURE;
  }
}
