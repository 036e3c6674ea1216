#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <variant>
#include <vector>

#include "frames/raw_frame.h"
#include "processor/bands.h"
#include "processor/output_images.h"

namespace nerova_zel {

/** What a pixel counts for in means. */
enum class StatisticsWeight {
  equal,  ///< 1
  power,  ///< its power for the degree, its polarized power for the angle: so means are those of all light together
};

/** The images whose limits are counted. */
enum class CountedImage { frame, power, hv, diagonal, dolp };
constexpr std::size_t counted_images = 5;

/** "frame", or as the output is called. */
const char* name_of(CountedImage image);

/** Sums over the pixels of frames, from which statistics are made; docs/statistics.md has the formulas. */
struct StatisticsSums {
  std::uint64_t pixels = 0;
  /** Pixels without a degree, as they have no light, and without an angle, as they have no polarized light either. */
  std::uint64_t without_degree = 0;
  std::uint64_t without_angle = 0;
  /** By CountedImage: pixels at full scale (or above) or at the output maximum, and pixels at 0. */
  std::array<std::uint64_t, counted_images> saturated{};
  std::array<std::uint64_t, counted_images> dark{};
  double cosines = 0.0;  ///< of twice the angle, weighted
  double sines = 0.0;
  double angle_weights = 0.0;
  double degrees = 0.0;  ///< weighted
  double degree_weights = 0.0;

  StatisticsSums& operator+=(const StatisticsSums& other);

  /** Degrees from the image's horizontal axis, above -90 to 90; nothing if no direction prevails at all. */
  std::optional<double> mean_angle() const;
  /** Mean resultant length of the doubled angles, 0 to 1; nothing without an angle. */
  std::optional<double> resultant() const;
  /** Circular standard deviation of the angles in degrees; nothing if there is none or it is infinite. */
  std::optional<double> angle_deviation() const;
  /** 0 to 1; nothing without light. */
  std::optional<double> mean_degree() const;
};

/** A number of the sums by the name that documents give it; `part` is the image that it is of, or empty. */
struct NamedStatistic {
  std::string name;
  std::string part;
  std::variant<std::uint64_t, std::optional<double>> value;
};

/** All numbers, in the order of documents; parts of a name follow each other. */
std::vector<NamedStatistic> named_statistics(const StatisticsSums& sums);

/** How many angles, in degrees from 0 to 180, lie at i or above and below i + 1; none of those that are NaN. */
std::array<std::uint64_t, 180> angle_histogram(const float* angles, std::size_t count);

/** The images that statistics need. */
std::set<Output> statistics_outputs();

/** Of a frame with `full_scale`, and its outputs with `output_maximum`. */
StatisticsSums sum_up(const RawFrame& frame, int full_scale, const OutputImages& outputs, int output_maximum,
                      StatisticsWeight weight);

/**
 * The same of a frame whose images nobody keeps, which takes neither their memory nor the time to write it. The output
 * maximum is 65535. Up to `threads` threads compute it; their number does not change a bit. Throws what `transform`
 * throws.
 */
StatisticsSums statistics_of(const TransformCall& transform, const Frame& frame, StatisticsWeight weight, int threads);

}  // namespace nerova_zel
