#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "batch/frame_job.h"
#include "batch/frame_notes.h"
#include "commands/frame_options.h"
#include "commands/output_files.h"
#include "commands/sensor_pictures.h"
#include "processor/sensor_transformer.h"

namespace nerova_zel {

struct TransformRequest : FrameRequest {
  /** When the calibration's file was written. */
  std::chrono::nanoseconds calibrated{std::chrono::nanoseconds::min()};
  std::set<Output> needed;
  std::vector<OutputFile> files;
  std::filesystem::path directory = ".";
  SensorPictures::Style picture_style;
  /** Frames are left out whose outputs are there and would be the same. */
  bool resume = false;
  /** Threads that encode the outputs of a frame. */
  std::size_t writers = 1;
  /** Frames fail of which outputs are there. */
  bool no_clobber = false;
};

/** Writes the outputs of frames. */
class TransformJob : public FrameJob {
 public:
  /** All are shared and must outlive it; the request's directory must exist. */
  TransformJob(const TransformRequest& request, const SensorLibraries& libraries, FrameNotes& notes)
      : request_(request), notes_(notes), transformer_(request, request.colour, libraries, request.needed) {}

 private:
  FrameReport work(const FrameTicket& ticket) override;
  std::filesystem::path path_of(const FrameTicket& ticket, const OutputFile& file) const;
  bool is_finished(const FrameTicket& ticket, const std::string& source) const;
  void write(const FrameTicket& ticket, const std::string& source);
  FrameReport describe(const std::string& name, const FrameTransformer::Timing& timing);

  const TransformRequest& request_;
  FrameNotes& notes_;
  SensorTransformer transformer_;
};

}  // namespace nerova_zel
