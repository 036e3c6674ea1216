#pragma once

#include <filesystem>
#include <functional>
#include <opencv2/core.hpp>
#include <set>
#include <string>
#include <vector>

#include "colour_maps.h"
#include "file_set.h"
#include "library.h"

namespace nerova_zel {

/** What a transform can write: what the library computes, then pictures for looking at. */
enum class OutputKind { stokes, power, hv, diagonal, azimuth, dolp, sheet, azimuth_picture, azimuth_legend };

/** One file of a frame's outputs. */
struct OutputFile {
  OutputKind kind;
  /** What its name ends in, behind the frame's: "_power.png". */
  std::string ending;
  /** Which of the Stokes pair it holds, or -1 for all that there is. */
  int channel = -1;
};

/**
 * The files of the wanted outputs in a format: png, tiff or npy; pictures for looking at are PNG. Throws Failure for
 * another format.
 */
std::vector<OutputFile> output_files(const std::set<OutputKind>& wanted, const std::string& format, AzimuthStyle style);

/** The images of a frame; empty where neither wanted nor needed for pictures. */
class FrameOutputs {
 public:
  explicit FrameOutputs(std::set<OutputKind> wanted);

  /** Room for the images of a frame of that size; kept when it is there already. */
  void allocate(int width, int height);

  /** Where the library is to put them. */
  TransformOutput pointers();

  /** Puts `files` named `stem` and their endings into `set`; `draw` draws pictures for looking at. Throws Failure. */
  void write(FileSet& set, const std::filesystem::path& directory, const std::string& stem,
             const std::vector<OutputFile>& files, const std::function<cv::Mat(OutputKind)>& draw) const;

  const cv::Mat& image(OutputKind kind) const { return images_[static_cast<std::size_t>(kind)]; }

 private:
  cv::Mat& room_for(OutputKind kind) { return images_[static_cast<std::size_t>(kind)]; }

  std::set<OutputKind> computed_;
  std::vector<cv::Mat> images_;
};

}  // namespace nerova_zel
