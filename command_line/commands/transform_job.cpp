#include "commands/transform_job.h"

#include <algorithm>
#include <atomic>

#include "batch/frame_reader.h"
#include "commands/how_made.h"
#include "formatted.h"
#include "messages.h"
#include "platform/files.h"
#include "threads.h"

namespace nerova_zel {

namespace fs = std::filesystem;

FrameReport TransformJob::work(const FrameTicket& ticket) {
  const std::string name = ticket.name();
  const std::string source = source_text(ticket);
  if (request_.resume && is_finished(ticket, source)) {
    return {
        FrameReport::Result::skipped, name + ": skipped, its outputs are in " + request_.directory.u8string(), {}, 0};
  }
  if (request_.no_clobber) {
    for (const OutputFile& file : request_.files) {
      refuse_existing(path_of(ticket, file), "--no-clobber keeps it");
    }
  }
  read_frame(ticket, request_.headerless, bytes(), transformer_.frame(), request_.depth);
  const FrameTransformer::Timing timing = transformer_.run(name);
  write(ticket, source);
  return describe(name, timing);
}

fs::path TransformJob::path_of(const FrameTicket& ticket, const OutputFile& file) const {
  return request_.directory / fs::u8path(ticket.input->output_stem(ticket.number) + file.ending);
}

/** Whether all outputs are there, made since the frame and the calibration were, and in the same way. */
bool TransformJob::is_finished(const FrameTicket& ticket, const std::string& source) const {
  std::chrono::nanoseconds made = request_.calibrated;
  if (!ticket.input->is_standard_input()) {
    const auto frame = file_facts(fs::u8path(ticket.input->path));
    if (!frame) {
      return false;
    }
    made = std::max(made, frame->changed);
  }
  return std::all_of(request_.files.begin(), request_.files.end(), [&](const OutputFile& file) {
    const fs::path path = path_of(ticket, file);
    const auto facts = file_facts(path);
    return facts && facts->is_file && facts->changed > made && was_made_so(path, how_made(request_, source, file));
  });
}

void TransformJob::write(const FrameTicket& ticket, const std::string& source) {
  SensorPictures pictures(fs::u8path(ticket.name()).filename().u8string(), request_, request_.colour, transformer_,
                          request_.picture_style);
  FileSet files(request_.no_clobber ? FileSet::Earlier::refused : FileSet::Earlier::replaced);
  files.make_directory((request_.directory / fs::u8path(ticket.input->stem)).parent_path());
  // Pictures share what is drawn once, so the first thread draws them all, and then helps the others.
  std::atomic<std::size_t> next{0};
  const auto write_one = [&](const OutputFile& file) {
    write_output_file(files, path_of(ticket, file), file, how_made(request_, source, file), transformer_, pictures);
  };
  on_threads(std::min(request_.writers, request_.files.size()), [&](std::size_t writer) {
    for (const OutputFile& file : request_.files) {
      if (writer == 0 && std::holds_alternative<PictureKind>(file.content)) {
        write_one(file);
      }
    }
    for (std::size_t i = next++; i < request_.files.size(); i = next++) {
      if (!std::holds_alternative<PictureKind>(request_.files[i].content)) {
        write_one(request_.files[i]);
      }
    }
  });
  files.commit();
}

FrameReport TransformJob::describe(const std::string& name, const FrameTransformer::Timing& timing) {
  const RawFrame& frame = transformer_.frame();
  const int full_scale = transformer_.full_scale();
  const PixelCounts& counts = transformer_.counts();
  const double percent = 100.0 / static_cast<double>(frame.pixels.size());
  FrameReport report;
  report.result = FrameReport::Result::done;
  report.pixels = frame.pixels.size();
  report.notes = notes_.of(name, transformer_, request_.depth);
  if (counts.above > 0) {
    report.notes.push_back(formatted("%.1f %% of the pixels of %s exceed %d, the full scale of %d bits.",
                                     percent * counts.above, name.c_str(), full_scale, transformer_.bit_depth()));
  }
  const double megapixels = static_cast<double>(frame.pixels.size()) / 1e6;
  report.line = formatted("%s: %d x %d, %d-bit, %.1f %% saturated", name.c_str(), frame.width, frame.height,
                          transformer_.bit_depth(), percent * counts.saturated);
  double clipped = 0.0;
  for (std::size_t i = 0; i < transformer_.plane_count(); ++i) {
    clipped += transformer_.plane(i).clipped_power() / static_cast<double>(transformer_.plane_count());
  }
  if (clipped > 0.0) {
    report.line += formatted(", %.1f %% of the power clipped", 100.0 * clipped);
  }
  if (request_.repeat > 1) {
    report.line += formatted("; transform %.2f ms (%.0f Mpixel/s) at best of %d, %.2f ms (%.0f Mpixel/s) at first",
                             timing.best_ms, megapixels / timing.best_ms * 1e3, request_.repeat, timing.first_ms,
                             megapixels / timing.first_ms * 1e3);
  } else if (verbosity() == Verbosity::verbose) {
    report.line += formatted("; transform %.2f ms (%.0f Mpixel/s)", timing.best_ms, megapixels / timing.best_ms * 1e3);
  }
  report.line += formatted("; %zu %s in %s", request_.files.size(), request_.files.size() == 1 ? "file" : "files",
                           request_.directory.u8string().c_str());
  return report;
}

}  // namespace nerova_zel
