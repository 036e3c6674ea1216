// The same functions as those that draw, for programs that load them when the first picture is drawn.
#include <filesystem>

#include "failure.h"
#include "picture_module.h"
#include "processor/dynamic_module.h"

namespace nerova_zel {

namespace {

bool one_thread = false;

/** Never unloaded: threads of the drawing library may live as long as the program. */
const DynamicModule& load_module(const std::string& path) {
  try {
    return *new DynamicModule(path);
  } catch (const std::runtime_error& error) {
    throw Failure("the library that draws pictures cannot be loaded: " + std::string(error.what()) + ".");
  }
}

std::string module_path() { return find_module("nerova_zel_pictures.so", "nerova-polarize"); }

const PictureFunctions& load() {
  const std::string path = module_path();
  static const DynamicModule& module = load_module(path);
  const auto get = reinterpret_cast<GetPictureFunctions>(module.find("nerova_zel_pictures"));
  if (get == nullptr) {
    throw Failure(path + " is not the library that draws pictures.");
  }
  const PictureFunctions& functions = *get();
  if (one_thread) {
    functions.draw_in_one_thread();
  }
  return functions;
}

const PictureFunctions& loaded() {
  static const PictureFunctions& functions = load();
  return functions;
}

/** Pictures of the loaded library, made when the first of them is drawn. */
template <class Pictures, class Content, Pictures* (*PictureFunctions::*make)(const Content&, const PictureStyle&),
          void (*PictureFunctions::*destroy)(Pictures*)>
class LoadedPictures {
 public:
  LoadedPictures(const Content& content, const PictureStyle& style) : content_(content), style_(style) {}
  ~LoadedPictures() {
    if (pictures_ != nullptr) {
      (loaded().*destroy)(pictures_);
    }
  }
  LoadedPictures(const LoadedPictures&) = delete;
  LoadedPictures& operator=(const LoadedPictures&) = delete;

  Pictures& get() {
    if (pictures_ == nullptr) {
      pictures_ = (loaded().*make)(content_, style_);
    }
    return *pictures_;
  }

 private:
  const Content& content_;
  const PictureStyle& style_;
  Pictures* pictures_ = nullptr;
};

}  // namespace

class FramePictures::Drawing
    : public LoadedPictures<FramePictures, PictureContent, &PictureFunctions::make, &PictureFunctions::destroy> {
 public:
  using LoadedPictures::LoadedPictures;
};

FramePictures::FramePictures(const PictureContent& content, const PictureStyle& style)
    : drawing_(std::make_unique<Drawing>(content, style)) {}

FramePictures::~FramePictures() = default;

Picture FramePictures::draw(PictureKind kind) { return loaded().draw(drawing_->get(), kind); }

class ColourPictures::Drawing
    : public LoadedPictures<ColourPictures, ColourPictureContent, &PictureFunctions::make_colours,
                            &PictureFunctions::destroy_colours> {
 public:
  using LoadedPictures::LoadedPictures;
};

ColourPictures::ColourPictures(const ColourPictureContent& content, const PictureStyle& style)
    : drawing_(std::make_unique<Drawing>(content, style)) {}

ColourPictures::~ColourPictures() = default;

Picture ColourPictures::sheet() { return loaded().draw_colour_sheet(drawing_->get()); }

Picture ColourPictures::power() { return loaded().draw_colour_power(drawing_->get()); }

Picture draw_calibration(const PolarizerFit& fit, const std::vector<double>& angles, const std::string& name) {
  return loaded().draw_calibration(fit, angles, name);
}

bool can_draw() {
  if (std::filesystem::u8path(module_path()).has_parent_path()) {
    return true;  // found; to load it would take longer than a run that draws nothing
  }
  try {
    loaded();
    return true;
  } catch (const Failure&) {
    return false;
  }
}

void draw_in_one_thread() { one_thread = true; }

}  // namespace nerova_zel
