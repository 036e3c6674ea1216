#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "file_bytes.h"
#include "pixel_formats.h"
#include "raw_frame.h"

namespace nerova_zel {

/** What the user says of files without a header. */
struct HeaderlessLayout {
  FrameSize size;
  /** Without it a file is one frame, of 8- or 16-bit pixels as its length says. */
  std::optional<PixelFormat> format;
};

/** Bytes of one frame; the layout's format must be known. */
std::size_t frame_bytes(const HeaderlessLayout& layout);

/** How many frames a file holds, a last one that is cut short included; 1 where the layout or its format is unknown. */
std::uint64_t count_frames(const std::string& path, const std::optional<HeaderlessLayout>& headerless);

/** The format that makes a file of so many bytes one frame: Mono8 or Mono16. Throws Failure. */
PixelFormat format_by_length(const std::string& path, const FrameSize& size, std::uint64_t bytes);

/** Unpacks one frame of a known format; `name` is what to call it should it be cut short. Throws Failure. */
void unpack_frame(const std::string& name, const Bytes& bytes, const HeaderlessLayout& layout, RawFrame& frame);

}  // namespace nerova_zel
