#include "frame_job.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <opencv2/core.hpp>

#include "failure.h"
#include "frame_pictures.h"
#include "frame_reader.h"

namespace nerova_zel {

namespace fs = std::filesystem;

namespace {

/** Percentages of a frame's pixels. */
struct Brightness {
  double saturated;  ///< at full scale or above
  double above;      ///< above full scale
};

Brightness brightness_of(const std::vector<std::uint16_t>& pixels, int full_scale) {
  // Counted in 32 bits, which a frame's pixels do not exceed: compilers make much faster code of it than of 64.
  std::uint32_t saturated = 0;
  std::uint32_t above = 0;
  for (const std::uint16_t pixel : pixels) {
    saturated += pixel >= full_scale ? 1U : 0U;
    above += pixel > full_scale ? 1U : 0U;
  }
  const double percent = 100.0 / static_cast<double>(pixels.size());
  return {percent * saturated, percent * above};
}

}  // namespace

FrameJob::FrameJob(const TransformRequest& request, const Library& library)
    : request_(request), library_(library), origin_(request.origin), outputs_(request.outputs) {
  if (request_.region) {
    origin_.x += request_.region->x;
    origin_.y += request_.region->y;
  }
}

FrameReport FrameJob::run(const FrameTicket& ticket) {
  try {
    return work(ticket);
  } catch (...) {
    std::string sentence = describe_current_failure();
    const std::string name = ticket.name();
    if (sentence.find(name) == std::string::npos) {
      sentence = name + ": " + sentence;
    }
    return {FrameReport::Result::failed, sentence, "", 0};
  }
}

FrameReport FrameJob::work(const FrameTicket& ticket) {
  const std::string name = ticket.name();
  if (!request_.overwrite && is_finished(ticket)) {
    return {
        FrameReport::Result::skipped,
        name + ": skipped, its outputs are in " + request_.directory.string() + " already; --overwrite makes them anew",
        "", 0};
  }
  read(ticket);
  crop(name);
  const int depth = bit_depth_of(frame_, request_.bit_depth, name);
  outputs_.allocate(frame_.width, frame_.height);
  const Timing timing = transform(depth);
  write(ticket, depth);
  return describe(name, depth, timing);
}

/** Whether all outputs are there, and made since the frame and the calibration were. */
bool FrameJob::is_finished(const FrameTicket& ticket) const {
  std::error_code error;
  fs::file_time_type made = request_.calibrated;
  if (!ticket.input->is_standard_input()) {
    made = std::max(made, fs::last_write_time(ticket.input->path, error));
  }
  const std::string stem = ticket.input->output_stem(ticket.number);
  return !error && std::all_of(request_.files.begin(), request_.files.end(), [&](const OutputFile& file) {
    const fs::path path = request_.directory / (stem + file.ending);
    return fs::is_regular_file(path, error) && fs::last_write_time(path, error) > made && !error;
  });
}

void FrameJob::read(const FrameTicket& ticket) {
  if (ticket.input->is_standard_input()) {
    unpack_frame(ticket.name(), bytes_, *request_.headerless, frame_);
  } else {
    read_frame(ticket.input->path, ticket.number, ticket.name(), request_.headerless, bytes_, frame_);
  }
}

void FrameJob::crop(const std::string& name) {
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

const std::vector<std::uint16_t>& FrameJob::pixels_to_transform(int bit_depth) {
  if (!request_.calibration) {
    return frame_.pixels;
  }
  without_dark_level(frame_, {request_.layout, origin_.x, origin_.y, bit_depth}, *request_.calibration, calibrated_);
  return calibrated_;
}

FrameJob::Timing FrameJob::transform(int bit_depth) {
  const TransformInput input{request_.layout.phase(),
                             pixels_to_transform(bit_depth).data(),
                             origin_.x,
                             origin_.y,
                             frame_.width,
                             frame_.height,
                             bit_depth,
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

void FrameJob::write(const FrameTicket& ticket, int bit_depth) {
  PictureContent content;
  content.name = fs::path(ticket.name()).filename().string();
  content.layout = request_.layout;
  content.origin_x = origin_.x;
  content.origin_y = origin_.y;
  content.bit_depth = bit_depth;
  content.output_maximum = request_.output_maximum;
  content.frame = cv::Mat(frame_.height, frame_.width, CV_16U, frame_.pixels.data());
  content.normalized_stokes = outputs_.image(OutputKind::stokes);
  content.total_power = outputs_.image(OutputKind::power);
  content.azimuth = outputs_.image(OutputKind::azimuth);
  content.degree = outputs_.image(OutputKind::dolp);
  FramePictures pictures(content, request_.picture_style);
  FileSet files;
  outputs_.write(files, request_.directory, ticket.input->output_stem(ticket.number), request_.files,
                 [&](OutputKind kind) { return pictures.draw(kind); });
  files.commit();
}

FrameReport FrameJob::describe(const std::string& name, int bit_depth, const Timing& timing) const {
  const int full_scale = (1 << bit_depth) - 1;
  const Brightness brightness = brightness_of(frame_.pixels, full_scale);
  FrameReport report;
  report.result = FrameReport::Result::done;
  report.pixels = frame_.pixels.size();
  if (brightness.above > 0.0) {
    report.note = cv::format("note: %.1f %% of the pixels of %s exceed %d, the full scale of %d bits.",
                             brightness.above, name.c_str(), full_scale, bit_depth);
  }
  const double megapixels = static_cast<double>(frame_.pixels.size()) / 1e6;
  report.line = cv::format("%s: %d x %d, %d-bit, %.1f %% saturated; transform %.2f ms (%.0f Mpixel/s)", name.c_str(),
                           frame_.width, frame_.height, bit_depth, brightness.saturated, timing.best_ms,
                           megapixels / timing.best_ms * 1e3);
  if (request_.repeat > 1) {
    report.line += cv::format(" at best of %d, %.2f ms (%.0f Mpixel/s) at first", request_.repeat, timing.first_ms,
                              megapixels / timing.first_ms * 1e3);
  }
  report.line += cv::format("; %zu %s in %s", request_.files.size(), request_.files.size() == 1 ? "file" : "files",
                            request_.directory.string().c_str());
  return report;
}

}  // namespace nerova_zel
