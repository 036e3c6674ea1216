#include "frame_transformer.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <utility>

#include "failure.h"
#include "frame_reader.h"

namespace nerova_zel {

FrameTransformer::FrameTransformer(const FrameRequest& request, const Library& library, std::set<OutputKind> wanted)
    : request_(request), library_(library), origin_(request.origin), outputs_(std::move(wanted)) {
  if (request_.region) {
    origin_.x += request_.region->x;
    origin_.y += request_.region->y;
  }
}

FrameTransformer::Timing FrameTransformer::run(const FrameTicket& ticket) {
  const std::string name = ticket.name();
  read(ticket);
  crop(name);
  bit_depth_ = bit_depth_of(frame_, request_.bit_depth, name);
  outputs_.allocate(frame_.width, frame_.height);
  return transform();
}

void FrameTransformer::read(const FrameTicket& ticket) {
  if (ticket.input->is_standard_input()) {
    unpack_frame(ticket.name(), bytes_, *request_.headerless, frame_);
  } else {
    read_frame(ticket.input->path, ticket.number, ticket.name(), request_.headerless, bytes_, frame_);
  }
}

void FrameTransformer::crop(const std::string& name) {
  const std::string size = std::to_string(frame_.width) + " x " + std::to_string(frame_.height) + " pixels";
  if (frame_.width < 2 || frame_.height < 2) {
    throw Failure(name + " is " + size + "; a mosaic frame has at least 2 x 2.");
  }
  if (!request_.region) {
    return;
  }
  const Region& region = *request_.region;
  if (region.x > frame_.width - region.size.width || region.y > frame_.height - region.size.height) {
    throw Failure(name + " is " + size + ", which the region of --roi reaches beyond.");
  }
  const auto from = static_cast<std::size_t>(frame_.width);
  const auto to = static_cast<std::size_t>(region.size.width);
  for (std::size_t y = 0; y < static_cast<std::size_t>(region.size.height); ++y) {
    const auto row = (static_cast<std::size_t>(region.y) + y) * from + static_cast<std::size_t>(region.x);
    std::memmove(&frame_.pixels[y * to], &frame_.pixels[row], to * sizeof(std::uint16_t));
  }
  frame_.width = region.size.width;
  frame_.height = region.size.height;
  frame_.pixels.resize(to * static_cast<std::size_t>(region.size.height));
}

const std::vector<std::uint16_t>& FrameTransformer::pixels_to_transform() {
  if (!request_.calibration) {
    return frame_.pixels;
  }
  without_dark_level(frame_, {request_.layout, origin_.x, origin_.y, bit_depth_}, *request_.calibration, calibrated_);
  return calibrated_;
}

FrameTransformer::Timing FrameTransformer::transform() {
  const TransformInput input{request_.layout.phase(),
                             pixels_to_transform().data(),
                             origin_.x,
                             origin_.y,
                             frame_.width,
                             frame_.height,
                             bit_depth_,
                             static_cast<std::uint16_t>(request_.output_maximum)};
  const TransformOutput output = outputs_.pointers();
  Timing timing{};
  for (int i = 0; i < request_.repeat; ++i) {
    const auto start = std::chrono::steady_clock::now();
    library_.transform(input, output);
    const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - start;
    if (i == 0) {
      timing = {elapsed.count(), elapsed.count()};
    }
    timing.best_ms = std::min(timing.best_ms, elapsed.count());
  }
  return timing;
}

}  // namespace nerova_zel
