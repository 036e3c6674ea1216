#include "batch/frame_reader.h"

#include <filesystem>

#include "batch/input_files.h"
#include "failure.h"
#include "frame_files.h"
#include "input_bytes.h"

namespace nerova_zel {

namespace {

constexpr const char* frame_file = "the file of a frame";

}  // namespace

std::uint64_t frames_in_file(const std::string& path, const std::optional<HeaderlessLayout>& headerless) {
  if (!headerless) {
    return 1;
  }
  std::error_code error;
  const std::uint64_t bytes = std::filesystem::file_size(path, error);
  return error ? 1 : count_frames(bytes, *headerless);
}

void read_frame(const FrameTicket& ticket, const std::optional<HeaderlessLayout>& headerless, Bytes& bytes,
                RawFrame& frame) {
  const std::string& path = ticket.input->path;
  if (!headerless) {
    frame = read_picture(path);
    return;
  }
  HeaderlessLayout layout = *headerless;
  if (!layout.format) {
    bytes = read_file(path, frame_file);
    layout.format = format_by_length(path, layout.size, bytes.size());
  } else if (!ticket.input->is_standard_input()) {
    const std::size_t length = frame_bytes(layout);
    read_part_of_file(path, frame_file, ticket.number * length, length, bytes);
  }
  unpack_frame(ticket.name(), bytes, layout, frame);
}

RawFrame read_only_frame(const std::string& path, const std::optional<HeaderlessLayout>& headerless) {
  if (frames_in_file(path, headerless) > 1) {
    throw Failure(path + " holds more than one frame; files of a single one are needed.");
  }
  if (!headerless) {
    refuse_output(path);
  }
  const FrameInput input{path, 1, ""};
  Bytes bytes;
  RawFrame frame;
  read_frame({0, &input, 0}, headerless, bytes, frame);
  return frame;
}

}  // namespace nerova_zel
