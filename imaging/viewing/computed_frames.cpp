#include "viewing/computed_frames.h"

#include <utility>

namespace nerova_zel {

namespace {

std::string joined(std::initializer_list<std::uint64_t> numbers) {
  std::string text;
  for (const std::uint64_t number : numbers) {
    text += ' ' + std::to_string(number);
  }
  return text;
}

std::string name_of_read(std::size_t source, std::uint64_t frame) { return "read" + joined({source, frame}); }

/** What the frame's own pixels and the facts depend on. */
std::string name_of_frame(const FrameView& view) {
  return "frame" +
         joined({view.source, view.frame, static_cast<std::uint64_t>(view.bit_depth.value_or(0)), view.plane}) +
         // With colours these say which pixels are whose.
         joined({static_cast<std::uint64_t>(view.origin.x), static_cast<std::uint64_t>(view.origin.y)});
}

std::string name_of_output(const FrameView& view, Output output) {
  return describe(output).name + name_of_frame(view) +
         joined({static_cast<std::uint64_t>(view.layout), view.calibration});
}

std::shared_ptr<const KeptImage> take(OutputImages& images, Output output) {
  auto image = std::make_shared<KeptImage>();
  image->width = images.width();
  image->height = images.height();
  image->channels = describe(output).channels;
  image->values = images.take_values(output);
  image->floats = images.take_floats(output);
  return image;
}

}  // namespace

ComputedFrames::ComputedFrames(Options options, FrameProvider& provider)
    : options_(std::move(options)), provider_(provider), kept_(options_.most_bytes) {
  for (std::size_t i = 0; i < options_.calibrations.size(); ++i) {
    FrameView view;
    view.calibration = i;
    libraries_.push_back(std::make_unique<SensorLibraries>(options_.library, settings_of(view), colour_of(view)));
  }
}

TransformSettings ComputedFrames::settings_of(const FrameView& view) const {
  TransformSettings settings = options_.settings;
  settings.layout = MosaicLayout(view.layout);
  settings.origin = view.origin;
  if (view.bit_depth) {
    settings.depth.bit_depth = view.bit_depth;
  }
  settings.calibration = options_.calibrations[view.calibration].grey;
  return settings;
}

std::optional<ColourSettings> ComputedFrames::colour_of(const FrameView& view) const {
  std::optional<ColourSettings> colour = options_.colour;
  if (colour) {
    colour->calibrations = options_.calibrations[view.calibration].colour;
  }
  return colour;
}

std::shared_ptr<const RawFrame> ComputedFrames::read(std::size_t source, std::uint64_t frame) {
  const std::string name = name_of_read(source, frame);
  std::shared_ptr<std::mutex> turn;
  {
    const std::lock_guard<std::mutex> lock(reading_);
    std::weak_ptr<std::mutex>& known = being_read_[name];
    turn = known.lock();
    if (!turn) {
      known = turn = std::make_shared<std::mutex>();
    }
  }
  const std::lock_guard<std::mutex> lock(*turn);
  std::shared_ptr<const RawFrame> kept = kept_.find<RawFrame>(name);
  if (!kept) {
    kept = std::make_shared<const RawFrame>(provider_.read(source, frame));
    kept_.add(name, kept, kept->pixels.size() * sizeof(std::uint16_t));
  }
  const std::lock_guard<std::mutex> ended(reading_);
  being_read_.erase(name);
  return kept;
}

std::optional<ComputedFrames::Images> ComputedFrames::find(const FrameView& view, const std::set<Output>& outputs,
                                                           bool with_frame) {
  const auto facts = kept_.find<FrameFacts>("facts of " + name_of_frame(view));
  if (!facts) {
    return std::nullopt;
  }
  Images images;
  images.facts = *facts;
  for (const Output output : outputs) {
    images.outputs[output] = kept_.find<KeptImage>(name_of_output(view, output));
    if (!images.outputs[output]) {
      return std::nullopt;
    }
  }
  if (with_frame) {
    images.frame = kept_.find<KeptImage>(name_of_frame(view));
    if (!images.frame) {
      return std::nullopt;
    }
  }
  return images;
}

ComputedFrames::Images ComputedFrames::get(const FrameView& view, const std::set<Output>& outputs, bool with_frame) {
  if (std::optional<Images> kept = find(view, outputs, with_frame)) {
    return *std::move(kept);
  }
  const std::shared_ptr<const RawFrame> raw = read(view.source, view.frame);
  const std::lock_guard<std::mutex> lock(computing_);
  Images images;
  std::set<Output> missing;
  for (const Output output : outputs) {
    images.outputs[output] = kept_.find<KeptImage>(name_of_output(view, output));
    if (!images.outputs[output]) {
      missing.insert(output);
    }
  }
  const std::string frame_name = name_of_frame(view);
  images.frame = kept_.find<KeptImage>(frame_name);
  auto facts = kept_.find<FrameFacts>("facts of " + frame_name);
  if (!missing.empty() || !images.frame || !facts) {
    const TransformSettings settings = settings_of(view);
    SensorTransformer transformer(settings, colour_of(view), *libraries_[view.calibration], missing);
    transformer.frame() = *raw;
    const std::string name = provider_.name(view.source, view.frame);
    transformer.run(name);
    FrameTransformer& plane = transformer.plane(view.plane);
    if (!facts) {
      facts = std::make_shared<const FrameFacts>(FrameFacts{name, plane.frame().width, plane.frame().height,
                                                            plane.bit_depth(), plane.full_scale(), plane.counts(),
                                                            provider_.notes(name, transformer)});
      kept_.add("facts of " + frame_name, facts, sizeof(FrameFacts));
    }
    for (const Output output : missing) {
      images.outputs[output] = take(plane.outputs(), output);
      kept_.add(name_of_output(view, output), images.outputs[output], images.outputs[output]->bytes());
    }
    if (!images.frame) {
      auto image = std::make_shared<KeptImage>();
      image->width = plane.frame().width;
      image->height = plane.frame().height;
      image->values = std::move(plane.frame().pixels);
      images.frame = image;
      kept_.add(frame_name, images.frame, images.frame->bytes());
    }
  }
  images.facts = *facts;
  return images;
}

void ComputedFrames::with_region(const FrameView& view, const Region& region, const std::set<Output>& outputs,
                                 const std::function<void(const FrameTransformer&)>& use) {
  const std::shared_ptr<const RawFrame> raw = read(view.source, view.frame);
  const std::lock_guard<std::mutex> lock(computing_);
  TransformSettings settings = settings_of(view);
  settings.region = region;
  SensorTransformer transformer(settings, colour_of(view), *libraries_[view.calibration], outputs);
  transformer.frame() = *raw;
  transformer.run(provider_.name(view.source, view.frame));
  use(transformer.plane(view.plane));
}

}  // namespace nerova_zel
