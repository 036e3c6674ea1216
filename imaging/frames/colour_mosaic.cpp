#include "frames/colour_mosaic.h"

#include <algorithm>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace nerova_zel {

namespace {

/** By pattern, then row and column of the cell. */
constexpr ColourPlane cells[4][2][2] = {
    {{ColourPlane::red, ColourPlane::green1}, {ColourPlane::green2, ColourPlane::blue}},
    {{ColourPlane::green1, ColourPlane::red}, {ColourPlane::blue, ColourPlane::green2}},
    {{ColourPlane::green2, ColourPlane::blue}, {ColourPlane::red, ColourPlane::green1}},
    {{ColourPlane::blue, ColourPlane::green2}, {ColourPlane::green1, ColourPlane::red}}};

/** How many of the sensor's columns (or rows) before `position` are of the cells with number `cell`. */
int pixels_before(int position, int cell) { return position / 4 * 2 + std::clamp(position % 4 - 2 * cell, 0, 2); }

/** Columns (or rows) on the sensor of a plane. */
struct Span {
  int begin;
  int end;

  int size() const { return end - begin; }
};

/** Those of the cells with one number among `count` of the sensor's from `origin` on. */
Span span_of(int origin, int count, int cell) {
  return {pixels_before(origin, cell), pixels_before(origin + count, cell)};
}

/** The columns (or rows) that the spans of both cells have. */
Span common_span(int origin, int count) {
  const Span first = span_of(origin, count, 0);
  const Span second = span_of(origin, count, 1);
  const int begin = std::max(first.begin, second.begin);
  return {begin, std::max(begin, std::min(first.end, second.end))};
}

constexpr std::size_t pair_bytes = 2 * sizeof(std::uint16_t);

/** Pairs of pixels of a row go to `first` and `second` in turns; the last may be a single pixel. */
void deal_pairs(const std::uint16_t* row, std::size_t count, std::uint16_t* first, std::uint16_t* second) {
#ifdef __SSE2__
  for (; count >= 16; count -= 16, row += 16, first += 8, second += 8) {
    const __m128 low = _mm_loadu_ps(reinterpret_cast<const float*>(row));
    const __m128 high = _mm_loadu_ps(reinterpret_cast<const float*>(row + 8));
    _mm_storeu_ps(reinterpret_cast<float*>(first), _mm_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0)));
    _mm_storeu_ps(reinterpret_cast<float*>(second), _mm_shuffle_ps(low, high, _MM_SHUFFLE(3, 1, 3, 1)));
  }
#endif
  for (; count >= 4; count -= 4, row += 4, first += 2, second += 2) {
    std::memcpy(first, row, pair_bytes);
    std::memcpy(second, row + 2, pair_bytes);
  }
  const std::size_t to_first = std::min<std::size_t>(count, 2);
  std::copy_n(row, to_first, first);
  std::copy_n(row + to_first, count - to_first, second);
}

/** The reverse. */
void collect_pairs(const std::uint16_t* first, const std::uint16_t* second, std::size_t count, std::uint16_t* row) {
#ifdef __SSE2__
  for (; count >= 16; count -= 16, row += 16, first += 8, second += 8) {
    const __m128 even = _mm_loadu_ps(reinterpret_cast<const float*>(first));
    const __m128 odd = _mm_loadu_ps(reinterpret_cast<const float*>(second));
    _mm_storeu_ps(reinterpret_cast<float*>(row), _mm_unpacklo_ps(even, odd));
    _mm_storeu_ps(reinterpret_cast<float*>(row + 8), _mm_unpackhi_ps(even, odd));
  }
#endif
  for (; count >= 4; count -= 4, row += 4, first += 2, second += 2) {
    std::memcpy(row, first, pair_bytes);
    std::memcpy(row + 2, second, pair_bytes);
  }
  const std::size_t from_first = std::min<std::size_t>(count, 2);
  std::copy_n(first, from_first, row);
  std::copy_n(second, count - from_first, row + from_first);
}

}  // namespace

const char* name_of(ColourPattern pattern) { return colour_patterns[static_cast<std::size_t>(pattern)].first; }

const char* name_of(ColourPlane plane) {
  static constexpr const char* names[] = {"R", "G1", "G2", "B"};
  return names[static_cast<std::size_t>(plane)];
}

ColourMosaic::ColourMosaic(ColourPattern pattern, const Origin& origin, const FrameSize& size)
    : pattern_(pattern), origin_(origin), size_(size) {}

