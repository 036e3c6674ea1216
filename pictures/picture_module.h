#pragma once

#include "calibration_plot.h"
#include "colour_pictures.h"
#include "frame_pictures.h"

namespace nerova_zel {

// What draws lies in a library of its own, which is loaded when the first picture is drawn: the drawing library and
// what that needs in turn would take most of the time in which the program starts.

/** What that library exports. Its classes of pictures are its own: they are only handed back to it. */
struct PictureFunctions {
  FramePictures* (*make)(const PictureContent& content, const PictureStyle& style);
  void (*destroy)(FramePictures* pictures);
  Picture (*draw)(FramePictures& pictures, PictureKind kind);
  ColourPictures* (*make_colours)(const ColourPictureContent& content, const PictureStyle& style);
  void (*destroy_colours)(ColourPictures* pictures);
  Picture (*draw_colour_sheet)(ColourPictures& pictures);
  Picture (*draw_colour_power)(ColourPictures& pictures);
  Picture (*draw_calibration)(const PolarizerFit& fit, const std::vector<double>& angles, const std::string& name);
  void (*draw_in_one_thread)();
};

/** The type of the function nerova_zel_pictures, which it exports. */
using GetPictureFunctions = const PictureFunctions* (*)();

}  // namespace nerova_zel
