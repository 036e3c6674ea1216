#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <limits>
#include <vector>

#include "frames/mosaic_layout.h"
#include "simulation/simulated_scene.h"

namespace nerova_zel {

/** The polarizer over a pixel; by default an ideal one. */
struct PixelPolarizer {
  /** Degrees from the angle that the layout says. */
  double angle_error = 0.0;
  /** Transmittance along over transmittance across, at least 1. */
  double extinction = std::numeric_limits<double>::infinity();
  /** Relative response of the pixels below it. */
  double gain = 1.0;
};

/** The camera that looks at the scene. */
struct CameraSettings {
  int width = 2448;
  int height = 2048;
  /** 1 to 16; full scale is 2^bit_depth - 1. */
  int bit_depth = 12;
  MosaicLayout layout = MosaicLayout(90);
  /** Sensor coordinates of the frame's top-left pixel, at least 0. */
  int origin_x = 0;
  int origin_y = 0;
  /** Photo-electrons that fill a pixel to full scale; 0 for a camera without shot noise. */
  double full_well = 0.0;
  std::uint64_t seed = 1;
  /** What a pixel reads without light, in pixel values. */
  double dark_level = 0.0;
  /** Polarizers of 0, 45, 90 and 135 degrees. */
  std::array<PixelPolarizer, 4> polarizers{};
};

/** Raw mosaic frame, width * height pixels, row by row. The same settings give the same frame. */
std::vector<std::uint16_t> simulate_frame(const SimulatedScene& scene, const CameraSettings& camera);

/** The same of any light, which is asked for the centre of each pixel by column and row. */
std::vector<std::uint16_t> simulate_frame(const std::function<StokesVector(int x, int y)>& light,
                                          const CameraSettings& camera);

/**
 * The light that the output pixel (x, y) of a transform stands for: at the centre of the 2 x 2 neighbourhood it is
 * computed from, which lies inwards in the last column and row.
 */
StokesVector true_light(const SimulatedScene& scene, const CameraSettings& camera, int x, int y);

}  // namespace nerova_zel
