#include "commands/viewed_inputs.h"

#include "batch/frame_notes.h"
#include "batch/frame_reader.h"
#include "failure_text.h"

namespace nerova_zel {

ViewedInputs::ViewedInputs(const FrameRequest& request)
    : request_(request), inputs_(find_inputs(request.frames, request.headerless, request.recursive, request.range)) {}

std::vector<ViewedSource> ViewedInputs::sources() {
  const std::lock_guard<std::mutex> lock(mutex_);
  std::vector<ViewedSource> sources;
  sources.reserve(inputs_.size());
  for (const FrameInput& input : inputs_) {
    ViewedSource source;
    source.name = input.name();
    source.first = input.range.first;
    source.frames = input.wanted_frames().value_or(0);
    if (request_.headerless) {
      source.size = request_.headerless->size;
    }
    sources.push_back(std::move(source));
  }
  return sources;
}

std::uint64_t ViewedInputs::revision() { return 0; }

RawFrame ViewedInputs::read(std::size_t source, std::uint64_t frame) {
  FrameInput input;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    input = inputs_.at(source);
  }
  RawFrame result;
  Bytes bytes;
  read_frame({0, &input, frame}, request_.headerless, bytes, result);
  check_mosaic_size(result, input.frame_name(frame));
  if (request_.region) {
    crop(result, *request_.region, input.frame_name(frame));
  }
  return result;
}

std::string ViewedInputs::name(std::size_t source, std::uint64_t frame) const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return inputs_.at(source).frame_name(frame);
}

std::vector<std::string> ViewedInputs::notes(const std::string& name, const SensorTransformer& transformer) const {
  FrameNotes notes;  // each frame has its own: it may be the only one that is looked at
  return notes.of(name, transformer, request_.depth);
}

std::string ViewedInputs::describe_failure() const { return describe_current_failure(); }

}  // namespace nerova_zel
