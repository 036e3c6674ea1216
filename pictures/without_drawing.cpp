// Takes the place of all other sources of this folder where OpenCV is missing.
#include "calibration_plot.h"
#include "colour_pictures.h"
#include "failure.h"
#include "frame_pictures.h"

namespace nerova_zel {

namespace {

[[noreturn]] void refuse() {
  throw Failure("what draws sheets, azimuth pictures, legends and plots is not installed.");
}

}  // namespace

class FramePictures::Drawing {};

FramePictures::FramePictures(const PictureContent& /*content*/, const PictureStyle& /*style*/) {}

FramePictures::~FramePictures() = default;

Picture FramePictures::draw(PictureKind /*kind*/) { refuse(); }

class ColourPictures::Drawing {};

ColourPictures::ColourPictures(const ColourPictureContent& /*content*/, const PictureStyle& /*style*/) {}

ColourPictures::~ColourPictures() = default;

Picture ColourPictures::sheet() { refuse(); }

Picture ColourPictures::power() { refuse(); }

Picture draw_calibration(const PolarizerFit& /*fit*/, const std::vector<double>& /*angles*/,
                         const std::string& /*name*/) {
  refuse();
}

bool can_draw() { return false; }

void draw_in_one_thread() {}

}  // namespace nerova_zel
