#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace nerova_zel {

/** Options of `simulate`, as given on the command line. */
struct SimulateOptions {
  std::string file = "simulated.png";
  std::string size = "2448x2048";
  int layout = 90;
  std::string origin = "0,0";
  int bit_depth = 12;
  double photons = 0.0;
  std::uint64_t seed = 1;
  double refractive_index = 1.5;
  std::optional<double> source_angle;
  double source_power = 0.8;
  std::string angle_errors = "0";
  std::string extinctions = "inf";
  std::string gains = "1";
  double dark_level = 0.0;
  std::optional<std::string> truth_directory;
};

/** Writes a simulated frame, and on request its truth, and says how to transform it. Throws Failure. */
void run_simulate(const SimulateOptions& options);

}  // namespace nerova_zel
