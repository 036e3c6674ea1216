#include "picture_images.h"

namespace nerova_zel {

namespace {

/** Nothing writes to it: cv::Mat knows no read-only memory. */
template <class Element>
cv::Mat image(const Element* elements, int width, int height, int type) {
  return elements == nullptr ? cv::Mat() : cv::Mat(height, width, type, const_cast<Element*>(elements));
}

}  // namespace

PictureImages::PictureImages(const PictureContent& content)
    : name(content.name),
      layout(content.layout),
      origin(content.origin),
      bit_depth(content.bit_depth),
      output_maximum(content.output_maximum),
      power_headroom(content.power_headroom) {
  const int width = content.frame.width;
  const int height = content.frame.height;
  const OutputImages& outputs = content.outputs;
  frame = image(content.frame.pixels.data(), width, height, CV_16U);
  normalized_stokes = image(outputs.stokes(), width, height, CV_32FC2);
  total_power = image(outputs.values(Output::power), width, height, CV_16U);
  azimuth = image(outputs.values(Output::azimuth), width, height, CV_16U);
  degree = image(outputs.values(Output::dolp), width, height, CV_16U);
}

}  // namespace nerova_zel
