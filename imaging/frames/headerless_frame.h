#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "frames/pixel_formats.h"
#include "frames/raw_frame.h"

namespace nerova_zel {

/** How files and streams without a header are laid out. */
struct HeaderlessLayout {
  FrameSize size;
  /** Without it a file is one frame, of 8- or 16-bit pixels as its length says. */
  std::optional<PixelFormat> format;
};

/** Bytes of one frame; the layout's format must be known. */
std::size_t frame_bytes(const HeaderlessLayout& layout);

/** How many frames so many bytes hold, a last one that is cut short included, at least 1; 1 for an unknown format. */
std::uint64_t count_frames(std::uint64_t bytes, const HeaderlessLayout& layout);

/** The format that makes a file of so many bytes one frame: Mono8 or Mono16. `name` is the file's. Throws Failure. */
PixelFormat format_by_length(const std::string& name, const FrameSize& size, std::uint64_t bytes);

/** Unpacks one frame of a known format; `name` is what failures call it. Throws Failure if there are too few bytes. */
void unpack_frame(const std::string& name, const std::vector<unsigned char>& bytes, const HeaderlessLayout& layout,
                  RawFrame& frame);

}  // namespace nerova_zel
