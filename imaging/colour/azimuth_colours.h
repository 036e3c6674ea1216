#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "colour_tables.h"

namespace nerova_zel {

/** How a picture of the azimuth shows more than the angle. */
enum class AzimuthStyle {
  plain,      ///< not at all
  light,      ///< the degree as saturation: white where there is no polarization
  dark,       ///< the degree as brightness: black where there is none
  composite,  ///< the degree as saturation, the power as brightness: grey as the light where there is none
};

/** A style and what users call it. */
struct NamedAzimuthStyle {
  AzimuthStyle style;
  const char* name;
};

/** All styles, in the order of their values. */
constexpr std::array<NamedAzimuthStyle, 4> azimuth_styles = {{{AzimuthStyle::plain, "plain"},
                                                              {AzimuthStyle::light, "light"},
                                                              {AzimuthStyle::dark, "dark"},
                                                              {AzimuthStyle::composite, "composite"}}};

/** Nothing for an unknown name. */
std::optional<AzimuthStyle> find_azimuth_style(std::string_view name);

constexpr const char* name_of(AzimuthStyle style) { return azimuth_styles[static_cast<std::size_t>(style)].name; }

/** Which channel of a pixel comes first. */
enum class ChannelOrder { rgb, bgr };

/** Instructions to paint with: the best that this processor has, or those that all have. The colours are the same. */
enum class VectorCode { best, baseline };

/**
 * The colour of an angle in degrees, of a degree and of a power, the last two as shares, 0 to 1, of where their scales
 * end; for legends and for pictures of averages.
 */
Rgb azimuth_colour(AzimuthStyle style, double angle_degrees, double degree, double power);

/**
 * Colours the library's azimuth, degree and total power as docs/pictures.md defines it to the last bit. Holds tables of
 * at most 0.4 MB for one output maximum and one pair of scales, so it is made once for many frames.
 *
 * Thread safety: any number of threads may paint at the same time.
 */
class AzimuthColours {
 public:
  struct Scales {
    int output_maximum = 65535;  ///< of the images, 1 to 65535
    double degree_end = 1.0;     ///< the degree where its scale ends, above 0
    double power_end = 1.0;      ///< the share of full scale where the power's scale ends, above 0
  };

  AzimuthColours(AzimuthStyle style, const Scales& scales, ChannelOrder order = ChannelOrder::rgb,
                 VectorCode code = VectorCode::best);

  /** Whether the images are read; one that is not may be NULL. */
  bool needs_degree() const { return style_ != AzimuthStyle::plain; }
  bool needs_power() const { return style_ == AzimuthStyle::composite; }

  /**
   * Paints `count` pixels, 3 bytes each, into `colours`, which overlaps none of the images. Values above the output
   * maximum count as it.
   */
  void paint(const std::uint16_t* azimuth, const std::uint16_t* degree, const std::uint16_t* power, std::size_t count,
             std::uint8_t* colours) const;

 private:
  AzimuthStyle style_;
  bool avx2_;
  std::vector<std::uint32_t> hues_;    ///< by azimuth: a byte for each channel, or what is missing to 255 of it
  std::vector<std::uint8_t> degrees_;  ///< by degree: saturation or brightness
  float degree_steps_ = 0.0F;          ///< levels of a step of the degree, where that gives the same as degrees_
  std::vector<std::uint8_t> powers_;   ///< by power: brightness
};

}  // namespace nerova_zel
