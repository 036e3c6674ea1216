#include "transform_command.h"

#include <utility>

#include "batch_runner.h"
#include "file_set.h"
#include "interruption.h"
#include "output_names.h"
#include "quiet_errors.h"

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

/** Has the library use the calibration, and says so where it will not do for a whole frame. */
void use_calibration(Library& library, const Calibration& calibration, const std::string& path) {
  if (!library.calibrates_every_pixel()) {
    note("the calibration " + path +
         " reaches only the last columns and rows of a frame: no vector plugin serves this computer, and the built-in "
         "kernels compute the other pixels with the default calibration.");
  }
  library.set_calibration(calibration.matrices);
}

}  // namespace

void run_transform(const TransformOptions& options) {
  TransformRequest request = read_options(options);
  FrameSequence frames(find_inputs(options.frames, request.headerless), request.headerless);
  check_output_names(frames.inputs(), options.directory, endings(request.files));
  const bool lone_frame = frames.inputs().size() == 1 && !frames.inputs().front().is_numbered();
  if (request.repeat == 0) {
    request.repeat = lone_frame ? repeat_of_lone_frame : 1;
  }
  Library library(options.library);
  if (request.calibration) {
    use_calibration(library, *request.calibration, *options.calibration);
  }
  FileSet directory;  // goes again if no frame succeeds
  directory.make_directory(request.directory);
  BatchReport report(frames.total(), lone_frame);
  const Interruption interruption;
  run_batch(frames, request, library, report);
  if (report.done() > 0) {
    directory.commit();
  }
  report.finish(Interruption::is_requested());
}

}  // namespace nerova_zel