ColourPlane ColourMosaic::plane_of(const Cell& cell) const {
  return cells[static_cast<std::size_t>(pattern_)][cell.y][cell.x];
}

ColourMosaic::Cell ColourMosaic::cell_of(ColourPlane plane) const {
  for (const Cell& cell : {Cell{0, 0}, Cell{1, 0}, Cell{0, 1}}) {
    if (plane_of(cell) == plane) {
      return cell;
    }
  }
  return {1, 1};
}

ColourPlane ColourMosaic::plane_at(int x, int y) const {
  return plane_of({(origin_.x + x) / 2 % 2, (origin_.y + y) / 2 % 2});
}

FrameSize ColourMosaic::plane_size(ColourPlane plane) const {
  const Cell cell = cell_of(plane);
  return {span_of(origin_.x, size_.width, cell.x).size(), span_of(origin_.y, size_.height, cell.y).size()};
}

Origin ColourMosaic::plane_origin(ColourPlane plane) const {
  const Cell cell = cell_of(plane);
  return {span_of(origin_.x, size_.width, cell.x).begin, span_of(origin_.y, size_.height, cell.y).begin};
}

Region ColourMosaic::common_region(ColourPlane plane) const {
  const Span columns = common_span(origin_.x, size_.width);
  const Span rows = common_span(origin_.y, size_.height);
  const Origin origin = plane_origin(plane);
  return {columns.begin - origin.x, rows.begin - origin.y, {columns.end - columns.begin, rows.end - rows.begin}};
}

Origin ColourMosaic::frame_pixel(ColourPlane plane, int x, int y) const {
  const Cell cell = cell_of(plane);
  const Origin origin = plane_origin(plane);
  const auto place = [](int pixel, int number) { return pixel / 2 * 4 + 2 * number + pixel % 2; };
  return {place(origin.x + x, cell.x) - origin_.x, place(origin.y + y, cell.y) - origin_.y};
}

void ColourMosaic::split(const std::uint16_t* frame, const PerPlane<std::uint16_t*>& planes) const {
  PerPlane<std::uint16_t*> next = planes;
  const auto width = static_cast<std::size_t>(size_.width);
  const bool pair_is_cut = origin_.x % 2 == 1;  // by the frame's left edge
  for (int y = 0; y < size_.height; ++y, frame += width) {
    const ColourPlane plane = plane_at(0, y);
    const ColourPlane other = plane_at(2, y);
    std::uint16_t*& left = next[static_cast<std::size_t>(plane)];
    std::uint16_t*& right = next[static_cast<std::size_t>(other)];
    if (pair_is_cut) {
      *left = *frame;
      deal_pairs(frame + 1, width - 1, right, left + 1);
    } else {
      deal_pairs(frame, width, left, right);
    }
    left += plane_size(plane).width;
    right += plane_size(other).width;
  }
}

void ColourMosaic::join(const PerPlane<const std::uint16_t*>& planes, std::uint16_t* frame) const {
  PerPlane<const std::uint16_t*> next = planes;
  const auto width = static_cast<std::size_t>(size_.width);
  const bool pair_is_cut = origin_.x % 2 == 1;
  for (int y = 0; y < size_.height; ++y, frame += width) {
    const ColourPlane plane = plane_at(0, y);
    const ColourPlane other = plane_at(2, y);
    const std::uint16_t*& left = next[static_cast<std::size_t>(plane)];
    const std::uint16_t*& right = next[static_cast<std::size_t>(other)];
    if (pair_is_cut) {
      *frame = *left;
      collect_pairs(right, left + 1, width - 1, frame + 1);
    } else {
      collect_pairs(left, right, width, frame);
    }
    left += plane_size(plane).width;
    right += plane_size(other).width;
  }
}

void split_frame(const ColourMosaic& mosaic, const RawFrame& frame, PerPlane<RawFrame>& planes) {
  PerPlane<std::uint16_t*> pixels{};
  for (std::size_t i = 0; i < colour_plane_count; ++i) {
    RawFrame& plane = planes[i];
    const FrameSize size = mosaic.plane_size(colour_planes[i]);
    plane.width = size.width;
    plane.height = size.height;
    plane.bit_depth = frame.bit_depth;
    plane.storage_bits = frame.storage_bits;
    plane.depth_is_stated = frame.depth_is_stated;
    plane.scaled_from_bits = frame.scaled_from_bits;
    plane.pixels.resize(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height));
    pixels[i] = plane.pixels.data();
  }
  mosaic.split(frame.pixels.data(), pixels);
}

}  // namespace nerova_zel
