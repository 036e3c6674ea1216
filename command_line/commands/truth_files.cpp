#include "commands/truth_files.h"

#include <functional>
#include <vector>

#include "commands/colour_options.h"
#include "failure.h"
#include "file_marks.h"
#include "file_texts.h"
#include "tiff_file.h"

namespace nerova_zel {

namespace {

namespace fs = std::filesystem;

void write_images(FileSet& files, const fs::path& directory, const std::string& stem, const std::string& ending,
                  const FrameSize& size, const std::function<StokesVector(int x, int y)>& light_at) {
  std::vector<float> angle;
  std::vector<float> degree;
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      const StokesVector light = light_at(x, y);
      angle.push_back(static_cast<float>(light.angle_degrees()));
      degree.push_back(static_cast<float>(light.degree()));
    }
  }
  files.make_directory(directory);
  const auto write = [&](const std::string& name, const std::vector<float>& values, const TiffTags& tags) {
    files.write(directory / fs::u8path(stem + name + ending + ".tiff"),
                encode_tiff({Element::float32, size.width, size.height, 1, values.data()}, tags));
  };
  write("_true_angle", angle, tiff_tags(output_texts("true-angle", "true angle of polarization, in degrees")));
  write("_true_degree", degree, tiff_tags(output_texts("true-degree", "true degree of polarization")));
}

}  // namespace

void write_truth(FileSet& files, const fs::path& directory, const std::string& stem, const SimulatedScene& scene,
                 const CameraSettings& camera) {
  write_images(files, directory, stem, "", {camera.width, camera.height},
               [&](int x, int y) { return true_light(scene, camera, x, y); });
}

void write_colour_truth(FileSet& files, const fs::path& directory, const std::string& stem, const ColourScene& scene,
                        const ColourMosaic& mosaic) {
  const FrameSize size = mosaic.common_region(ColourPlane::red).size;
  if (size.width < 2 || size.height < 2) {
    throw Failure("the frame is too small for its colours to have a mosaic of 2 x 2 pixels each at the same place.");
  }
  for (const ColourPlane plane : colour_planes) {
    write_images(files, directory, stem, colour_ending(name_of(plane)), size,
                 [&](int x, int y) { return true_colour_light(scene, mosaic, plane, x, y); });
  }
}

}  // namespace nerova_zel
