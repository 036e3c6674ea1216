#include "statistics/frame_statistics.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "angles.h"
#include "frames/pixel_counts.h"
#include "threads.h"

namespace nerova_zel {

namespace {

constexpr std::pair<CountedImage, Output> counted_outputs[] = {{CountedImage::power, Output::power},
                                                               {CountedImage::hv, Output::hv},
                                                               {CountedImage::diagonal, Output::diagonal},
                                                               {CountedImage::dolp, Output::dolp}};

/** Rows that are summed up together. Sums of such steps are added in order: rounding depends on nothing else. */
constexpr std::int32_t rows_of_step = 32;

/** The first row behind a step. Its last rows are never a single one, which would be no frame. */
std::int32_t end_of_step(std::int32_t row, std::int32_t height) {
  return height - row <= rows_of_step + 1 ? height : row + rows_of_step;
}

/** Pixels and their images, from which sums are made. */
struct CountedPixels {
  std::size_t count;
  const float* stokes;
  std::array<const std::uint16_t*, counted_images> images;  ///< by CountedImage

  const std::uint16_t* values(CountedImage image) const { return images[static_cast<std::size_t>(image)]; }
};

// What each instruction set gets compiled for itself.
#define NEROVA_INLINE [[gnu::always_inline]] inline

/** What is summed up of a pixel, and in what order. */
enum Term { without_degree, without_angle, cosines, sines, angle_weights, degrees, degree_weights, term_count };

/**
 * Terms of some pixels, made by loops of which the compiler makes vector code. Floats do: their rounding, 6e-8 of a
 * term, averages out over the pixels.
 */
constexpr std::size_t block_pixels = 64;
using Block = std::array<std::array<float, block_pixels>, term_count>;

/** Sums of every eighth pixel each, so that they need not wait for one another. */
constexpr std::size_t lanes = 8;
using Sums = std::array<std::array<double, lanes>, term_count>;

/** Terms of pixels first to first + count - 1. */
template <StatisticsWeight weight>
NEROVA_INLINE void make_terms(const CountedPixels& pixels, std::size_t first, std::size_t count, Block& block) {
  constexpr bool by_power = weight == StatisticsWeight::power;
  const float* const stokes = pixels.stokes + 2 * first;
  const std::uint16_t* const power = pixels.values(CountedImage::power) + first;
  const std::uint16_t* const dolp = pixels.values(CountedImage::dolp) + first;
  for (std::size_t i = 0; i < count; ++i) {
    const float s1 = stokes[2 * i];
    const float s2 = stokes[2 * i + 1];
    const float length = std::sqrt(s1 * s1 + s2 * s2);
    const bool has_degree = length < std::numeric_limits<float>::infinity();  // a NaN is not
    const bool has_angle = has_degree && length > 0.0F;
    const float light = by_power ? static_cast<float>(power[i]) : 1.0F;
    const float degree_weight = has_degree ? light : 0.0F;
    const float angle_weight = by_power ? light * length : 1.0F;
    const float share = angle_weight / length;
    block[without_degree][i] = has_degree ? 0.0F : 1.0F;
    block[without_angle][i] = has_angle ? 0.0F : 1.0F;
    block[cosines][i] = has_angle ? share * s1 : 0.0F;
    block[sines][i] = has_angle ? share * s2 : 0.0F;
    block[angle_weights][i] = has_angle ? angle_weight : 0.0F;
    block[degrees][i] = degree_weight * static_cast<float>(dolp[i]);
    block[degree_weights][i] = degree_weight;
  }
}

template <StatisticsWeight weight>
NEROVA_INLINE Sums sum_lanes(const CountedPixels& pixels) {
  Sums sums{};
  Block block;  // NOLINT(cppcoreguidelines-pro-type-member-init): written first
  for (std::size_t first = 0; first < pixels.count; first += block_pixels) {
    if (pixels.count - first >= block_pixels) {
      make_terms<weight>(pixels, first, block_pixels, block);
    } else {
      block = {};
      make_terms<weight>(pixels, first, pixels.count - first, block);
    }
    for (std::size_t i = 0; i < block_pixels; i += lanes) {
      for (std::size_t term = 0; term < term_count; ++term) {
        for (std::size_t lane = 0; lane < lanes; ++lane) {
          sums[term][lane] += block[term][i + lane];
        }
      }
    }
  }
  return sums;
}

double total(const Sums& sums, Term term) {
  double sum = 0.0;
  for (const double lane : sums[term]) {
    sum += lane;
  }
  return sum;
}

NEROVA_INLINE Sums sum_by_weight(const CountedPixels& pixels, StatisticsWeight weight) {
  return weight == StatisticsWeight::power ? sum_lanes<StatisticsWeight::power>(pixels)
                                           : sum_lanes<StatisticsWeight::equal>(pixels);
}

Sums sum_baseline(const CountedPixels& pixels, StatisticsWeight weight) { return sum_by_weight(pixels, weight); }

[[gnu::target("avx2")]] Sums sum_avx2(const CountedPixels& pixels, StatisticsWeight weight) {
  return sum_by_weight(pixels, weight);
}

[[gnu::target("avx512f,avx512dq,avx512bw,avx512vl")]] Sums sum_avx512(const CountedPixels& pixels,
                                                                      StatisticsWeight weight) {
  return sum_by_weight(pixels, weight);
}

using SumLanes = Sums (*)(const CountedPixels&, StatisticsWeight);

/** The best for this processor; all give the same bits. */
SumLanes choose_sum() {
  if (__builtin_cpu_supports("avx512vl") != 0 && __builtin_cpu_supports("avx512dq") != 0) {
    return sum_avx512;
  }
  return __builtin_cpu_supports("avx2") != 0 ? sum_avx2 : sum_baseline;
}

StatisticsSums sum_of_step(const CountedPixels& pixels, int full_scale, int output_maximum, StatisticsWeight weight) {
  StatisticsSums result;
  result.pixels = pixels.count;
  for (std::size_t image = 0; image < counted_images; ++image) {
    const bool is_frame = static_cast<CountedImage>(image) == CountedImage::frame;
    const PixelCounts counts = count_pixels(pixels.images[image], pixels.count, is_frame ? full_scale : output_maximum);
    result.saturated[image] = counts.saturated;
    result.dark[image] = counts.dark;
  }
  static const SumLanes sum = choose_sum();
  const Sums sums = sum(pixels, weight);
  result.without_degree = static_cast<std::uint64_t>(total(sums, without_degree));
  result.without_angle = static_cast<std::uint64_t>(total(sums, without_angle));
  result.cosines = total(sums, cosines);
  result.sines = total(sums, sines);
  result.angle_weights = total(sums, angle_weights);
  result.degrees = total(sums, degrees);
  result.degree_weights = total(sums, degree_weights) * output_maximum;
  return result;
}

/** Room for the images of a step. */
class StepImages {
 public:
  explicit StepImages(std::size_t width) : stokes_(2 * width * rows), codes_(4 * width * rows), plane_(width * rows) {}

