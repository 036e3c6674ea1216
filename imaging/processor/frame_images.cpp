#include "processor/frame_images.h"

#include <algorithm>

#include "threads.h"

namespace nerova_zel {

namespace {

/** So few that their pairs stay in a cache. */
constexpr std::int32_t rows_of_pairs = 16;

bool has_library_images(const Outputs& outputs) {
  return outputs.normalized_stokes.data() != nullptr || outputs.total_power.data() != nullptr ||
         outputs.horizontal_vertical.data() != nullptr || outputs.diagonal.data() != nullptr ||
         outputs.azimuth.data() != nullptr || outputs.degree_of_linear_polarization.data() != nullptr;
}

bool has_any(const StokesPlanes& planes) {
  return planes.s0 != nullptr || planes.s1 != nullptr || planes.s2 != nullptr;
}

MosaicFrame mosaic_of(const Frame& frame) {
  return {frame.pixels.data(),
          frame.width,
          frame.height,
          MosaicLayout(45 * static_cast<int>(frame.phase)),
          {frame.origin_x, frame.origin_y}};
}

void angles_by_rows(const TransformCall& transform, const Frame& frame, std::int32_t first_row, std::int32_t end_row,
                    float* angle) {
  const auto width = static_cast<std::size_t>(frame.width);
  std::vector<float> pairs(2 * width * (rows_of_pairs + 3));
  Outputs outputs;
  outputs.normalized_stokes = pairs.data();
  for (std::int32_t row = first_row; row < end_row;) {
    // A single row is no frame, so the last step may be one row longer.
    const std::int32_t end = end_row - row <= rows_of_pairs + 1 ? end_row : row + rows_of_pairs;
    transform_rows(transform, frame, row, end, outputs);
    angles_of_pairs(pairs.data(), width * static_cast<std::size_t>(end - row),
                    angle + width * static_cast<std::size_t>(row));
    row = end;
  }
}

}  // namespace

void compute_images(const TransformCall& transform, const Calibration& matrices, const Frame& frame,
                    const ImageBuffers& images, int threads) {
  const MosaicFrame mosaic = mosaic_of(frame);
  const bool has_planes = has_any(images.planes);
  const auto compute_others = [&](std::int32_t first_row, std::int32_t end_row) {
    if (has_planes) {
      compute_linear_stokes(mosaic, matrices, first_row, end_row, images.planes);
    }
    if (images.angle == nullptr) {
      return;
    }
    const float* const pairs = images.library.normalized_stokes.data();
    if (pairs == nullptr) {
      angles_by_rows(transform, frame, first_row, end_row, images.angle);
      return;
    }
    const std::size_t first = static_cast<std::size_t>(frame.width) * static_cast<std::size_t>(first_row);
    const std::size_t end = static_cast<std::size_t>(frame.width) * static_cast<std::size_t>(end_row);
    angles_of_pairs(pairs + 2 * first, end - first, images.angle + first);
  };
  const int bands = bands_worth_a_thread(frame.width, frame.height, threads);
  if (has_library_images(images.library)) {
    transform_in_bands(transform, frame, images.library, bands, compute_others);
    return;
  }
  const std::vector<std::int32_t> limits = band_limits(frame.height, bands);
  on_threads(limits.size() - 1, [&](std::size_t band) { compute_others(limits[band], limits[band + 1]); });
}

void compute_image_rows(const TransformCall& transform, const Calibration& matrices, const Frame& frame,
                        std::int32_t first_row, std::int32_t end_row, const ImageBuffers& images) {
  const auto width = static_cast<std::size_t>(frame.width);
  const auto rows = static_cast<std::size_t>(end_row - first_row);
  Outputs library = images.library;
  std::vector<float> pairs;
  if (images.angle != nullptr && library.normalized_stokes.data() == nullptr) {
    pairs.resize(2 * width * (rows + 2));
    library.normalized_stokes = pairs.data();
  }
  if (has_library_images(library)) {
    transform_rows(transform, frame, first_row, end_row, library);
  }
  if (images.angle != nullptr) {
    angles_of_pairs(library.normalized_stokes.data(), width * rows, images.angle);
  }
  if (has_any(images.planes)) {
    MosaicFrame mosaic = mosaic_of(frame);
    mosaic.pixels += width * static_cast<std::size_t>(first_row);
    mosaic.height = std::min(end_row + 2, frame.height) - first_row;
    mosaic.origin.y += first_row;
    compute_linear_stokes(mosaic, matrices, 0, end_row - first_row, images.planes);
  }
}

}  // namespace nerova_zel
