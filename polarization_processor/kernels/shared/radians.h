#pragma once

namespace nerova_zel {

/** Of the angle of the Stokes vector, twice the azimuth. */
struct Radians {
  static constexpr float half_turn = 3.1415927F;  ///< pi
  static constexpr float quarter_turn = half_turn / 2;
  static constexpr float eighth_turn = half_turn / 4;
  /** 90 / pi, one unit in the last place below the nearest float; part of the result. */
  static constexpr float azimuth_degrees = 28.647888F;
};

}  // namespace nerova_zel
