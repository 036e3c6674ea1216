#include "video/video_transformer.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "failure.h"
#include "frames/pixel_formats.h"
#include "processor/bands.h"
#include "processor/route.h"
#include "threads.h"
#include "video/panels.h"

namespace nerova_zel {

namespace {

/** The first video outputs are the 16-bit images of the library. */
constexpr std::size_t image_count = 5;
static_assert(describe(VideoOutput::dolp).pixels == VideoPixels::grey16 &&
              static_cast<std::size_t>(VideoOutput::dolp) == image_count - 1);
using ImageFlags = std::array<bool, image_count>;
using Images = std::array<std::uint16_t*, image_count>;
constexpr auto power_image = static_cast<std::size_t>(VideoOutput::power);
constexpr auto azimuth_image = static_cast<std::size_t>(VideoOutput::azimuth);
constexpr auto degree_image = static_cast<std::size_t>(VideoOutput::dolp);

constexpr VideoOutput video_output_of(std::size_t image) { return static_cast<VideoOutput>(image); }

/** Samples of a strip and of its images fit into the second-level cache of any processor. */
constexpr std::size_t strip_pixels = 81920;
/** Rows of a strip's call that are thrown away, because they are computed as the last of a frame. */
constexpr int overlap = 2;

Outputs outputs_at(const Images& images, int output_maximum) {
  Outputs outputs;
  outputs.total_power = images[power_image];
  outputs.horizontal_vertical = images[static_cast<std::size_t>(VideoOutput::hv)];
  outputs.diagonal = images[static_cast<std::size_t>(VideoOutput::diagonal)];
  outputs.azimuth = images[azimuth_image];
  outputs.degree_of_linear_polarization = images[degree_image];
  outputs.output_maximum = static_cast<std::uint16_t>(output_maximum);
  return outputs;
}

const VideoPicture& picture(const VideoPictures& wanted, VideoOutput output) {
  return wanted[static_cast<std::size_t>(output)];
}

bool is_aligned(const void* address) { return reinterpret_cast<std::uintptr_t>(address) % sizeof(std::uint16_t) == 0; }

}  // namespace

/** One frame on its way. Its parts may be computed by several threads. */
class VideoTransformer::Work {
 public:
  Work(const VideoTransformer& transformer, const VideoFrame& frame, const VideoPictures& wanted)
      : settings_(transformer.settings_),
        library_(transformer.library_),
        colours_(transformer.colours_),
        frame_(frame),
        wanted_(wanted),
        width_(static_cast<std::size_t>(frame.size.width)),
        storage_bits_(8 * frame.bytes_per_sample) {
    check();
    for (std::size_t image = 0; image < image_count; ++image) {
      needed_[image] = picture(wanted, video_output_of(image)).rows != nullptr;
    }
    const bool coloured = picture(wanted, VideoOutput::azimuth_picture).rows != nullptr;
    const bool panels = picture(wanted, VideoOutput::panels).rows != nullptr;
    needed_[azimuth_image] |= coloured || panels;
    needed_[degree_image] |= (coloured && colours_.needs_degree()) || panels;
    needed_[power_image] |= (coloured && colours_.needs_power()) || panels;
  }

  /** Whether nothing but the library's one call is needed. */
  bool is_one_call() const {
    bool in_place = !samples_change() && frame_.stride == width_ * sizeof(std::uint16_t);
    for (const VideoOutputDescription& output : video_output_table) {
      const VideoPicture& place = picture(wanted_, output.output);
      in_place =
          in_place && (place.rows == nullptr || (output.pixels == VideoPixels::grey16 && is_aligned(place.rows) &&
                                                 place.stride == width_ * sizeof(std::uint16_t)));
    }
    return in_place;
  }

  void compute_in_place() const {
    Images images{};
    for (std::size_t image = 0; image < images.size(); ++image) {
      images[image] = reinterpret_cast<std::uint16_t*>(picture(wanted_, video_output_of(image)).rows);
    }
    const Frame frame = rows_from(reinterpret_cast<const std::uint16_t*>(frame_.rows), 0, frame_.size.height);
    transform_in_bands([this](const Frame& rows, const Outputs& outputs) { library_.transform(rows, outputs); }, frame,
                       outputs_at(images, settings_.output_maximum), bands());
  }

  int bands() const { return bands_worth_a_thread(frame_.size.width, frame_.size.height, settings_.threads); }

  int strip_rows() const { return 2 * std::max(1, static_cast<int>(strip_pixels / (2 * width_))); }

