#include "batch/frame_reader.h"

#include <filesystem>

#include "batch/input_files.h"
#include "failure.h"
#include "file_bytes.h"
#include "frame_files.h"
#include "input_bytes.h"
#include "platform/files.h"

namespace nerova_zel {

namespace {

constexpr const char* frame_file = "the file of a frame";

}  // namespace

std::shared_ptr<const PictureFile> open_picture(const std::string& path) {
  if (is_folder(std::filesystem::u8path(path))) {
    throw Failure(path + " is a directory; " + frame_file + " is needed.");
  }
  return std::make_shared<PictureFile>(path);
}

void count_frames_of(FrameInput& input, const std::optional<HeaderlessLayout>& headerless) {
  if (headerless) {
    const std::optional<FileFacts> facts = file_facts(std::filesystem::u8path(input.path));
    input.frames = facts && facts->is_file ? count_frames(facts->size, *headerless) : 1;
    return;
  }
  try {
    const std::shared_ptr<const PictureFile> pictures = open_picture(input.path);
    input.frames = pictures->page_count();
    if (input.frames > std::uint64_t{1}) {
      input.pictures = pictures;  // where its pages lie need not be found out again
    }
  } catch (const std::exception&) {
    input.frames = 1;  // its own turn will tell what is wrong
  }
}

void read_frame(const FrameTicket& ticket, const std::optional<HeaderlessLayout>& headerless, Bytes& bytes,
                RawFrame& frame, const DepthChoice& depth) {
  const FrameInput& input = *ticket.input;
  frame.counted.reset();
  if (!headerless) {
    read_page(input.pictures ? *input.pictures : *open_picture(input.path), ticket.number, frame);
    return;
  }
  HeaderlessLayout layout = *headerless;
  if (!layout.format) {
    bytes = read_file(input.path, frame_file);
    layout.format = format_by_length(input.path, layout, bytes.size());
    bytes.erase(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(layout.header));
  } else if (!input.is_standard_input() && layout.stride == 0 && is_unpacked(*layout.format)) {
    // Straight to where the pixels are needed.
    frame.pixels.resize(frame_bytes(layout) / sizeof(std::uint16_t));
    CountsOnArrival counted{(1 << depth.bit_depth.value_or(significant_bits(*layout.format))) - 1, {}};
    const auto count = [&](const void* part, std::size_t size) {
      const auto* const pixels = static_cast<const std::uint16_t*>(part);
      counted.counts += count_pixels(pixels, size / sizeof(std::uint16_t), counted.full_scale);
    };
    const std::size_t present =
        read_bytes(input.path, frame_offset(layout, ticket.number), frame.pixels.data(), frame_bytes(layout), count);
    take_unpacked_frame(ticket.name(), present, layout, frame);
    frame.counted = counted;
    return;
  } else if (!input.is_standard_input()) {
    read_part_of_file(input.path, frame_file, frame_offset(layout, ticket.number), frame_bytes(layout), bytes);
  }
  unpack_frame(ticket.name(), bytes, layout, frame);
}

RawFrame read_only_frame(const std::string& path, const std::optional<HeaderlessLayout>& headerless) {
  FrameInput input;
  input.path = path;
  count_frames_of(input, headerless);
  if (input.frames > std::uint64_t{1}) {
    throw Failure(path + " holds more than one frame; files of a single one are needed.");
  }
  if (!headerless) {
    refuse_output(path);
  }
  Bytes bytes;
  RawFrame frame;
  read_frame({0, &input, 0}, headerless, bytes, frame);
  return frame;
}

}  // namespace nerova_zel
