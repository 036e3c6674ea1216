// Pixel formats, colour planes and recordings.
#include <algorithm>
#include <string_view>

#include "c_interface/guarded_call.h"
#include "frames/colour_formats.h"
#include "frames/pixel_formats.h"
#include "frames/recording.h"
#include "threads.h"

namespace nerova_zel {

namespace {

const std::vector<std::pair<std::string, PixelFormat>>& all_formats() {
  static const auto formats = [] {
    std::vector<std::pair<std::string, PixelFormat>> all = pixel_format_names();
    for (const ColourFormat& colour : colour_formats()) {
      all.emplace_back(colour.name, colour.format);
    }
    return all;
  }();
  return formats;
}

PixelFormat format_of(const char* name) {
  require(name != nullptr, "there is no pixel format");
  for (const auto& [known, format] : all_formats()) {
    if (known == name) {
      return format;
    }
  }
  throw ArgumentError("there is no pixel format \"" + std::string(name) + "\"");
}

ColourPattern pattern_of(const char* name) {
  require(name != nullptr, "there is no colour pattern");
  for (const auto& [known, pattern] : colour_patterns) {
    if (std::string_view(known) == name) {
      return pattern;
    }
  }
  throw ArgumentError("there is no colour pattern \"" + std::string(name) + "\": RGGB, GRBG, GBRG and BGGR are known");
}

/** Unpacks a frame in parts that start at bytes, on as many threads as are worth their start. */
void unpack_on_threads(PixelFormat format, const unsigned char* bytes, std::size_t pixels, std::uint16_t* unpacked,
                       std::int32_t threads) {
  constexpr std::size_t fewest = 262144;  // pixels that take about as long as a thread to start
  const std::size_t parts = std::clamp<std::size_t>(pixels / fewest, 1, static_cast<std::size_t>(threads));
  on_threads(parts, [&](std::size_t part) {
    const std::size_t first = pixels / 8 * part / parts * 8;
    const std::size_t end = part + 1 == parts ? pixels : pixels / 8 * (part + 1) / parts * 8;
    unpack(format, bytes + byte_count(format, first), end - first, unpacked + first);
  });
}

}  // namespace

}  // namespace nerova_zel

using namespace nerova_zel;

int32_t nv_imaging_pixel_format_name(int32_t index, const char** name) {
  return guarded_call([&] {
    require(name != nullptr && index >= 0, "a pixel format has a number from 0, and its name needs a place");
    const auto& formats = all_formats();
    const auto at = static_cast<std::size_t>(index);
    *name = at < formats.size() ? formats[at].first.c_str() : nullptr;
  });
}

int32_t nv_imaging_pixel_format(const char* name, int32_t* significant, int32_t* storage) {
  return guarded_call([&] {
    const PixelFormat format = format_of(name);
    if (significant != nullptr) {
      *significant = significant_bits(format);
    }
    if (storage != nullptr) {
      *storage = storage_bits(format);
    }
  });
}

int32_t nv_imaging_unpack(const char* format, const void* bytes, size_t byte_count, size_t pixels, size_t frames,
                          uint16_t* unpacked, int32_t threads) {
  return guarded_call([&] {
    const PixelFormat known = format_of(format);
    require(bytes != nullptr && unpacked != nullptr, "there are no bytes, or no room for pixels");
    require(pixels > 0 && frames > 0 && threads > 0, "pixels, frames and threads must be 1 or more");
    const std::size_t one = nerova_zel::byte_count(known, pixels);
    if (byte_count / one != frames || byte_count % one != 0) {
      throw ArgumentError(std::to_string(frames) + " frames of " + std::to_string(pixels) + " pixels of " + format +
                          " take " + std::to_string(one) + " bytes each, but " + std::to_string(byte_count) +
                          " bytes are there");
    }
    const auto* const first = static_cast<const unsigned char*>(bytes);
    for (std::size_t frame = 0; frame < frames; ++frame) {
      unpack_on_threads(known, first + frame * one, pixels, unpacked + frame * pixels, threads);
    }
  });
}

int32_t nv_imaging_split_colours(const uint16_t* pixels, int32_t width, int32_t height, const char* pattern,
                                 uint16_t* planes) {
  return guarded_call([&] {
    const ColourPattern known = pattern_of(pattern);
    require(pixels != nullptr && planes != nullptr, "there is no frame, or no room for its planes");
    require(width >= 4 && height >= 4 && width % 4 == 0 && height % 4 == 0,
            "a colour frame must have multiples of 4 as width and height, so that its planes are equal in size");
    const std::size_t one = static_cast<std::size_t>(width / 2) * static_cast<std::size_t>(height / 2);
    ColourMosaic(known, {0, 0}, {width, height})
        .split(pixels, {planes, planes + one, planes + 2 * one, planes + 3 * one});
  });
}

int32_t nv_imaging_read_recording(const char* text, size_t length, const char* name, nv_imaging_recording* recording) {
  return guarded_call([&] {
    require(text != nullptr && name != nullptr && recording != nullptr, "there is no text, no name or no place");
    const Recording found = parse_recording(std::string(text, length), name);
    *recording = {found.frames,
                  found.size.width,
                  found.size.height,
                  found.origin.x,
                  found.origin.y,
                  found.layout.angle_at(0, 0),
                  significant_bits(found.format),
                  name_of(found.format),
                  found.colour ? name_of(*found.colour) : nullptr};
  });
}
