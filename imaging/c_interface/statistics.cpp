#include <limits>

#include "c_interface/frame_of.h"
#include "c_interface/guarded_call.h"
#include "statistics/frame_statistics.h"

namespace nerova_zel {

namespace {

static_assert(counted_images == 5, "as many as the public structure has");

void copy_counts(const std::array<std::uint64_t, counted_images>& from, std::uint64_t* to) {
  std::copy(from.begin(), from.end(), to);
}

nv_imaging_statistics to_public(const StatisticsSums& sums) {
  constexpr double none = std::numeric_limits<double>::quiet_NaN();
  nv_imaging_statistics result{};
  result.pixels = sums.pixels;
  result.without_angle = sums.without_angle;
  result.without_degree = sums.without_degree;
  copy_counts(sums.saturated, result.saturated);
  copy_counts(sums.dark, result.dark);
  result.mean_angle = sums.mean_angle().value_or(none);
  result.resultant = sums.resultant().value_or(none);
  result.angle_deviation = sums.angle_deviation().value_or(none);
  result.mean_degree = sums.mean_degree().value_or(none);
  result.cosines = sums.cosines;
  result.sines = sums.sines;
  result.angle_weights = sums.angle_weights;
  result.degrees = sums.degrees;
  result.degree_weights = sums.degree_weights;
  return result;
}

StatisticsSums from_public(const nv_imaging_statistics& statistics) {
  StatisticsSums result;
  result.pixels = statistics.pixels;
  result.without_angle = statistics.without_angle;
  result.without_degree = statistics.without_degree;
  std::copy_n(statistics.saturated, counted_images, result.saturated.begin());
  std::copy_n(statistics.dark, counted_images, result.dark.begin());
  result.cosines = statistics.cosines;
  result.sines = statistics.sines;
  result.angle_weights = statistics.angle_weights;
  result.degrees = statistics.degrees;
  result.degree_weights = statistics.degree_weights;
  return result;
}

/** Copies the region's pixels to `pixels`, and gives the frame that they are. */
Frame region_of(const Frame& frame, const std::int32_t* region, std::vector<std::uint16_t>& pixels) {
  const std::int32_t x = region[0];
  const std::int32_t y = region[1];
  const std::int32_t width = region[2];
  const std::int32_t height = region[3];
  require(width >= 2 && height >= 2, "a region must be at least 2 x 2 pixels");
  require(x >= 0 && y >= 0 && x <= frame.width - width && y <= frame.height - height,
          "the region reaches beyond the frame");
  pixels.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
  for (std::int32_t row = 0; row < height; ++row) {
    const auto from = static_cast<std::size_t>(y + row) * static_cast<std::size_t>(frame.width);
    std::copy_n(frame.pixels.data() + from + x, width,
                pixels.begin() + static_cast<std::ptrdiff_t>(row) * static_cast<std::ptrdiff_t>(width));
  }
  Frame part = frame;
  part.pixels = pixels;
  part.width = width;
  part.height = height;
  part.origin_x = frame.origin_x % 2 + x;
  part.origin_y = frame.origin_y % 2 + y;
  return part;
}

}  // namespace

}  // namespace nerova_zel

using namespace nerova_zel;

int32_t nv_imaging_compute_statistics(nv_polarization_processor* processor, const nv_imaging_frame* frame,
                                      const int32_t region[4], int32_t weight, int32_t threads,
                                      nv_imaging_statistics* statistics) {
  return guarded_call([&] {
    Frame whole = frame_of(frame);
    require(statistics != nullptr, "the statistics need a place");
    require(weight == NV_IMAGING_WEIGHT_EQUAL || weight == NV_IMAGING_WEIGHT_POWER, "there is no such weight");
    require(threads >= 1, "threads must be 1 or more");
    std::vector<std::uint16_t> pixels;
    const Frame part = region == nullptr ? whole : region_of(whole, region, pixels);
    *statistics = to_public(
        statistics_of(transform_call(processor), part,
                      weight == NV_IMAGING_WEIGHT_POWER ? StatisticsWeight::power : StatisticsWeight::equal, threads));
  });
}

int32_t nv_imaging_add_statistics(nv_imaging_statistics* statistics, const nv_imaging_statistics* more) {
  return guarded_call([&] {
    require(statistics != nullptr && more != nullptr, "there are no statistics");
    StatisticsSums sums = from_public(*statistics);
    sums += from_public(*more);
    *statistics = to_public(sums);
  });
}
