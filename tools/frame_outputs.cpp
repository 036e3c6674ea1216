#include "frame_outputs.h"

#include <iterator>
#include <utility>

#include "failure.h"
#include "image_encoder.h"
#include "npy_header.h"

namespace nerova_zel {

namespace {

// All that the library computes, and their names; the other kinds are drawn from them.
constexpr std::pair<OutputKind, const char*> computed_kinds[] = {
    {OutputKind::stokes, "_stokes"},     {OutputKind::power, "_power"},     {OutputKind::hv, "_hv"},
    {OutputKind::diagonal, "_diagonal"}, {OutputKind::azimuth, "_azimuth"}, {OutputKind::dolp, "_dolp"}};

template <class Element>
Element* pointer(cv::Mat& picture) {
  return picture.empty() ? nullptr : picture.ptr<Element>();
}

void write_array(FileSet& set, const std::filesystem::path& path, const cv::Mat& image) {
  std::vector<int> shape = {image.rows, image.cols};
  if (image.channels() > 1) {
    shape.push_back(image.channels());
  }
  const std::string header = npy_header(image.depth() == CV_16U ? "<u2" : "<f4", shape);
  set.write(path, {{header.data(), header.size()}, {image.data, image.total() * image.elemSize()}});
}

}  // namespace

std::vector<OutputFile> output_files(const std::set<OutputKind>& wanted, const std::string& format,
                                     AzimuthStyle style) {
  if (format != "png" && format != "tiff" && format != "npy") {
    throw Failure("--format " + format + " is unknown; it must be png, tiff or npy.");
  }
  std::vector<OutputFile> files;
  for (const auto& [kind, name] : computed_kinds) {
    if (wanted.count(kind) == 0) {
      continue;
    }
    if (kind == OutputKind::stokes && format != "npy") {
      // Floating-point pictures are TIFF, and viewers take one channel.
      files.push_back({kind, "_s1.tiff", 0});
      files.push_back({kind, "_s2.tiff", 1});
    } else {
      files.push_back({kind, name + ("." + format)});
    }
  }
  if (wanted.count(OutputKind::sheet) != 0) {
    files.push_back({OutputKind::sheet, "_sheet.png"});
  }
  const std::string picture = std::string("_azimuth_") + name_of(style);
  if (wanted.count(OutputKind::azimuth_picture) != 0) {
    files.push_back({OutputKind::azimuth_picture, picture + ".png"});
  }
  if (wanted.count(OutputKind::azimuth_legend) != 0) {
    files.push_back({OutputKind::azimuth_legend, picture + "_legend.png"});
  }
  return files;
}

FrameOutputs::FrameOutputs(std::set<OutputKind> wanted)
    : computed_(std::move(wanted)), images_(std::size(computed_kinds)) {
  bool pictures = false;
  for (const OutputKind kind : {OutputKind::sheet, OutputKind::azimuth_picture, OutputKind::azimuth_legend}) {
    pictures = computed_.erase(kind) != 0 || pictures;
  }
  if (pictures) {
    computed_.insert({OutputKind::stokes, OutputKind::power, OutputKind::azimuth, OutputKind::dolp});
  }
}

void FrameOutputs::allocate(int width, int height) {
  for (const OutputKind kind : computed_) {
    room_for(kind).create(height, width, kind == OutputKind::stokes ? CV_32FC2 : CV_16U);
  }
}

TransformOutput FrameOutputs::pointers() {
  return {pointer<float>(room_for(OutputKind::stokes)),          pointer<std::uint16_t>(room_for(OutputKind::power)),
          pointer<std::uint16_t>(room_for(OutputKind::hv)),      pointer<std::uint16_t>(room_for(OutputKind::diagonal)),
          pointer<std::uint16_t>(room_for(OutputKind::azimuth)), pointer<std::uint16_t>(room_for(OutputKind::dolp))};
}

void FrameOutputs::write(FileSet& set, const std::filesystem::path& directory, const std::string& stem,
                         const std::vector<OutputFile>& files, const std::function<cv::Mat(OutputKind)>& draw) const {
  for (const OutputFile& file : files) {
    const std::filesystem::path path = directory / (stem + file.ending);
    const std::string extension = path.extension().string();
    if (extension == ".npy") {
      write_array(set, path, image(file.kind));
    } else if (file.kind >= OutputKind::sheet) {
      set.write(path, encode_picture(draw(file.kind), extension));
    } else if (file.channel >= 0) {
      cv::Mat single;
      cv::extractChannel(image(file.kind), single, file.channel);
      set.write(path, encode_picture(single, extension));
    } else {
      set.write(path, encode_picture(image(file.kind), extension));
    }
  }
}

}  // namespace nerova_zel
