#pragma once

#include <array>
#include <cstddef>

namespace nerova_zel {

/** What a stream of frames can be turned into. */
enum class VideoOutput { power, hv, diagonal, azimuth, dolp, azimuth_picture, panels };

/** Pixels of a video output. */
enum class VideoPixels {
  grey16,  ///< one 16-bit sample in the byte order of this computer
  rgb,     ///< three bytes
};

/** Everything that follows from a video output, once. */
struct VideoOutputDescription {
  VideoOutput output;
  /** As users write it. */
  const char* name;
  const char* content;
  VideoPixels pixels;
};

constexpr std::array<VideoOutputDescription, 7> video_output_table = {
    {{VideoOutput::power, "power", "Total power", VideoPixels::grey16},
     {VideoOutput::hv, "hv", "Stokes S1 where it is positive", VideoPixels::grey16},
     {VideoOutput::diagonal, "diagonal", "Stokes S2 where it is positive", VideoPixels::grey16},
     {VideoOutput::azimuth, "azimuth", "Angle of linear polarization plus 90 degrees; the maximum is 180 degrees",
      VideoPixels::grey16},
     {VideoOutput::dolp, "dolp", "Degree of linear polarization; the maximum is 1", VideoPixels::grey16},
     {VideoOutput::azimuth_picture, "azimuth-picture", "Angle in colour", VideoPixels::rgb},
     {VideoOutput::panels, "panels", "Power, angle, degree and raw pixels in one picture", VideoPixels::rgb}}};

constexpr const VideoOutputDescription& describe(VideoOutput output) {
  return video_output_table[static_cast<std::size_t>(output)];
}

constexpr std::size_t bytes_per_pixel(VideoPixels pixels) { return pixels == VideoPixels::rgb ? 3 : 2; }

constexpr bool video_rows_are_in_order() {
  for (std::size_t i = 0; i < video_output_table.size(); ++i) {
    if (video_output_table[i].output != static_cast<VideoOutput>(i)) {
      return false;
    }
  }
  return true;
}
static_assert(video_rows_are_in_order(), "describe takes the row by the number of the output");

}  // namespace nerova_zel