  Outputs buffers() {
    Outputs outputs;
    outputs.normalized_stokes = stokes_.data();
    outputs.total_power = plane(0);
    outputs.horizontal_vertical = plane(1);
    outputs.diagonal = plane(2);
    outputs.degree_of_linear_polarization = plane(3);
    return outputs;
  }

  CountedPixels pixels(const std::uint16_t* frame, std::size_t count) {
    return {count, stokes_.data(), {frame, plane(0), plane(1), plane(2), plane(3)}};
  }

 private:
  static constexpr std::size_t rows = rows_of_step + 3;  // the last step is longer, other calls have two rows more
  std::uint16_t* plane(std::size_t number) { return codes_.data() + number * plane_; }

  std::vector<float> stokes_;
  std::vector<std::uint16_t> codes_;
  std::size_t plane_;
};

}  // namespace

StatisticsSums& StatisticsSums::operator+=(const StatisticsSums& other) {
  pixels += other.pixels;
  without_degree += other.without_degree;
  without_angle += other.without_angle;
  for (std::size_t i = 0; i < counted_images; ++i) {
    saturated[i] += other.saturated[i];
    dark[i] += other.dark[i];
  }
  cosines += other.cosines;
  sines += other.sines;
  angle_weights += other.angle_weights;
  degrees += other.degrees;
  degree_weights += other.degree_weights;
  return *this;
}

std::optional<double> StatisticsSums::mean_angle() const {
  if (cosines == 0.0 && sines == 0.0) {
    return std::nullopt;
  }
  const double angle = 0.5 * degrees_per_radian * std::atan2(sines, cosines);
  return angle <= -90.0 ? 90.0 : angle;
}

std::optional<double> StatisticsSums::resultant() const {
  if (!(angle_weights > 0.0)) {
    return std::nullopt;
  }
  return std::min(1.0, length_of(cosines, sines) / angle_weights);
}

std::optional<double> StatisticsSums::angle_deviation() const {
  const std::optional<double> length = resultant();
  if (!length || *length == 0.0) {
    return std::nullopt;
  }
  return 0.5 * degrees_per_radian * std::sqrt(std::max(0.0, -2.0 * std::log(*length)));
}

std::optional<double> StatisticsSums::mean_degree() const {
  return degree_weights > 0.0 ? std::optional<double>(degrees / degree_weights) : std::nullopt;
}

const char* name_of(CountedImage image) {
  for (const auto& [counted, output] : counted_outputs) {
    if (counted == image) {
      return describe(output).name;
    }
  }
  return "frame";
}

std::vector<NamedStatistic> named_statistics(const StatisticsSums& sums) {
  std::vector<NamedStatistic> all = {{"pixels", "", sums.pixels},
                                     {"mean_angle_degrees", "", sums.mean_angle()},
                                     {"resultant_length", "", sums.resultant()},
                                     {"angle_deviation_degrees", "", sums.angle_deviation()},
                                     {"pixels_without_angle", "", sums.without_angle},
                                     {"mean_degree", "", sums.mean_degree()},
                                     {"pixels_without_degree", "", sums.without_degree}};
  for (const auto& [name, counts] :
       {std::pair("saturated_pixels", &sums.saturated), std::pair("dark_pixels", &sums.dark)}) {
    for (std::size_t i = 0; i < counted_images; ++i) {
      all.push_back({name, name_of(static_cast<CountedImage>(i)), (*counts)[i]});
    }
  }
  return all;
}

std::array<std::uint64_t, 180> angle_histogram(const float* angles, std::size_t count) {
  std::array<std::uint64_t, 180> counts{};
  for (std::size_t i = 0; i < count; ++i) {
    if (angles[i] >= 0.0F && angles[i] < 180.0F) {
      ++counts[static_cast<std::size_t>(angles[i])];
    }
  }
  return counts;
}

std::set<Output> statistics_outputs() {
  return {Output::stokes, Output::power, Output::hv, Output::diagonal, Output::dolp};
}

StatisticsSums sum_up(const RawFrame& frame, int full_scale, const OutputImages& outputs, int output_maximum,
                      StatisticsWeight weight) {
  StatisticsSums sums;
  for (std::int32_t row = 0; row < frame.height;) {
    const std::int32_t end = end_of_step(row, frame.height);
    const std::size_t first = static_cast<std::size_t>(row) * static_cast<std::size_t>(frame.width);
    const std::size_t count = static_cast<std::size_t>(end - row) * static_cast<std::size_t>(frame.width);
    CountedPixels pixels{count, outputs.stokes() + 2 * first, {frame.pixels.data() + first}};
    for (const auto& [image, output] : counted_outputs) {
      pixels.images[static_cast<std::size_t>(image)] = outputs.values(output) + first;
    }
    sums += sum_of_step(pixels, full_scale, output_maximum, weight);
    row = end;
  }
  return sums;
}

StatisticsSums statistics_of(const TransformCall& transform, const Frame& frame, StatisticsWeight weight, int threads) {
  constexpr int output_maximum = 65535;
  const int full_scale = (1 << frame.bit_depth) - 1;
  const auto width = static_cast<std::size_t>(frame.width);
  std::vector<std::int32_t> limits = {0};
  while (limits.back() < frame.height) {
    limits.push_back(end_of_step(limits.back(), frame.height));
  }
  const std::size_t steps = limits.size() - 1;
  std::vector<StatisticsSums> sums(steps);
  const auto count =
      std::min(steps, static_cast<std::size_t>(bands_worth_a_thread(frame.width, frame.height, threads)));
  on_threads(count, [&](std::size_t thread) {
    StepImages images(width);
    for (std::size_t step = steps * thread / count; step < steps * (thread + 1) / count; ++step) {
      const std::int32_t row = limits[step];
      transform_rows(transform, frame, row, limits[step + 1], images.buffers());
      const std::size_t pixels = width * static_cast<std::size_t>(limits[step + 1] - row);
      sums[step] = sum_of_step(images.pixels(frame.pixels.data() + width * static_cast<std::size_t>(row), pixels),
                               full_scale, output_maximum, weight);
    }
  });
  StatisticsSums all;
  for (const StatisticsSums& step : sums) {
    all += step;
  }
  return all;
}

}  // namespace nerova_zel
