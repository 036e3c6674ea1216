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
  /** Bytes of a file or stream before its first frame. */
  std::uint64_t header = 0;
  /** Bytes from the start of a row to that of the next, which then starts at a byte; 0 where rows are not padded. */
  std::size_t stride = 0;
};

/** Throws Failure if a frame is larger than what a program of this word size can address. */
void check_size(const FrameSize& size);

/** Throws Failure as check_size, if a row does not fit the stride, or a stride comes without a format. */
void check_layout(const HeaderlessLayout& layout);

/** Bytes from one frame to the next; the layout's format must be known. */
std::size_t frame_bytes(const HeaderlessLayout& layout);

/** Where a frame begins in its file. */
std::uint64_t frame_offset(const HeaderlessLayout& layout, std::uint64_t number);

/**
 * How many frames a file of so many bytes holds, a last one that is cut short included, at least 1; 1 for an unknown
 * format.
 */
std::uint64_t count_frames(std::uint64_t bytes, const HeaderlessLayout& layout);

/** The format that makes a file of so many bytes one frame: Mono8 or Mono16. `name` is the file's. Throws Failure. */
PixelFormat format_by_length(const std::string& name, const HeaderlessLayout& layout, std::uint64_t bytes);

/**
 * Unpacks one frame of a known format, which begins at the first byte; `name` is what failures call it. The padding of
 * the last row may be missing. Throws Failure if there are too few bytes.
 */
void unpack_frame(const std::string& name, const std::vector<unsigned char>& bytes, const HeaderlessLayout& layout,
                  RawFrame& frame);

/** The same for a frame whose pixels are there already, `bytes` of them, as is_unpacked allows. */
void take_unpacked_frame(const std::string& name, std::size_t bytes, const HeaderlessLayout& layout, RawFrame& frame);

}  // namespace nerova_zel
