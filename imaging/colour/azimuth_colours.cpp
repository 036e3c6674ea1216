#include "azimuth_colours.h"

#include <algorithm>
#include <cmath>

namespace nerova_zel {

namespace {

// What each instruction set gets compiled for itself.
#define NEROVA_INLINE [[gnu::always_inline]] inline

// Two channels in the halves of a number, so that each product and sum serves both.
constexpr std::uint32_t in_both(std::uint32_t value) { return value | value << 16U; }

/** [n / 255] without the remainder, for n up to 65152 in both halves. */
NEROVA_INLINE constexpr std::uint32_t divide_both_by_255(std::uint32_t n) {
  return (n + in_both(1) + (n >> 8U & in_both(255))) >> 8U & in_both(255);
}

/** [n / 255 / 255] without the remainder, for n up to 255^3 + 255^2 / 2. A test tries all mixtures. */
NEROVA_INLINE constexpr std::uint32_t divide_twice_by_255(std::uint32_t n) {
  const std::uint32_t once = ((n + ((n + (n >> 8U)) >> 8U) + 1) >> 8U) + 1;
  return (once + (once >> 8U)) >> 8U;
}

constexpr std::uint32_t pack(const Rgb& colour, ChannelOrder order) {
  const std::uint32_t first = order == ChannelOrder::rgb ? colour.red : colour.blue;
  const std::uint32_t last = order == ChannelOrder::rgb ? colour.blue : colour.red;
  return first | std::uint32_t{colour.green} << 8U | last << 16U;
}

constexpr Rgb unpack(std::uint32_t colour) {
  return {static_cast<std::uint8_t>(colour), static_cast<std::uint8_t>(colour >> 8U),
          static_cast<std::uint8_t>(colour >> 16U)};
}

/** What mix() takes for a hue: styles that whiten it take what is missing to white. */
constexpr std::uint32_t prepared_hue(AzimuthStyle style, std::uint32_t hue) {
  return style == AzimuthStyle::light || style == AzimuthStyle::composite ? 0xFFFFFFU - hue : hue;
}

/** A prepared hue by the level of the degree and the grey of the power, 0 to 255. */
template <AzimuthStyle style>
NEROVA_INLINE std::uint32_t mix(std::uint32_t hue, std::uint32_t degree, std::uint32_t grey) {
  const std::uint32_t ends = hue & in_both(255);
  const std::uint32_t middle = hue >> 8U & 255U;
  if constexpr (style == AzimuthStyle::dark) {
    const auto darkened = [degree](std::uint32_t channels) {
      return divide_both_by_255(channels * degree + in_both(127));
    };
    return darkened(ends) | darkened(middle) << 8U;
  } else if constexpr (style == AzimuthStyle::light) {
    const auto whitened = [degree](std::uint32_t channels) {
      return divide_both_by_255(in_both(255 * 255 + 127) - channels * degree);
    };
    return whitened(ends) | (whitened(middle) & 255U) << 8U;
  } else if constexpr (style == AzimuthStyle::composite) {
    const std::uint32_t white = grey * (255U * 255U) + 255 * 255 / 2;
    const std::uint32_t both = degree * grey;
    const std::uint32_t first = divide_twice_by_255(white - both * (hue & 255U));
    const std::uint32_t second = divide_twice_by_255(white - both * middle);
    const std::uint32_t third = divide_twice_by_255(white - both * (hue >> 16U & 255U));
    return first | second << 8U | third << 16U;
  } else {
    return hue;
  }
}

/** Colours of so many pixels lie in the first cache between the loops, of which the compiler makes vector code. */
constexpr std::size_t block_pixels = 512;

/** Colours, 3 bytes apart. */
NEROVA_INLINE void store(const std::uint32_t* packed, std::size_t count, std::uint8_t* colours) {
  for (std::size_t i = 0; i < count; ++i) {
    colours[3 * i] = static_cast<std::uint8_t>(packed[i]);
    colours[3 * i + 1] = static_cast<std::uint8_t>(packed[i] >> 8U);
    colours[3 * i + 2] = static_cast<std::uint8_t>(packed[i] >> 16U);
  }
}

template <AzimuthStyle style, class HueAt, class DegreeAt, class GreyAt>
NEROVA_INLINE void paint_pixels(std::size_t count, const HueAt& hue_at, const DegreeAt& degree_at,
                                const GreyAt& grey_at, std::uint8_t* colours) {
  std::array<std::uint32_t, block_pixels> packed;  // NOLINT(cppcoreguidelines-pro-type-member-init): written first
  std::array<std::uint16_t, block_pixels> degrees;
  std::array<std::uint16_t, block_pixels> greys;
  for (std::size_t first = 0; first < count; first += block_pixels) {
    const std::size_t pixels = std::min(block_pixels, count - first);
    for (std::size_t i = 0; i < pixels; ++i) {
      packed[i] = hue_at(first + i);
    }
    for (std::size_t i = 0; i < pixels; ++i) {
      degrees[i] = degree_at(first + i);
    }
    for (std::size_t i = 0; i < pixels; ++i) {
      greys[i] = grey_at(first + i);
    }
    for (std::size_t i = 0; i < pixels; ++i) {
      packed[i] = mix<style>(packed[i], degrees[i], greys[i]);
    }
    store(packed.data(), pixels, colours + 3 * first);
  }
}

struct Tables {
  const std::uint32_t* hues;
  const std::uint8_t* degrees;
  float degree_steps;  ///< 0 where the table of degrees serves
  const std::uint8_t* powers;
};

struct Images {
  const std::uint16_t* azimuth;
  const std::uint16_t* degree;
  const std::uint16_t* power;
};

NEROVA_INLINE std::uint16_t stepped_level(std::uint16_t degree, float steps) {
  return static_cast<std::uint16_t>(std::min(255.0F, static_cast<float>(degree) * steps + 0.5F));
}

template <class DegreeAt>
NEROVA_INLINE void paint_style(AzimuthStyle style, const Tables& tables, const Images& images,
                               const DegreeAt& degree_at, std::size_t count, std::uint8_t* colours) {
  const auto hue_at = [=](std::size_t i) { return tables.hues[images.azimuth[i]]; };
  const auto grey_at = [=](std::size_t i) { return tables.powers[images.power[i]]; };
  const auto nothing = [](std::size_t) { return std::uint8_t{0}; };
  switch (style) {
    case AzimuthStyle::plain:
      return paint_pixels<AzimuthStyle::plain>(count, hue_at, nothing, nothing, colours);
    case AzimuthStyle::light:
      return paint_pixels<AzimuthStyle::light>(count, hue_at, degree_at, nothing, colours);
    case AzimuthStyle::dark:
      return paint_pixels<AzimuthStyle::dark>(count, hue_at, degree_at, nothing, colours);
    case AzimuthStyle::composite:
      return paint_pixels<AzimuthStyle::composite>(count, hue_at, degree_at, grey_at, colours);
  }
}

NEROVA_INLINE void paint_style(AzimuthStyle style, const Tables& tables, const Images& images, std::size_t count,
                               std::uint8_t* colours) {
  if (tables.degree_steps > 0.0F) {
    paint_style(
        style, tables, images, [=](std::size_t i) { return stepped_level(images.degree[i], tables.degree_steps); },
        count, colours);
  } else {
    paint_style(
        style, tables, images, [=](std::size_t i) { return std::uint16_t{tables.degrees[images.degree[i]]}; }, count,
        colours);
  }
}

void paint_baseline(AzimuthStyle style, const Tables& tables, const Images& images, std::size_t count,
                    std::uint8_t* colours) {
  paint_style(style, tables, images, count, colours);
}

[[gnu::target("avx2")]] void paint_avx2(AzimuthStyle style, const Tables& tables, const Images& images,
                                        std::size_t count, std::uint8_t* colours) {
  paint_style(style, tables, images, count, colours);
}

/** 0 to 1 as 0 to 255, the steps by which colours are mixed. */
std::uint8_t mixing_level(double share) {
  return static_cast<std::uint8_t>(std::lround(255.0 * (std::isnan(share) ? 0.0 : std::clamp(share, 0.0, 1.0))));
}

/** `value_of(share)` for every value that an image can have; those above `maximum` count as it. */
template <class Value, class ValueOf>
std::vector<Value> table_of(int maximum, const ValueOf& value_of) {
  std::vector<Value> table;
  table.reserve(std::size_t{1} << 16U);
  for (int value = 0; value <= maximum; ++value) {
    table.push_back(value_of(static_cast<double>(value) / maximum));
  }
  table.resize(std::size_t{1} << 16U, table.back());
  return table;
}

/** The steps of a degree by which a product gives every level of the table, or 0: vectors multiply faster than they
 * look up. */
float steps_of(const std::vector<std::uint8_t>& levels, double full_level_degree) {
  const auto steps = static_cast<float>(255.0 / full_level_degree);
  for (std::size_t degree = 0; degree < levels.size(); ++degree) {
    if (stepped_level(static_cast<std::uint16_t>(degree), steps) != levels[degree]) {
      return 0.0F;
    }
  }
  return steps;
}

}  // namespace

std::optional<AzimuthStyle> find_azimuth_style(std::string_view name) {
  for (const NamedAzimuthStyle& known : azimuth_styles) {
    if (name == known.name) {
      return known.style;
    }
  }
  return std::nullopt;
}

Rgb azimuth_colour(AzimuthStyle style, double angle_degrees, double degree, double power) {
  const std::uint32_t pure = prepared_hue(style, pack(hue(angle_degrees), ChannelOrder::rgb));
  const std::uint16_t level = mixing_level(degree);
  switch (style) {
    case AzimuthStyle::light:
      return unpack(mix<AzimuthStyle::light>(pure, level, 0));
    case AzimuthStyle::dark:
      return unpack(mix<AzimuthStyle::dark>(pure, level, 0));
    case AzimuthStyle::composite:
      return unpack(mix<AzimuthStyle::composite>(pure, level, grey(power).red));
    case AzimuthStyle::plain:
      break;
  }
  return unpack(pure);
}

AzimuthColours::AzimuthColours(AzimuthStyle style, const Scales& scales, ChannelOrder order, VectorCode code)
    : style_(style),
      avx2_(code == VectorCode::best && __builtin_cpu_supports("avx2") != 0),
      hues_(table_of<std::uint32_t>(scales.output_maximum, [&](double share) {
        return prepared_hue(style, pack(hue(180.0 * share - 90.0), order));
      })) {
  if (needs_degree()) {
    degrees_ = table_of<std::uint8_t>(scales.output_maximum,
                                      [&](double share) { return mixing_level(share / scales.degree_end); });
    degree_steps_ = steps_of(degrees_, scales.output_maximum * scales.degree_end);
  }
  if (needs_power()) {
    powers_ =
        table_of<std::uint8_t>(scales.output_maximum, [&](double share) { return grey(share / scales.power_end).red; });
  }
}

void AzimuthColours::paint(const std::uint16_t* azimuth, const std::uint16_t* degree, const std::uint16_t* power,
                           std::size_t count, std::uint8_t* colours) const {
  const Tables tables{hues_.data(), degrees_.data(), degree_steps_, powers_.data()};
  const Images images{azimuth, degree, power};
  (avx2_ ? paint_avx2 : paint_baseline)(style_, tables, images, count, colours);
}

}  // namespace nerova_zel
