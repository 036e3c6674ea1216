#include "commands/viewed_inputs.h"

#include <algorithm>
#include <filesystem>

#include "batch/frame_notes.h"
#include "batch/frame_reader.h"
#include "batch/frame_sequence.h"
#include "batch/interruption.h"
#include "failure_text.h"
#include "input_bytes.h"
#include "platform/files.h"

namespace nerova_zel {

namespace {

/** How long after its last change a file counts as one that grows. */
constexpr std::chrono::seconds growing_time{5};
constexpr std::chrono::milliseconds between_looks{100};

class StandardInput : public FrameFeed {
 public:
  StandardInput(FrameInput input, const FrameRequest& request)
      : request_(request), frames_({std::move(input)}, request.headerless) {}

  void run(FrameStream& stream, const std::atomic<bool>& stop) override {
    FrameTicket ticket;
    Bytes bytes;
    while (!stop && frames_.next(ticket, bytes)) {
      RawFrame frame;
      read_frame(ticket, request_.headerless, bytes, frame);
      stream.add(ticket.number, std::move(frame));
    }
  }

 private:
  const FrameRequest& request_;
  FrameSequence frames_;
};

bool was_written_now(const std::string& path) {
  const auto facts = file_facts(std::filesystem::u8path(path));
  return facts && std::chrono::system_clock::now().time_since_epoch() - facts->changed < growing_time;
}

}  // namespace

ViewedInputs::ViewedInputs(const FrameRequest& request, std::unique_ptr<CameraFeed> camera, std::size_t most_bytes)
    : request_(request) {
  for (FrameInput& input : find_inputs(request.frames, request.headerless, request.recursive, request.range)) {
    if (input.is_standard_input()) {
      auto feed = std::make_unique<StandardInput>(input, request);
      add_stream(std::move(input), ViewedSource::Kind::stream, std::move(feed), most_bytes);
      continue;
    }
    Source source;
    source.input = std::move(input);
    if (request_.headerless && request_.headerless->format) {
      source.is_growing = was_written_now(source.input.path);
      source.grown = Clock::now();
      look_for_growth(source);
    }
    sources_.push_back(std::move(source));
  }
  if (camera) {
    FrameInput input;
    input.path = camera->description().camera;
    input.frames.reset();
    add_stream(std::move(input), ViewedSource::Kind::camera, std::move(camera), most_bytes);
  }
}

ViewedInputs::~ViewedInputs() {
  stop_ = true;
  if (!readers_.empty()) {
    Interruption::request();  // one may be waiting for standard input
  }
  for (std::thread& reader : readers_) {
    reader.join();
  }
}

bool ViewedInputs::has_streams() const { return !readers_.empty(); }

void ViewedInputs::add_stream(FrameInput input, ViewedSource::Kind kind, std::unique_ptr<FrameFeed> feed,
                              std::size_t most_bytes) {
  auto stream = std::make_shared<FrameStream>(input.name(), most_bytes);
  readers_.emplace_back([this, stream, moved = std::shared_ptr<FrameFeed>(std::move(feed))] {
    try {
      moved->run(*stream, stop_);
      stream->end("");
    } catch (...) {
      stream->end(describe_current_failure());
    }
  });
  Source source;
  source.input = std::move(input);
  source.kind = kind;
  source.stream = std::move(stream);
  sources_.push_back(std::move(source));
}

ViewedInputs::Source ViewedInputs::source_of(std::size_t source) const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return sources_.at(source);
}

/** Whether its number of frames, or whether more may come, has changed. Of a file that grows whole frames count. */
bool ViewedInputs::look_for_growth(Source& source) {
  const HeaderlessLayout& layout = *request_.headerless;
  const auto facts = file_facts(std::filesystem::u8path(source.input.path));
  if (!facts) {
    return false;
  }
  const std::uint64_t bytes = facts->size;
  const auto now = Clock::now();
  const bool was_growing = source.is_growing;
  if (source.was_looked_at && bytes != source.bytes) {
    source.is_growing = true;
    source.version += bytes < source.bytes ? 1 : 0;  // another recording
  }
  source.grown = bytes != source.bytes ? now : source.grown;
  source.bytes = bytes;
  source.was_looked_at = true;
  source.is_growing = source.is_growing && now - source.grown < growing_time;
  const std::uint64_t frames =
      source.is_growing ? (bytes - std::min(bytes, layout.header)) / frame_bytes(layout) : count_frames(bytes, layout);
  const bool has_changed = source.input.frames != frames || was_growing != source.is_growing;
  source.input.frames = frames;
  return has_changed;
}