  /** Every wanted output of a frame whose colours are computed alone, by the transformers of the planes. */
  void compute_colours(const std::vector<std::unique_ptr<VideoTransformer>>& transformers,
                       std::vector<std::uint16_t>& room) const {
    const std::size_t size = width_ * static_cast<std::size_t>(frame_.size.height);
    // The samples and images of the frame, then those of its planes.
    room.resize(2 * size * (1 + image_count));
    const std::uint16_t* const samples = samples_of(0, frame_.size.height, room.data());
    const ColourMosaic mosaic(*settings_.colour, settings_.origin, frame_.size);
    const auto plane_room = [&](std::size_t image) {
      PerPlane<std::uint16_t*> planes{};
      std::uint16_t* at = &room[size * (1 + image_count + image)];
      for (const ColourPlane plane : colour_planes) {
        planes[static_cast<std::size_t>(plane)] = at;
        const FrameSize plane_size = mosaic.plane_size(plane);
        at += static_cast<std::size_t>(plane_size.width) * static_cast<std::size_t>(plane_size.height);
      }
      return planes;
    };
    const PerPlane<std::uint16_t*> raw = plane_room(image_count);
    mosaic.split(samples, raw);
    for (const ColourPlane plane : colour_planes) {
      const auto i = static_cast<std::size_t>(plane);
      const FrameSize plane_size = mosaic.plane_size(plane);
      const std::size_t stride = static_cast<std::size_t>(plane_size.width) * sizeof(std::uint16_t);
      VideoPictures pictures{};
      for (std::size_t image = 0; image < image_count; ++image) {
        if (needed_[image]) {
          pictures[image] = {reinterpret_cast<std::uint8_t*>(plane_room(image)[i]), stride};
        }
      }
      transformers[i]->settings_.origin = mosaic.plane_origin(plane);
      transformers[i]->settings_.bit_depth = bit_depth();
      transformers[i]->transform({plane_size, reinterpret_cast<const std::uint8_t*>(raw[i]), stride, 2}, pictures);
    }
    Images images{};
    for (std::size_t image = 0; image < image_count; ++image) {
      if (needed_[image]) {
        images[image] = &room[size * (1 + image)];
        const PerPlane<std::uint16_t*> planes = plane_room(image);
        mosaic.join({planes[0], planes[1], planes[2], planes[3]}, images[image]);
      }
    }
    for (int y = 0; y < frame_.size.height; ++y) {
      write_row(y, images, static_cast<std::size_t>(y) * width_);
    }
    write_panels(0, frame_.size.height, images, samples);
  }

  /** Rows `first` to `end` of every wanted output, strip by strip. */
  void compute_band(int first, int end, std::vector<std::uint16_t>& room) const {
    const int height = frame_.size.height;
    const std::size_t image_size = width_ * static_cast<std::size_t>(strip_rows() + 1 + overlap);
    room.resize(image_size * (1 + image_count));
    Images images{};
    for (std::size_t image = 0; image < images.size(); ++image) {
      images[image] = needed_[image] ? &room[image_size * (1 + image)] : nullptr;
    }
    for (int row = first; row < end;) {
      int strip_end = std::min(row + strip_rows(), end);
      if (height - strip_end == 1) {
        ++strip_end;  // a call has at least two rows
      }
      const int call_end = std::min(strip_end + overlap, height);
      const std::uint16_t* const samples = samples_of(row, call_end, room.data());
      library_.transform(rows_from(samples, row, call_end), outputs_at(images, settings_.output_maximum));
      for (int y = row; y < strip_end; ++y) {
        write_row(y, images, static_cast<std::size_t>(y - row) * width_);
      }
      write_panels(row, strip_end, images, samples);
      row = strip_end;
    }
  }

 private:
  void check() const {
    if (frame_.size.width < 2 || frame_.size.height < 2) {
      throw Failure("a mosaic frame has at least 2 x 2 pixels; this one is " + std::to_string(frame_.size.width) +
                    " x " + std::to_string(frame_.size.height) + ".");
    }
    if (settings_.bit_depth > storage_bits_) {
      throw Failure("the bit depth " + std::to_string(settings_.bit_depth) + " is more than the " +
                        std::to_string(storage_bits_) + " bits of a sample.",
                    Fact::bit_depth_too_great);
    }
    if (settings_.calibration) {
      check_bit_depth(*settings_.calibration, bit_depth(), "the frame");
    }
  }

  int bit_depth() const { return settings_.bit_depth > 0 ? settings_.bit_depth : storage_bits_; }
  int shift() const { return settings_.left_aligned ? storage_bits_ - bit_depth() : 0; }

  bool samples_change() const {
    return frame_.bytes_per_sample == 1 || shift() > 0 || settings_.calibration.has_value() || !is_aligned(frame_.rows);
  }

  const std::uint8_t* bytes_of_row(int row) const {
    return frame_.rows + frame_.stride * static_cast<std::size_t>(row);
  }

  /** The samples of rows, without gaps: in place, or put into `room`. */
  const std::uint16_t* samples_of(int row, int end, std::uint16_t* room) const {
    if (!samples_change() && frame_.stride == width_ * sizeof(std::uint16_t)) {
      return reinterpret_cast<const std::uint16_t*>(bytes_of_row(row));
    }
    std::uint16_t* to = room;
    for (int y = row; y < end; ++y, to += width_) {
      if (frame_.bytes_per_sample == 1) {
        unpack(PixelFormat::mono8, bytes_of_row(y), width_, to);
      } else {
        std::memcpy(to, bytes_of_row(y), width_ * sizeof(std::uint16_t));
      }
      if (shift() > 0) {
        std::transform(to, to + width_, to,
                       [by = shift()](std::uint16_t sample) { return static_cast<std::uint16_t>(sample >> by); });
      }
    }
    if (settings_.calibration) {
      const Origin origin{settings_.origin.x, settings_.origin.y + row};
      without_dark_level(room, {frame_.size.width, end - row}, {settings_.layout, origin, bit_depth()},
                         *settings_.calibration, room);
    }
    return room;
  }

