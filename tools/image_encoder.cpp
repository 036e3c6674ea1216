#include "image_encoder.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <opencv2/imgcodecs.hpp>

#include "failure.h"
#include "quiet_errors.h"

namespace nerova_zel {

std::string lower_case_extension(const std::string& path) {
  std::string extension = std::filesystem::path(path).extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return extension;
}

namespace {

std::vector<unsigned char> to_bytes(const std::vector<std::uint16_t>& pixels, bool two_bytes, bool low_byte_first) {
  if (!two_bytes) {
    return {pixels.begin(), pixels.end()};
  }
  std::vector<unsigned char> bytes;
  bytes.reserve(2 * pixels.size());
  for (const std::uint16_t pixel : pixels) {
    const auto low = static_cast<unsigned char>(pixel & 0xFFU);
    const auto high = static_cast<unsigned char>(pixel >> 8U);
    bytes.push_back(low_byte_first ? low : high);
    bytes.push_back(low_byte_first ? high : low);
  }
  return bytes;
}

std::vector<unsigned char> encode(const cv::Mat& picture, const std::string& extension) {
  std::vector<unsigned char> bytes;
  bool encoded = false;
  try {
    const QuietErrors quiet;
    encoded = cv::imencode(extension, picture, bytes);
  } catch (const cv::Exception&) {
    encoded = false;
  }
  if (!encoded) {
    throw Failure("a picture of " + std::to_string(picture.cols) + " x " + std::to_string(picture.rows) +
                  " pixels cannot be encoded as " + extension + "; this installation of OpenCV does not support it.");
  }
  return bytes;
}

}  // namespace

std::vector<unsigned char> encode_values(const std::uint16_t* values, int width, int height,
                                         const std::string& extension) {
  return encode(cv::Mat(height, width, CV_16U, const_cast<std::uint16_t*>(values)), extension);
}

std::vector<unsigned char> encode_floats(const std::vector<float>& values, int width, int height,
                                         const std::string& extension) {
  return encode(cv::Mat(height, width, CV_32F, const_cast<float*>(values.data())), extension);
}

std::vector<unsigned char> encode_picture(const Picture& picture, const std::string& extension) {
  cv::Mat drawn(picture.height, picture.width, CV_8UC3, const_cast<unsigned char*>(picture.pixels.data()));
  cv::Mat swapped(drawn.size(), CV_8UC3);
  const int pairs[] = {0, 2, 1, 1, 2, 0};
  cv::mixChannels(&drawn, 1, &swapped, 1, pairs, 3);
  return encode(swapped, extension);
}

void check_frame_extension(const std::string& path) {
  const std::string extension = lower_case_extension(path);
  for (const char* known : {".png", ".tif", ".tiff", ".pgm", ".raw"}) {
    if (extension == known) {
      return;
    }
  }
  throw Failure("cannot tell the form of " + path +
                " from its name; it should end in .png, .tif, .tiff, .pgm or .raw.");
}

std::vector<unsigned char> encode_frame(const std::vector<std::uint16_t>& pixels, int width, int height, int bit_depth,
                                        const std::string& path) {
  check_frame_extension(path);
  const std::string extension = lower_case_extension(path);
  const bool two_bytes = bit_depth > 8;
  if (extension == ".raw") {
    return to_bytes(pixels, two_bytes, true);
  }
  if (extension == ".pgm") {
    const std::string header = "P5\n" + std::to_string(width) + " " + std::to_string(height) + "\n" +
                               std::to_string((1 << bit_depth) - 1) + "\n";
    std::vector<unsigned char> bytes(header.begin(), header.end());
    const std::vector<unsigned char> body = to_bytes(pixels, two_bytes, false);
    bytes.insert(bytes.end(), body.begin(), body.end());
    return bytes;
  }
  cv::Mat picture(height, width, CV_16U);
  std::copy(pixels.begin(), pixels.end(), picture.begin<std::uint16_t>());
  if (!two_bytes) {
    picture.convertTo(picture, CV_8U);
  }
  return encode(picture, extension);
}

}  // namespace nerova_zel
