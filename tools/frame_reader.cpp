#include "frame_reader.h"

#include "failure.h"
#include "file_bytes.h"
#include "picture_reader.h"

namespace nerova_zel {

void read_frame(const std::string& path, std::uint64_t number, const std::string& name,
                const std::optional<HeaderlessLayout>& headerless, Bytes& bytes, RawFrame& frame) {
  if (!headerless) {
    frame = read_picture(path);
    return;
  }
  HeaderlessLayout layout = *headerless;
  if (layout.format) {
    const std::size_t length = frame_bytes(layout);
    read_bytes(path, number * length, length, bytes);
  } else {
    bytes = read_bytes(path, "the file of a frame");
    layout.format = format_by_length(path, layout.size, bytes.size());
  }
  unpack_frame(name, bytes, layout, frame);
}

RawFrame read_only_frame(const std::string& path, const std::optional<HeaderlessLayout>& headerless) {
  if (count_frames(path, headerless) > 1) {
    throw Failure(path + " holds more than one frame; files of a single one are needed.");
  }
  Bytes bytes;
  RawFrame frame;
  read_frame(path, 0, path, headerless, bytes, frame);
  return frame;
}

}  // namespace nerova_zel
