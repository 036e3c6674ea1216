#include "drawn_picture.h"

#include <new>

#include "failure.h"

namespace nerova_zel {

Picture drawn_picture(const std::function<cv::Mat()>& draw) {
  try {
    const cv::Mat drawn = draw();
    Picture picture{drawn.cols, drawn.rows, {}};
    picture.pixels.reserve(3 * drawn.total());
    for (int y = 0; y < drawn.rows; ++y) {
      const auto* row = drawn.ptr<cv::Vec3b>(y);
      for (int x = 0; x < drawn.cols; ++x) {
        picture.pixels.insert(picture.pixels.end(), {row[x][2], row[x][1], row[x][0]});
      }
    }
    return picture;
  } catch (const cv::Exception& error) {
    if (error.code == cv::Error::StsNoMem) {
      throw std::bad_alloc();
    }
    throw Failure("the picture library fails: " + error.err + ".");
  }
}

bool can_draw() { return true; }

void draw_in_one_thread() { cv::setNumThreads(1); }

}  // namespace nerova_zel
