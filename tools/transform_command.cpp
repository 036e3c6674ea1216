#include "transform_command.h"

#include <memory>

#include "batch_runner.h"
#include "file_set.h"
#include "interruption.h"
#include "output_names.h"
#include "transform_job.h"

namespace nerova_zel {

namespace {

constexpr int repeat_of_lone_frame = 5;

std::vector<std::string> endings(const std::vector<OutputFile>& files) {
  std::vector<std::string> all;
  all.reserve(files.size());
  for (const OutputFile& file : files) {
    all.push_back(file.ending);
  }
  return all;
}

}  // namespace

void run_transform(const TransformOptions& options) {
  TransformRequest request = read_transform_options(options);
  FrameSequence frames(find_inputs(options.frames, request.headerless), request.headerless);
  check_output_names(frames.inputs(), options.directory, endings(request.files));
  if (!options.repeat && frames.is_lone_frame()) {
    request.repeat = repeat_of_lone_frame;
  }
  Library library(options.library);
  use_calibration(library, request);
  FileSet directory;  // goes again if no frame succeeds
  directory.make_directory(request.directory);
  BatchReport report(frames.total(), frames.is_lone_frame(), BatchReport::Detail::full);
  const Interruption interruption;
  run_batch(
      frames, request.jobs, [&] { return std::make_unique<TransformJob>(request, library); }, report);
  if (report.done() > 0) {
    directory.commit();
  }
  report.finish(Interruption::is_requested());
}

}  // namespace nerova_zel
