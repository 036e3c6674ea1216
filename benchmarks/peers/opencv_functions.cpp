#include "peers/opencv_functions.h"

#include <opencv2/core.hpp>

namespace nerova_zel::benchmark {

namespace {

/** Polarizers by their place in the super-pixel, 2 * (row & 1) + (column & 1), in steps of 45 degrees. */
constexpr int mosaics[4][4] = {{0, 3, 1, 2}, {1, 2, 0, 3}, {2, 1, 3, 0}, {3, 0, 2, 1}};

/** Pairs of columns as pixels of two channels, in every second row from the given one. */
cv::Mat super_pixels(cv::Mat& image, int first_row, int first_column, cv::Size size) {
  return {size.height, size.width, CV_MAKETYPE(image.depth(), 2), image.ptr(first_row, first_column),
          2 * image.step[0]};
}

/** For every pixel the sample under each polarizer in the neighbourhood to its right and below. */
void separate(const TransformParameters& p, cv::Mat (&samples)[4]) {
  const cv::Size half((p.width + 1) / 2, (p.height + 1) / 2);
  const cv::Mat frame(p.height, p.width, CV_16U, const_cast<std::uint16_t*>(p.input));
  cv::Mat padded;
  cv::copyMakeBorder(frame, padded, 0, 2 * half.height + 1 - p.height, 0, 2 * half.width + 2 - p.width,
                     cv::BORDER_REFLECT_101);
  for (int place = 0; place < 4; ++place) {
    const int row = place / 2;
    const int column = place % 2;
    cv::Mat whole(2 * half.height, 2 * half.width, CV_16U);
    for (int y = 0; y < 2; ++y) {
      const cv::Mat from[] = {super_pixels(padded, y + (y ^ row), 0, half),
                              super_pixels(padded, y + (y ^ row), 2, half)};
      cv::Mat to[] = {super_pixels(whole, y, 0, half)};
      const int left = column;                // the pixel itself or its right neighbour
      const int right = column == 1 ? 1 : 2;  // the pixel itself or the next pair's first
      const int channels[] = {left, 0, right, 1};
      cv::mixChannels(from, 2, to, 1, channels, 2);
    }
    samples[mosaics[p.phase][place]] = whole(cv::Rect(0, 0, p.width, p.height));
  }
}

/** Scales, rounds and saturates into an image of the caller. */
void store(const TransformParameters& p, const cv::Mat& values, double scale, std::uint16_t* image) {
  cv::Mat to(p.height, p.width, CV_16U, image);
  values.convertTo(to, CV_16U, scale);
  if (p.integer_output_maximum < 65535) {
    cv::min(to, static_cast<double>(p.output_maximum), to);
  }
}

}  // namespace

void opencv_functions(const TransformParameters& p) {
  cv::setNumThreads(1);
  cv::Mat samples[4];
  separate(p, samples);
  cv::Mat s1;
  cv::Mat s2;
  cv::Mat power;
  cv::subtract(samples[0], samples[2], s1, cv::noArray(), CV_32F);
  cv::subtract(samples[1], samples[3], s2, cv::noArray(), CV_32F);
  if (p.images.normalized_stokes != nullptr || p.images.total_power != nullptr ||
      p.images.degree_of_linear_polarization != nullptr) {
    cv::Mat other;
    cv::add(samples[0], samples[2], power, cv::noArray(), CV_32F);
    cv::add(samples[1], samples[3], other, cv::noArray(), CV_32F);
    cv::addWeighted(power, 0.5, other, 0.5, 0, power);
  }
  const double gain = static_cast<double>(p.output_maximum) / static_cast<double>(p.input_maximum);
  if (p.images.normalized_stokes != nullptr) {
    cv::Mat normalized[2];
    cv::divide(s1, power, normalized[0]);
    cv::divide(s2, power, normalized[1]);
    cv::Mat to(p.height, p.width, CV_32FC2, p.images.normalized_stokes);
    cv::merge(normalized, 2, to);
  }
  if (p.images.total_power != nullptr) {
    store(p, power, gain, p.images.total_power);
  }
  if (p.images.horizontal_vertical != nullptr) {
    store(p, s1, gain, p.images.horizontal_vertical);
  }
  if (p.images.diagonal != nullptr) {
    store(p, s2, gain, p.images.diagonal);
  }
  if (p.images.azimuth == nullptr && p.images.degree_of_linear_polarization == nullptr) {
    return;
  }
  cv::Mat polarized;
  cv::Mat angle;
  if (p.images.azimuth == nullptr) {
    cv::magnitude(s1, s2, polarized);
  } else if (p.images.degree_of_linear_polarization == nullptr) {
    cv::phase(s1, s2, angle, true);
  } else {
    cv::cartToPolar(s1, s2, polarized, angle, true);
  }
  if (p.images.azimuth != nullptr) {
    // 0..360 degrees of the Stokes angle to -180..180, then to 0..360.
    cv::subtract(angle, 360, angle, angle > 180);
    cv::add(angle, 180, angle);
    store(p, angle, static_cast<double>(p.output_maximum) / 360, p.images.azimuth);
  }
  if (p.images.degree_of_linear_polarization != nullptr) {
    cv::divide(polarized, power, polarized);
    cv::patchNaNs(polarized, 0);
    store(p, polarized, static_cast<double>(p.output_maximum), p.images.degree_of_linear_polarization);
  }
}

}  // namespace nerova_zel::benchmark
