#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "frames/raw_frame.h"

namespace nerova_zel {

/**
 * The colour filters of a sensor in cells of 2 x 2 pixels, which repeat every 4 x 4; each cell holds the polarizers of
 * a mosaic layout. Named by the colours of the cells at sensor coordinates (0, 0), (2, 0), (0, 2) and (2, 2).
 */
enum class ColourPattern { rggb, grbg, gbrg, bggr };

/** Every pattern by its name. */
constexpr std::array<std::pair<const char*, ColourPattern>, 4> colour_patterns = {{{"RGGB", ColourPattern::rggb},
                                                                                   {"GRBG", ColourPattern::grbg},
                                                                                   {"GBRG", ColourPattern::gbrg},
                                                                                   {"BGGR", ColourPattern::bggr}}};

/** The pixels of one colour; green1 lies in the rows of red, green2 in those of blue. */
enum class ColourPlane { red, green1, green2, blue };

constexpr std::size_t colour_plane_count = 4;
constexpr std::array<ColourPlane, colour_plane_count> colour_planes = {ColourPlane::red, ColourPlane::green1,
                                                                       ColourPlane::green2, ColourPlane::blue};

const char* name_of(ColourPattern pattern);
/** "R", "G1", "G2" or "B". */
const char* name_of(ColourPlane plane);

/** One of something for each plane, in the order of ColourPlane. */
template <class Value>
using PerPlane = std::array<Value, colour_plane_count>;

/**
 * How the colours of a frame lie. Taken out of the frame, each colour is an ordinary mosaic of half the size with the
 * polarizers' layout unchanged, at a place of its own on a sensor of half the size. Planes differ in size by up to two
 * columns and rows where the frame's edges cut through a pattern. Thread safety: it never changes.
 */
class ColourMosaic {
 public:
  /** Sensor coordinates of the frame's top-left pixel, at least 0; a size of at least 1 x 1. */
  ColourMosaic(ColourPattern pattern, const Origin& origin, const FrameSize& size);

  const FrameSize& size() const { return size_; }
  /** The colour over the pixel in column x and row y of the frame. */
  ColourPlane plane_at(int x, int y) const;

  /** A side is 0 where a frame of less than 4 pixels does not reach the colour. */
  FrameSize plane_size(ColourPlane plane) const;
  /** The origin to transform the plane with. */
  Origin plane_origin(ColourPlane plane) const;
  /** The part of the plane that all planes have: equal pixels of it are of one 4 x 4 pattern. May be empty. */
  Region common_region(ColourPlane plane) const;
  /** Column and row of the frame that a pixel of the plane comes from. */
  Origin frame_pixel(ColourPlane plane, int x, int y) const;

  /**
   * Copies every pixel of a frame (width * height pixels, row by row) to its plane. Each plane has room for as many
   * pixels as plane_size says; none overlaps another or the frame. No pointer is NULL unless its plane is empty.
   */
  void split(const std::uint16_t* frame, const PerPlane<std::uint16_t*>& planes) const;

  /** The reverse of split, to the last bit. */
  void join(const PerPlane<const std::uint16_t*>& planes, std::uint16_t* frame) const;

 private:
  struct Cell {
    int x;  ///< 0 or 1
    int y;
  };
  Cell cell_of(ColourPlane plane) const;
  ColourPlane plane_of(const Cell& cell) const;

  ColourPattern pattern_;
  Origin origin_;
  FrameSize size_;
};

/** Splits a frame of the mosaic's size into planes, whose memory is used again. */
void split_frame(const ColourMosaic& mosaic, const RawFrame& frame, PerPlane<RawFrame>& planes);

}  // namespace nerova_zel
