#pragma once

#include <array>
#include <utility>

namespace nerova_zel {

/** How an azimuth picture shows more than the angle. */
enum class AzimuthStyle {
  plain,      ///< not at all
  light,      ///< the degree as saturation: white where there is no polarization
  dark,       ///< the degree as brightness: black where there is none
  composite,  ///< the degree as saturation, the power as brightness: grey as the light where there is none
};

constexpr std::array<std::pair<const char*, AzimuthStyle>, 4> azimuth_styles = {{{"plain", AzimuthStyle::plain},
                                                                                 {"light", AzimuthStyle::light},
                                                                                 {"dark", AzimuthStyle::dark},
                                                                                 {"composite",
                                                                                  AzimuthStyle::composite}}};

}  // namespace nerova_zel
