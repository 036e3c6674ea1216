#include "transform_job.h"

#include <algorithm>
#include <filesystem>
#include <opencv2/core.hpp>

#include "frame_pictures.h"

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

FrameReport TransformJob::work(const FrameTicket& ticket) {
  const std::string name = ticket.name();
  if (!request_.overwrite && is_finished(ticket)) {
    return {
        FrameReport::Result::skipped,
        name + ": skipped, its outputs are in " + request_.directory.string() + " already; --overwrite makes them anew",
        "", 0};
  }
  const FrameTransformer::Timing timing = transformer_.run(ticket);
  write(ticket);
  return describe(name, timing);
}

/** Whether all outputs are there, and made since the frame and the calibration were. */
bool TransformJob::is_finished(const FrameTicket& ticket) const {
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

void TransformJob::write(const FrameTicket& ticket) {
  const RawFrame& frame = transformer_.frame();
  const FrameOutputs& outputs = transformer_.outputs();
  PictureContent content;
  content.name = fs::path(ticket.name()).filename().string();
  content.layout = request_.layout;
  content.origin_x = transformer_.origin().x;
  content.origin_y = transformer_.origin().y;
  content.bit_depth = transformer_.bit_depth();
  content.output_maximum = request_.output_maximum;
  content.frame = cv::Mat(frame.height, frame.width, CV_16U, const_cast<std::uint16_t*>(frame.pixels.data()));
  content.normalized_stokes = outputs.image(OutputKind::stokes);
  content.total_power = outputs.image(OutputKind::power);
  content.azimuth = outputs.image(OutputKind::azimuth);
  content.degree = outputs.image(OutputKind::dolp);
  FramePictures pictures(content, request_.picture_style);
  FileSet files;
  outputs.write(files, request_.directory, ticket.input->output_stem(ticket.number), request_.files,
                [&](OutputKind kind) { return pictures.draw(kind); });
  files.commit();
}

FrameReport TransformJob::describe(const std::string& name, const FrameTransformer::Timing& timing) const {
  const RawFrame& frame = transformer_.frame();
  const int full_scale = transformer_.full_scale();
  const Brightness brightness = brightness_of(frame.pixels, full_scale);
  FrameReport report;
  report.result = FrameReport::Result::done;
  report.pixels = frame.pixels.size();
  if (brightness.above > 0.0) {
    report.note = cv::format("note: %.1f %% of the pixels of %s exceed %d, the full scale of %d bits.",
                             brightness.above, name.c_str(), full_scale, transformer_.bit_depth());
  }
  const double megapixels = static_cast<double>(frame.pixels.size()) / 1e6;
  report.line = cv::format("%s: %d x %d, %d-bit, %.1f %% saturated; transform %.2f ms (%.0f Mpixel/s)", name.c_str(),
                           frame.width, frame.height, transformer_.bit_depth(), brightness.saturated, timing.best_ms,
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
