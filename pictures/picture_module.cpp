#include "picture_module.h"

namespace nerova_zel {

namespace {

constexpr PictureFunctions functions = {
    [](const PictureContent& content, const PictureStyle& style) { return new FramePictures(content, style); },
    [](FramePictures* pictures) { delete pictures; },
    [](FramePictures& pictures, PictureKind kind) { return pictures.draw(kind); },
    [](const ColourPictureContent& content, const PictureStyle& style) { return new ColourPictures(content, style); },
    [](ColourPictures* pictures) { delete pictures; },
    [](ColourPictures& pictures) { return pictures.sheet(); },
    [](ColourPictures& pictures) { return pictures.power(); },
    draw_calibration,
    draw_in_one_thread,
};

}  // namespace

}  // namespace nerova_zel

extern "C" [[gnu::visibility("default")]] const nerova_zel::PictureFunctions* nerova_zel_pictures() {
  return &nerova_zel::functions;
}