std::uint64_t ViewedInputs::revision() {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (request_.headerless && request_.headerless->format && Clock::now() - looked_ > between_looks) {
    looked_ = Clock::now();
    for (Source& source : sources_) {
      if (!source.stream && look_for_growth(source)) {
        ++changes_;
      }
    }
  }
  std::uint64_t revision = changes_;
  for (const Source& source : sources_) {
    revision += source.stream ? source.stream->state().revision : 0;
  }
  return revision;
}

std::vector<ViewedSource> ViewedInputs::sources() {
  const std::lock_guard<std::mutex> lock(mutex_);
  std::vector<ViewedSource> sources;
  sources.reserve(sources_.size());
  for (const Source& known : sources_) {
    ViewedSource source;
    source.name = known.input.name();
    source.kind = known.kind;
    if (known.stream) {
      const FrameStream::State state = known.stream->state();
      source.first = state.first;
      source.frames = state.frames;
      source.live = state.is_live;
      source.error = state.error;
    } else {
      source.first = known.input.range.first;
      source.frames = *known.input.frames > source.first ? known.input.wanted_frames().value_or(0) : 0;
      source.live = known.is_growing;
    }
    if (request_.region) {
      source.size = request_.region->size;
    } else if (request_.headerless) {
      source.size = request_.headerless->size;
    }
    sources.push_back(std::move(source));
  }
  return sources;
}

RawFrame ViewedInputs::read(std::size_t source, std::uint64_t frame) {
  const Source known = source_of(source);
  const std::string name = known.input.frame_name(frame);
  RawFrame result;
  if (known.stream) {
    result = known.stream->read(frame);
  } else {
    Bytes bytes;
    read_frame({0, &known.input, frame}, request_.headerless, bytes, result);
  }
  check_mosaic_size(result, name);
  if (request_.region) {
    crop(result, *request_.region, name);
  }
  return result;
}

/** Of headerless pixels without padding, which can be told apart by where they lie. */
std::optional<RawFrame> ViewedInputs::read_rows(std::size_t source, std::uint64_t frame, int first_row, int end_row) {
  const Source known = source_of(source);
  if (known.stream || !request_.headerless || !request_.headerless->format || request_.headerless->stride != 0 ||
      request_.region) {
    return std::nullopt;
  }
  constexpr std::uint64_t group = 8;  // so many pixels begin and end at a byte in every format
  const HeaderlessLayout& layout = *request_.headerless;
  const auto width = static_cast<std::uint64_t>(layout.size.width);
  const std::uint64_t first = static_cast<std::uint64_t>(first_row) * width;
  const std::uint64_t start = first - first % group;
  const std::uint64_t end = static_cast<std::uint64_t>(end_row) * width;
  // A frame of one row, from the group on in which the first pixel lies.
  const HeaderlessLayout part{{static_cast<int>(end - start), 1}, layout.format};
  Bytes bytes;
  read_part_of_file(known.input.path, "the file of a frame",
                    frame_offset(layout, frame) + byte_count(*layout.format, static_cast<std::size_t>(start)),
                    frame_bytes(part), bytes);
  RawFrame rows;
  unpack_frame(known.input.frame_name(frame), bytes, part, rows);
  rows.pixels.erase(rows.pixels.begin(), rows.pixels.begin() + static_cast<std::ptrdiff_t>(first - start));
  rows.counted.reset();
  rows.width = layout.size.width;
  rows.height = end_row - first_row;
  return rows;
}

std::uint64_t ViewedInputs::version(std::size_t source, std::uint64_t) {
  const Source known = source_of(source);
  if (known.stream || (request_.headerless && request_.headerless->format)) {
    return known.version;  // frames are added, and stay as they are
  }
  const auto facts = file_facts(std::filesystem::u8path(known.input.path));
  return facts ? static_cast<std::uint64_t>(facts->changed.count()) : 0;
}

std::string ViewedInputs::name(std::size_t source, std::uint64_t frame) const {
  return source_of(source).input.frame_name(frame);
}

std::vector<std::string> ViewedInputs::notes(const std::string& name, const SensorTransformer& transformer) const {
  FrameNotes notes;  // each frame has its own: it may be the only one that is looked at
  return notes.of(name, transformer, request_.depth);
}

std::string ViewedInputs::describe_failure() const { return describe_current_failure(); }

}  // namespace nerova_zel
