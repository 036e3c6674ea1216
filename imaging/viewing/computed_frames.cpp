#include "viewing/computed_frames.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "failure.h"
#include "processor/bands.h"
#include "threads.h"

namespace nerova_zel {

namespace {

std::string joined(std::initializer_list<std::uint64_t> numbers) {
  std::string text;
  for (const std::uint64_t number : numbers) {
    text += ' ' + std::to_string(number);
  }
  return text;
}

std::string text_of(const Origin& origin) {
  return joined({static_cast<std::uint64_t>(origin.x), static_cast<std::uint64_t>(origin.y)});
}

/** What the frame's own pixels and the facts depend on. */
std::string name_of_frame(const FrameView& view, std::uint64_t version, bool has_colours) {
  const std::string name =
      "frame" + joined({view.source, view.frame, version, static_cast<std::uint64_t>(view.bit_depth.value_or(0))});
  // Which pixels are of a colour depends on the origin.
  return has_colours ? name + joined({view.plane}) + text_of(view.origin) : name;
}

std::string name_of_output(const FrameView& view, const std::string& frame_name, Output output) {
  return describe(output).name + frame_name + text_of(view.origin) +
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
  const std::string name = "read" + joined({source, frame, provider_.version(source, frame)});
  std::shared_ptr<std::mutex> turn;
  {
    const std::lock_guard<std::mutex> lock(reading_);
    std::weak_ptr<std::mutex>& known = being_read_[name];
    turn = known.lock();
    if (!turn) {
      known = turn = std::make_shared<std::mutex>();
    }
  }
  // Who asks for what is being read waits for it.
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

/** What is kept of it, the images that are not as NULL; whether there is all. */
bool ComputedFrames::find(const FrameView& view, const std::string& frame_name, const std::set<Output>& outputs,
                          Images& images) {
  const auto facts = kept_.find<FrameFacts>("facts of " + frame_name);
  images.frame = kept_.find<KeptImage>(frame_name);
  bool is_whole = facts && images.frame;
  if (facts) {
    images.facts = *facts;
  }
  for (const Output output : outputs) {
    images.outputs[output] = kept_.find<KeptImage>(name_of_output(view, frame_name, output));
    is_whole = is_whole && images.outputs[output];
  }
  return is_whole;
}

ComputedFrames::Images ComputedFrames::get(const FrameView& view, const std::set<Output>& outputs) {
  const std::string frame_name =
      name_of_frame(view, provider_.version(view.source, view.frame), options_.colour.has_value());
  Images images;
  if (find(view, frame_name, outputs, images)) {
    return images;
  }
  const std::shared_ptr<const RawFrame> raw = read(view.source, view.frame);
  const std::lock_guard<std::mutex> lock(computing_);
  if (find(view, frame_name, outputs, images)) {
    return images;  // computed for another request
  }
  std::set<Output> missing;
  for (const auto& [output, image] : images.outputs) {
    if (!image) {
      missing.insert(output);
    }
  }
  const auto keep = [&](OutputImages& computed) {
    for (const Output output : missing) {
      images.outputs[output] = take(computed, output);
      kept_.add(name_of_output(view, frame_name, output), images.outputs[output], images.outputs[output]->bytes());
    }
  };
  if (images.frame && !options_.colour) {
    OutputImages computed = compute_known(view, images, missing);
    keep(computed);
    return images;
  }
  const TransformSettings settings = settings_of(view);
  SensorTransformer transformer(settings, colour_of(view), *libraries_[view.calibration], missing);
  transformer.frame() = *raw;
  const std::string name = provider_.name(view.source, view.frame);
  transformer.run(name);
  FrameTransformer& plane = transformer.plane(view.plane);
  if (!images.frame) {
    images.facts = {name,
                    plane.frame().width,
                    plane.frame().height,
                    plane.bit_depth(),
                    plane.full_scale(),
                    plane.counts(),
                    plane.origin(),
                    provider_.notes(name, transformer)};
    kept_.add("facts of " + frame_name, std::make_shared<const FrameFacts>(images.facts), sizeof(FrameFacts));
    auto image = std::make_shared<KeptImage>();
    image->width = plane.frame().width;
    image->height = plane.frame().height;
    image->values = std::move(plane.frame().pixels);
    images.frame = image;
    kept_.add(frame_name, images.frame, images.frame->bytes());
  }
  keep(plane.outputs());
  return images;
}

/** What transform computes of a frame whose pixels are settled and checked already. */
OutputImages ComputedFrames::compute_known(const FrameView& view, const Images& known,
                                           const std::set<Output>& outputs) const {
  const TransformSettings settings = settings_of(view);
  const Library& library = libraries_[view.calibration]->of(0);
  const FrameFacts& facts = known.facts;
  std::vector<std::uint16_t> calibrated;
  if (settings.calibration) {
    check_bit_depth(*settings.calibration, facts.bit_depth, facts.name);
    calibrated.resize(known.frame->values.size());
    without_dark_level(known.frame->values.data(), {facts.width, facts.height},
                       {settings.layout, settings.origin, facts.bit_depth}, *settings.calibration, calibrated.data());
  }
  const Frame frame{settings.calibration ? calibrated : known.frame->values,
                    facts.width,
                    facts.height,
                    settings.origin.x,
                    settings.origin.y,
                    static_cast<Phase>(settings.layout.phase()),
                    facts.bit_depth};
  OutputImages images(outputs);
  images.allocate(facts.width, facts.height);
  const auto call = [&library](const Frame& part, const Outputs& wanted) { library.transform(part, wanted); };
  if (!outputs.empty()) {
    compute_images(call, library.calibration(), frame,
                   images.buffers(static_cast<std::uint16_t>(settings.output_maximum)), settings.threads);
  }
  return images;
}

/** Of rows whose significant bits are the lowest, which begin with `first_row`: the outputs of the first `count`. */
OutputImages ComputedFrames::compute_rows(const FrameView& view, RawFrame& rows, int first_row, int count,
                                          const std::set<Output>& outputs) const {
  const TransformSettings settings = settings_of(view);
  const Library& library = libraries_[view.calibration]->of(0);
  const Origin origin{settings.origin.x, settings.origin.y + first_row};
  if (settings.calibration) {
    check_bit_depth(*settings.calibration, rows.bit_depth, provider_.name(view.source, view.frame));
    without_dark_level(rows, {settings.layout, origin, rows.bit_depth}, *settings.calibration, rows.pixels);
  }
  const Frame frame{rows.pixels,   rows.width, rows.height,
                    origin.x,      origin.y,   static_cast<Phase>(settings.layout.phase()),
                    rows.bit_depth};
  OutputImages images(outputs);
  images.allocate(rows.width, rows.height);
  const auto call = [&library](const Frame& part, const Outputs& wanted) { library.transform(part, wanted); };
  compute_image_rows(call, library.calibration(), frame, 0, count,
                     images.buffers(static_cast<std::uint16_t>(settings.output_maximum)));
  return images;
}

namespace {

RawFrame rows_of(const std::vector<std::uint16_t>& pixels, int width, int bit_depth, int first_row, int end_row) {
  RawFrame rows;
  rows.width = width;
  rows.height = end_row - first_row;
  rows.bit_depth = bit_depth;
  const auto at = [&](int row) { return pixels.begin() + static_cast<std::ptrdiff_t>(row) * width; };
  rows.pixels.assign(at(first_row), at(end_row));
  return rows;
}

/** Makes rows such that they can be computed apart from the frame, see compute_image_rows. */
void settle_rows(int height, int& first_row, int& end_row) {
  first_row -= first_row % 2;
  end_row += end_row % 2;
  if (end_row + 2 > height) {
    end_row = height;
    first_row -= end_row - first_row < 2 ? 2 : 0;  // a single row is no frame
  }
}

}  // namespace

std::map<Output, CutBytes> ComputedFrames::cut_outputs(const FrameView& view, const Images& known,
                                                       const std::set<Output>& outputs, const Cut& cut) {
  const std::string frame_name =
      name_of_frame(view, provider_.version(view.source, view.frame), options_.colour.has_value());
  Images images;
  const bool is_kept = find(view, frame_name, outputs, images);
  // Beyond a quarter of the frame, the whole is soon wanted too.
  const bool is_small = cut.step > 1 || 4 * cut.region.size.height <= known.facts.height;
  if (!is_kept && is_small && !options_.colour) {
    const std::lock_guard<std::mutex> lock(computing_);
    return cut_strips(view, known, outputs, cut);
  }
  images = get(view, outputs);
  std::map<Output, CutBytes> cuts;
  for (const auto& [output, image] : images.outputs) {
    cuts[output] = cut_image(image, cut);
  }
  return cuts;
}

/** A few rows at a time, so that images stay in the caches and only the cut takes memory. */
std::map<Output, CutBytes> ComputedFrames::cut_strips(const FrameView& view, const Images& known,
                                                      const std::set<Output>& outputs, const Cut& cut) const {
  constexpr int rows_of_strip = 32;
  const FrameFacts& facts = known.facts;
  std::map<Output, std::shared_ptr<std::vector<unsigned char>>> cuts;
  const auto row_bytes = [&](Output output) {
    const OutputDescription& row = describe(output);
    return static_cast<std::size_t>(cut.width()) * row.channels *
           (row.element == OutputElement::float32 ? sizeof(float) : sizeof(std::uint16_t));
  };
  for (const Output output : outputs) {
    cuts[output] =
        std::make_shared<std::vector<unsigned char>>(row_bytes(output) * static_cast<std::size_t>(cut.height()));
  }
  const int rows_at_once = std::max(1, rows_of_strip / cut.step);
  const int strips = (cut.height() + rows_at_once - 1) / rows_at_once;
  const int threads =
      std::min(strips, bands_worth_a_thread(facts.width, cut.region.size.height, options_.settings.threads));
  on_threads(static_cast<std::size_t>(threads), [&](std::size_t thread) {
    for (int strip = static_cast<int>(thread); strip < strips; strip += threads) {
      const int first = strip * rows_at_once;
      const int count = std::min(rows_at_once, cut.height() - first);
      const Cut part{
          {cut.region.x, cut.region.y + cut.step * first, {cut.region.size.width, cut.step * (count - 1) + 1}},
          cut.step};
      int first_row = part.region.y;
      int end_row = part.region.y + part.region.size.height;
      settle_rows(facts.height, first_row, end_row);
      RawFrame rows =
          rows_of(known.frame->values, facts.width, facts.bit_depth, first_row, std::min(end_row + 2, facts.height));
      OutputImages computed = compute_rows(view, rows, first_row, end_row - first_row, outputs);
      Cut of_rows = part;
      of_rows.region.y -= first_row;
      for (const Output output : outputs) {
        const CutBytes bytes = cut_image(take(computed, output), of_rows);
        std::memcpy(cuts.at(output)->data() + row_bytes(output) * static_cast<std::size_t>(first), bytes.data,
                    bytes.size);
      }
    }
  });
  std::map<Output, CutBytes> result;
  for (const auto& [output, bytes] : cuts) {
    result[output] = {bytes->data(), bytes->size(), bytes};
  }
  return result;
}

ComputedFrames::Pixel ComputedFrames::pixel(const FrameView& view, int x, int y, const std::optional<FrameSize>& size) {
  static const std::set<Output> outputs = {Output::s0, Output::s1, Output::s2, Output::angle, Output::dolp};
  const std::string name = provider_.name(view.source, view.frame);
  const auto check = [&](const FrameSize& of_frame) {
    if (x >= of_frame.width || y >= of_frame.height) {
      throw Failure(name + " is " + std::to_string(of_frame.width) + " x " + std::to_string(of_frame.height) +
                    " pixels and has none at " + std::to_string(x) + "," + std::to_string(y) + ".");
    }
  };
  KeptImage frame;
  std::map<Output, std::shared_ptr<const KeptImage>> images;
  int first_row = y;
  if (options_.colour) {
    const Images whole = get(view, outputs);
    check({whole.facts.width, whole.facts.height});
    first_row = 0;
    frame = *whole.frame;
    images = whole.outputs;
  } else {
    int end_row = y + 1;
    std::optional<RawFrame> rows;
    if (size) {
      check(*size);
      settle_rows(size->height, first_row, end_row);
      rows = provider_.read_rows(view.source, view.frame, first_row, std::min(end_row + 2, size->height));
    }
    if (!rows) {
      const std::string read_name =
          "read" + joined({view.source, view.frame, provider_.version(view.source, view.frame)});
      std::shared_ptr<const RawFrame> whole = kept_.find<RawFrame>(read_name);
      if (!whole) {
        whole = std::make_shared<const RawFrame>(provider_.read(view.source, view.frame));
      }
      check({whole->width, whole->height});
      first_row = y;
      end_row = y + 1;
      settle_rows(whole->height, first_row, end_row);
      const int last = std::min(end_row + 2, whole->height);
      RawFrame part = rows_of(whole->pixels, whole->width, whole->bit_depth, first_row, last);
      part.storage_bits = whole->storage_bits;
      part.depth_is_stated = whole->depth_is_stated;
      part.scaled_from_bits = whole->scaled_from_bits;
      rows = std::move(part);
    }
    rows->bit_depth = settle_bit_depth(*rows, settings_of(view).depth, name);
    frame.width = rows->width;
    frame.height = rows->height;
    frame.values = rows->pixels;
    OutputImages computed = compute_rows(view, *rows, first_row, end_row - first_row, outputs);
    for (const Output output : outputs) {
      images[output] = take(computed, output);
    }
  }
  const int row = y - first_row;
  const std::size_t place =
      static_cast<std::size_t>(row) * static_cast<std::size_t>(frame.width) + static_cast<std::size_t>(x);
  Pixel pixel{};
  std::memcpy(pixel.samples.data(), cut_windows(frame, {{x, row, {1, 1}}, 1}).data, sizeof pixel.samples);
  pixel.s0 = images[Output::s0]->floats[place];
  pixel.s1 = images[Output::s1]->floats[place];
  pixel.s2 = images[Output::s2]->floats[place];
  pixel.angle = images[Output::angle]->floats[place];
  pixel.dolp = images[Output::dolp]->values[place];
  return pixel;
}

void ComputedFrames::with_region(const FrameView& view, const Region& region, const std::set<Output>& outputs,
                                 const std::function<void(const FrameTransformer&)>& use) {
  const Images images = get(view, {});
  RawFrame part = rows_of(images.frame->values, images.facts.width, images.facts.bit_depth, region.y,
                          region.y + region.size.height);
  crop(part, {region.x, 0, region.size}, images.facts.name);
  part.storage_bits = 16;
  TransformSettings settings = settings_of(view);
  const Origin& origin = options_.colour ? images.facts.origin : view.origin;
  settings.origin = {origin.x + region.x, origin.y + region.y};
  settings.depth = {};  // settled already
  settings.allow_overflow = true;
  if (const std::optional<ColourSettings> colour = colour_of(view)) {
    settings.calibration = colour->calibration(view.plane);
  }
  FrameTransformer transformer(settings, libraries_[view.calibration]->of(view.plane), outputs);
  transformer.frame() = std::move(part);
  transformer.run(images.facts.name);
  use(transformer);
}

}  // namespace nerova_zel
