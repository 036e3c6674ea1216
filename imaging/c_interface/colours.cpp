// The azimuth in colour.
#include <cmath>

#include "azimuth_colours.h"
#include "c_interface/guarded_call.h"

struct nv_imaging_colours {
  nerova_zel::AzimuthColours colours;
};

using namespace nerova_zel;

int32_t nv_imaging_create_colours(const char* style, int32_t output_maximum, double degree_end, double power_end,
                                  nv_imaging_colours** colours) {
  return guarded_call([&] {
    require(style != nullptr && colours != nullptr, "there is no style, or no place for the tables");
    const std::optional<AzimuthStyle> known = find_azimuth_style(style);
    require(known.has_value(), "the style must be plain, light, dark or composite");
    require(output_maximum >= 1 && output_maximum <= 65535, "the output maximum must be 1 to 65535");
    require(degree_end > 0.0 && power_end > 0.0, "the ends of scales must be above 0");
    *colours = new nv_imaging_colours{AzimuthColours(*known, {output_maximum, degree_end, power_end})};
  });
}

void nv_imaging_destroy_colours(nv_imaging_colours* colours) { delete colours; }

int32_t nv_imaging_paint(const nv_imaging_colours* colours, const uint16_t* azimuth, const uint16_t* dolp,
                         const uint16_t* power, size_t pixels, uint8_t* rgb) {
  return guarded_call([&] {
    require(colours != nullptr && azimuth != nullptr && rgb != nullptr, "there are no tables, no azimuth or no room");
    require(dolp != nullptr || !colours->colours.needs_degree(), "this style needs the degree");
    require(power != nullptr || !colours->colours.needs_power(), "this style needs the power");
    colours->colours.paint(azimuth, dolp, power, pixels, rgb);
  });
}

int32_t nv_imaging_azimuth_of_angles(const float* angle, size_t pixels, int32_t output_maximum, uint16_t* azimuth) {
  return guarded_call([&] {
    require(angle != nullptr && azimuth != nullptr, "there are no angles, or no room");
    require(output_maximum >= 1 && output_maximum <= 65535, "the output maximum must be 1 to 65535");
    for (std::size_t i = 0; i < pixels; ++i) {
      const float shifted = angle[i] + 90.0F;
      const float turns = shifted / 180.0F;
      const float code = std::nearbyint((turns - std::floor(turns)) * static_cast<float>(output_maximum));
      azimuth[i] = static_cast<std::uint16_t>(code >= 0.0F ? code : 0.0F);  // a NaN is not
    }
  });
}
