#include "commands/transform_job.h"

#include <algorithm>

#include "batch/frame_reader.h"
#include "formatted.h"
#include "statistics/pixel_counts.h"

namespace nerova_zel {

namespace fs = std::filesystem;

FrameReport TransformJob::work(const FrameTicket& ticket) {
  const std::string name = ticket.name();
  if (!request_.overwrite && is_finished(ticket)) {
    return {
        FrameReport::Result::skipped,
        name + ": skipped, its outputs are in " + request_.directory.string() + " already; --overwrite replaces them",
        "", 0};
  }
  read_frame(ticket, request_.headerless, bytes(), transformer_.frame());
  const FrameTransformer::Timing timing = transformer_.run(name);
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
  const PictureContent content{fs::path(ticket.name()).filename().string(),
                               request_.layout,
                               transformer_.origin(),
                               transformer_.bit_depth(),
                               request_.output_maximum,
                               transformer_.frame(),
                               transformer_.outputs()};
  FramePictures pictures(content, request_.picture_style);
  FileSet files;
  write_output_files(files, request_.directory, ticket.input->output_stem(ticket.number), request_.files,
                     transformer_.outputs(), pictures);
  files.commit();
}

FrameReport TransformJob::describe(const std::string& name, const FrameTransformer::Timing& timing) const {
  const RawFrame& frame = transformer_.frame();
  const int full_scale = transformer_.full_scale();
  const PixelCounts counts = count_pixels(frame.pixels.data(), frame.pixels.size(), full_scale);
  const double percent = 100.0 / static_cast<double>(frame.pixels.size());
  FrameReport report;
  report.result = FrameReport::Result::done;
  report.pixels = frame.pixels.size();
  if (counts.above > 0) {
    report.note = formatted("note: %.1f %% of the pixels of %s exceed %d, the full scale of %d bits.",
                            percent * counts.above, name.c_str(), full_scale, transformer_.bit_depth());
  }
  const double megapixels = static_cast<double>(frame.pixels.size()) / 1e6;
  report.line = formatted("%s: %d x %d, %d-bit, %.1f %% saturated; transform %.2f ms (%.0f Mpixel/s)", name.c_str(),
                          frame.width, frame.height, transformer_.bit_depth(), percent * counts.saturated,
                          timing.best_ms, megapixels / timing.best_ms * 1e3);
  if (request_.repeat > 1) {
    report.line += formatted(" at best of %d, %.2f ms (%.0f Mpixel/s) at first", request_.repeat, timing.first_ms,
                             megapixels / timing.first_ms * 1e3);
  }
  report.line += formatted("; %zu %s in %s", request_.files.size(), request_.files.size() == 1 ? "file" : "files",
                           request_.directory.string().c_str());
  return report;
}

}  // namespace nerova_zel
