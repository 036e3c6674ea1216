#include "sheet_planes.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "angles.h"

namespace nerova_zel {

namespace {

cv::Size shown_size(const cv::Size& picture, const cv::Size& box) {
  const double fit =
      std::min(static_cast<double>(box.width) / picture.width, static_cast<double>(box.height) / picture.height);
  if (fit >= 1.0) {
    return picture * static_cast<int>(fit);
  }
  return {std::max(1, static_cast<int>(std::lround(picture.width * fit))),
          std::max(1, static_cast<int>(std::lround(picture.height * fit)))};
}

cv::Mat resized(const cv::Mat& plane, const cv::Size& size) {
  cv::Mat result;
  cv::resize(plane, result, size, 0.0, 0.0,
             size.width < plane.cols || size.height < plane.rows ? cv::INTER_AREA : cv::INTER_NEAREST);
  return result;
}

/** A round scale end that leaves out at most one value in two hundred. */
double scale_end(std::vector<float> values) {
  if (values.empty()) {
    return 1.0;
  }
  const auto at = static_cast<std::ptrdiff_t>(static_cast<double>(values.size() - 1) * 0.995);
  std::nth_element(values.begin(), values.begin() + at, values.end());
  for (const double end : {0.01, 0.02, 0.05, 0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.8}) {
    if (values[static_cast<std::size_t>(at)] <= end) {
      return end;
    }
  }
  return 1.0;
}

}  // namespace

SheetPlanes make_planes(const PictureImages& content, const cv::Size& box) {
  const cv::Size size = content.frame.size();
  const double full_scale = (1 << content.bit_depth) - 1;
  const auto maximum = static_cast<float>(content.output_maximum);
  cv::Mat power;
  content.total_power.convertTo(power, CV_32F, 1.0 / content.output_maximum);
  cv::Mat vector1(size, CV_32F);  // Stokes vector that azimuth and degree describe
  cv::Mat vector2(size, CV_32F);
  cv::Mat component1(size, CV_32F);  // Stokes vector of the normalized pair
  cv::Mat component2(size, CV_32F);
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      const float p = power.at<float>(y, x);
      const float polarized = p * static_cast<float>(content.degree.at<std::uint16_t>(y, x)) / maximum;
      const float twice = 2.0F * (static_cast<float>(content.azimuth.at<std::uint16_t>(y, x)) / maximum - 0.5F) *
                          static_cast<float>(pi);
      vector1.at<float>(y, x) = polarized * std::cos(twice);
      vector2.at<float>(y, x) = polarized * std::sin(twice);
      // Without light the pair is not a number.
      const cv::Vec2f pair = content.normalized_stokes.at<cv::Vec2f>(y, x);
      component1.at<float>(y, x) = p > 0.0F ? pair[0] * p : 0.0F;
      component2.at<float>(y, x) = p > 0.0F ? pair[1] * p : 0.0F;
    }
  }
  const cv::Size target = shown_size(size, box);
  SheetPlanes planes;
  cv::Mat frame;
  content.frame.convertTo(frame, CV_32F, 1.0 / full_scale);
  planes.frame = resized(frame, target);
  planes.power = resized(power, target);
  planes.angle.create(target, CV_32F);
  planes.degree.create(target, CV_32F);
  vector1 = resized(vector1, target);
  vector2 = resized(vector2, target);
  component1 = resized(component1, target);
  component2 = resized(component2, target);
  for (int y = 0; y < target.height; ++y) {
    for (int x = 0; x < target.width; ++x) {
      const float q1 = vector1.at<float>(y, x);
      const float q2 = vector2.at<float>(y, x);
      const float p = planes.power.at<float>(y, x);
      planes.angle.at<float>(y, x) = 0.5F * std::atan2(q2, q1) * 180.0F / static_cast<float>(pi);
      planes.degree.at<float>(y, x) = p > 0.0F ? std::hypot(q1, q2) / p : 0.0F;
      component1.at<float>(y, x) /= p > 0.0F ? p : 1.0F;
      component2.at<float>(y, x) /= p > 0.0F ? p : 1.0F;
    }
  }
  planes.ratio1 = component1;
  planes.ratio2 = component2;
  return planes;
}

cv::Mat fit_plane(const cv::Mat& plane, const cv::Size& box) { return resized(plane, shown_size(plane.size(), box)); }

double light_end(const cv::Mat& plane) { return scale_end({plane.begin<float>(), plane.end<float>()}); }

/** Where there is little light the degree is noise; such pixels do not determine the scale. */
double degree_end(const SheetPlanes& planes) {
  const double scarce = 0.05 * light_end(planes.power);
  std::vector<float> lit;
  for (int y = 0; y < planes.power.rows; ++y) {
    for (int x = 0; x < planes.power.cols; ++x) {
      if (planes.power.at<float>(y, x) > scarce) {
        lit.push_back(planes.degree.at<float>(y, x));
      }
    }
  }
  return std::max(0.05, scale_end(lit));
}

}  // namespace nerova_zel
