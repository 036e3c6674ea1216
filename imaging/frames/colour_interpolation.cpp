#include "frames/colour_interpolation.h"

#include <array>
#include <stdexcept>
#include <utility>
#include <vector>

namespace nerova_zel {

namespace {

/** The plane's columns (or rows) on both sides of one of the frame's; twice the same where it has the colour itself. */
struct Neighbours {
  int before = -1;
  int after = -1;
};

/** By column (or row) of the frame. `place` tells where one of the plane lies in the frame. */
template <class Place>
std::vector<Neighbours> find_neighbours(int frame_pixels, int plane_pixels, const Place& place) {
  std::vector<Neighbours> neighbours(static_cast<std::size_t>(frame_pixels));
  const auto at = [&neighbours](int pixel) { return neighbours.begin() + pixel; };
  for (int i = 0; i < plane_pixels; ++i) {
    const int here = place(i);
    *at(here) = {i, i};
    if (here >= 2) {
      at(here - 2)->after = i;
    }
    if (here + 2 < frame_pixels) {
      at(here + 2)->before = i;
    }
  }
  for (Neighbours& pair : neighbours) {
    if (pair.before < 0) {
      pair.before = pair.after;
    }
    if (pair.after < 0) {
      pair.after = pair.before;
    }
  }
  return neighbours;
}

/** Rows of the plane stretched to the frame's width, twice the values. A row of the frame looks at no more than four.
 */
class StretchedRows {
 public:
  StretchedRows(const std::uint16_t* plane, int width, std::vector<Neighbours> columns)
      : plane_(plane), width_(width), columns_(std::move(columns)) {
    rows_.fill(std::vector<std::uint32_t>(columns_.size()));
  }

  const std::vector<std::uint32_t>& row(int y) {
    for (; stretched_ <= y; ++stretched_) {
      const std::uint16_t* const from = plane_ + static_cast<std::ptrdiff_t>(stretched_) * width_;
      std::uint32_t* to = room(stretched_).data();
      for (const Neighbours& columns : columns_) {
        *to++ = std::uint32_t{from[columns.before]} + from[columns.after];
      }
    }
    return room(y);
  }

 private:
  std::vector<std::uint32_t>& room(int y) { return rows_[static_cast<std::size_t>(y) % rows_.size()]; }

  const std::uint16_t* plane_;
  int width_;
  std::vector<Neighbours> columns_;
  std::array<std::vector<std::uint32_t>, 4> rows_;
  int stretched_ = 0;
};

}  // namespace

void interpolate_plane(const ColourMosaic& mosaic, ColourPlane colour, const std::uint16_t* plane,
                       std::uint16_t* frame) {
  const FrameSize& size = mosaic.size();
  if (size.width < 4 || size.height < 4) {
    throw std::invalid_argument("a colour plane is interpolated within a frame of at least 4 x 4 pixels");
  }
  const FrameSize half = mosaic.plane_size(colour);
  StretchedRows rows(plane, half.width, find_neighbours(size.width, half.width, [&](int x) {
                       return mosaic.frame_pixel(colour, x, 0).x;
                     }));
  for (const Neighbours& pair :
       find_neighbours(size.height, half.height, [&](int y) { return mosaic.frame_pixel(colour, 0, y).y; })) {
    const std::uint32_t* const above = rows.row(pair.before).data();
    const std::uint32_t* const below = rows.row(pair.after).data();
    for (int x = 0; x < size.width; ++x) {
      frame[x] = static_cast<std::uint16_t>((above[x] + below[x] + 2) / 4);
    }
    frame += size.width;
  }
}

void average_images(const std::uint16_t* first, const std::uint16_t* second, std::size_t pixels, std::uint16_t* mean) {
  for (std::size_t i = 0; i < pixels; ++i) {
    mean[i] = static_cast<std::uint16_t>((first[i] + second[i] + 1) / 2);
  }
}

}  // namespace nerova_zel