  Frame rows_from(const std::uint16_t* samples, int row, int end) const {
    Frame rows;
    rows.pixels = samples;
    rows.width = frame_.size.width;
    rows.height = end - row;
    rows.origin_x = settings_.origin.x;
    rows.origin_y = settings_.origin.y + row;
    rows.phase = static_cast<Phase>(settings_.layout.phase());
    rows.bit_depth = bit_depth();
    return rows;
  }

  std::uint8_t* row_of(VideoOutput output, int y) const {
    const VideoPicture& place = picture(wanted_, output);
    return place.rows == nullptr ? nullptr : place.rows + place.stride * static_cast<std::size_t>(y);
  }

  void write_row(int y, const Images& images, std::size_t at) const {
    for (std::size_t image = 0; image < images.size(); ++image) {
      if (std::uint8_t* const to = row_of(video_output_of(image), y)) {
        std::memcpy(to, images[image] + at, width_ * sizeof(std::uint16_t));
      }
    }
    if (std::uint8_t* const to = row_of(VideoOutput::azimuth_picture, y)) {
      const auto from = [&](std::size_t image) { return images[image] == nullptr ? nullptr : images[image] + at; };
      colours_.paint(from(azimuth_image), from(degree_image), from(power_image), width_, to);
    }
  }

  void write_panels(int row, int end, const Images& images, const std::uint16_t* samples) const {
    if (picture(wanted_, VideoOutput::panels).rows == nullptr) {
      return;
    }
    const PanelScales scales{settings_.output_maximum, (1 << bit_depth()) - 1, settings_.degree_end,
                             settings_.power_end};
    const int panel_height = frame_.size.height / 2;
    const std::size_t row_bytes = bytes_per_pixel(VideoPixels::rgb) * width_;
    for (int y = row; y + 1 < end; y += 2) {
      const std::size_t at = static_cast<std::size_t>(y - row) * width_;
      std::uint8_t* const upper = row_of(VideoOutput::panels, y / 2);
      std::uint8_t* const lower = row_of(VideoOutput::panels, panel_height + y / 2);
      paint_panel_rows({images[power_image] + at,
                        images[azimuth_image] + at,
                        images[degree_image] + at,
                        {samples + at, samples + at + width_}},
                       scales, colours_, width_ / 2, upper, lower);
      if (width_ % 2 != 0) {
        std::fill_n(upper + row_bytes - bytes_per_pixel(VideoPixels::rgb), bytes_per_pixel(VideoPixels::rgb), 0);
        std::fill_n(lower + row_bytes - bytes_per_pixel(VideoPixels::rgb), bytes_per_pixel(VideoPixels::rgb), 0);
      }
    }
    if (end == frame_.size.height && end % 2 != 0) {
      std::fill_n(row_of(VideoOutput::panels, end - 1), row_bytes, 0);
    }
  }

  const VideoSettings& settings_;
  const Library& library_;
  const AzimuthColours& colours_;
  const VideoFrame& frame_;
  const VideoPictures& wanted_;
  std::size_t width_;
  int storage_bits_;
  ImageFlags needed_{};
};

VideoTransformer::VideoTransformer(VideoSettings settings, const std::string& library_path)
    : settings_(std::move(settings)),
      library_(library_path),
      route_(route_of(library_)),
      colours_(settings_.style, {settings_.output_maximum, settings_.degree_end, settings_.power_end}) {
  if (settings_.colour) {
    VideoSettings plane = settings_;
    plane.colour.reset();
    plane.left_aligned = false;
    plane.colour_calibrations.reset();
    for (std::size_t i = 0; i < colour_plane_count; ++i) {
      if (settings_.colour_calibrations) {
        plane.calibration = (*settings_.colour_calibrations)[i];
      }
      planes_.push_back(std::make_unique<VideoTransformer>(plane, library_path));
    }
    settings_.calibration.reset();  // the planes have theirs
  }
  if (settings_.calibration) {
    library_.set_calibration(settings_.calibration->matrices);
  }
}

void VideoTransformer::transform(const VideoFrame& frame, const VideoPictures& wanted) {
  const Work work(*this, frame, wanted);
  if (settings_.colour) {
    rooms_.resize(std::max<std::size_t>(rooms_.size(), 1));
    work.compute_colours(planes_, rooms_.front());
    return;
  }
  if (work.is_one_call()) {
    work.compute_in_place();
    return;
  }
  const std::vector<std::int32_t> limits = band_limits(frame.size.height, work.bands());
  rooms_.resize(std::max(rooms_.size(), limits.size() - 1));
  on_threads(limits.size() - 1,
             [&](std::size_t band) { work.compute_band(limits[band], limits[band + 1], rooms_[band]); });
}

}  // namespace nerova_zel
