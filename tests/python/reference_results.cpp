// Writes a frame and its images by the reference model, for tests in other languages. Usage:
// reference_results FOLDER sse2|sse41|per-pixel WIDTH HEIGHT PHASE ORIGIN_X ORIGIN_Y BIT_DEPTH OUTPUT_MAXIMUM
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "campaign/frame_case.h"

namespace {

template <class Element>
void write(const std::string& path, const std::vector<Element>& elements) {
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(elements.data()),
             static_cast<std::streamsize>(elements.size() * sizeof(Element)));
}

}  // namespace

int main(int argc, char** argv) {
  using namespace nerova_zel::test;
  if (argc != 10) {
    std::fprintf(stderr, "nine arguments are needed\n");
    return 2;
  }
  const std::string folder = argv[1];
  const std::string rules = argv[2];
  FrameCase frame_case;
  frame_case.width = std::atoi(argv[3]);
  frame_case.height = std::atoi(argv[4]);
  frame_case.phase = std::atoi(argv[5]);
  frame_case.origin_x = std::atoi(argv[6]);
  frame_case.origin_y = std::atoi(argv[7]);
  frame_case.bit_depth = std::atoi(argv[8]);
  frame_case.output_maximum = static_cast<std::uint16_t>(std::atoi(argv[9]));
  frame_case.seed = 7;
  const std::vector<std::uint16_t> samples = make_samples(frame_case);
  const OutputImages images =
      compute_reference({frame_case.width, frame_case.height, samples.data(), frame_case.phase, frame_case.origin_x,
                         frame_case.origin_y, frame_case.bit_depth, frame_case.output_maximum},
                        default_matrices(),
                        rules == "sse2"    ? Route::Sse2
                        : rules == "sse41" ? Route::Sse41
                                           : Route::PerPixel);
  write(folder + "/frame", samples);
  write(folder + "/stokes", images.normalized_stokes);
  const char* const names[] = {"power", "hv", "diagonal", "azimuth", "dolp"};
  for (std::size_t i = 0; i < CodeImageCount; ++i) {
    write(folder + "/" + names[i], images.codes[i]);
  }
  return 0;
}
