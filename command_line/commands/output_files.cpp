#include "commands/output_files.h"

#include <array>
#include <sstream>
#include <utility>

#include "batch/interruption.h"
#include "commands/sensor_pictures.h"
#include "failure.h"
#include "file_texts.h"
#include "npy_file.h"
#include "platform/files.h"
#include "png_file.h"
#include "tiff_file.h"
#include "usage_error.h"

namespace nerova_zel {

namespace {

constexpr std::array<std::pair<const char*, PictureKind>, 4> picture_names = {
    {{"sheet", PictureKind::sheet},
     {"azimuth-picture", PictureKind::azimuth_picture},
     {"azimuth-legend", PictureKind::azimuth_legend},
     {"power-picture", PictureKind::power_picture}}};

std::string ending_of(PictureKind kind, AzimuthStyle style) {
  const std::string azimuth = std::string("_azimuth_") + name_of(style);
  switch (kind) {
    case PictureKind::azimuth_picture:
      return azimuth + ".png";
    case PictureKind::azimuth_legend:
      return azimuth + "_legend.png";
    case PictureKind::power_picture:
      return "_power_colour.png";
    default:
      return "_sheet.png";
  }
}

const char* extension_of(FileFormat format) {
  switch (format) {
    case FileFormat::tiff:
      return ".tiff";
    case FileFormat::npy:
      return ".npy";
    default:
      return ".png";
  }
}

/** Adds what the name stands for; false if nothing does. */
bool add_product(const std::string& name, Products& products) {
  for (const OutputDescription& description : output_table) {
    if (name == description.name) {
      products.outputs.insert(description.output);
      return true;
    }
  }
  for (const auto& [known, kind] : picture_names) {
    if (name == known) {
      products.pictures.insert(kind);
      return true;
    }
  }
  return false;
}

void add_all(Products& products) {
  for (const OutputDescription& description : output_table) {
    if (description.source == OutputSource::library) {
      products.outputs.insert(description.output);
    }
  }
  if (can_draw()) {
    for (const auto& [name, kind] : picture_names) {
      if (kind != PictureKind::power_picture) {
        products.pictures.insert(kind);
      }
    }
  }
}

std::string choice() {
  std::string list;
  const std::vector<std::string> names = product_names();
  for (std::size_t i = 0; i < names.size(); ++i) {
    list += (i == 0 ? "" : i + 1 < names.size() ? ", " : " and ") + names[i];
  }
  return "it takes all, or a list of " + list + ".";
}

std::size_t byte_count_of(const ImageView& image) { return static_cast<std::size_t>(image.height) * image.row_bytes(); }

/** At most four planes, which become the first index of an array of all. */
void write_array(FileSet& set, const std::filesystem::path& path, const std::vector<ImageView>& planes,
                 const std::vector<TextEntry>& texts) {
  const ImageView& image = planes.front();
  std::vector<std::size_t> shape = {static_cast<std::size_t>(image.height), static_cast<std::size_t>(image.width)};
  if (planes.size() > 1) {
    shape.insert(shape.begin(), planes.size());
  }
  if (image.channels > 1) {
    shape.push_back(static_cast<std::size_t>(image.channels));
  }
  const std::string header = npy_header(image.element, shape);
  const auto part = [&](std::size_t i) {
    return i < planes.size() ? ByteView{planes[i].data, byte_count_of(planes[i])} : ByteView{nullptr, 0};
  };
  set.write(path, {{header.data(), header.size()}, part(0), part(1), part(2), part(3)});
  const std::string json = texts_to_json(texts);
  set.write(texts_file_of_array(path), {{json.data(), json.size()}});
}

ImageView view_of(Output output, const OutputImages& images) {
  const OutputDescription& description = describe(output);
  const int channels = static_cast<int>(description.channels);
  if (description.element == OutputElement::float32) {
    return {Element::float32, images.width(), images.height(), channels, images.floats(output)};
  }
  return {Element::uint16, images.width(), images.height(), channels, images.values(output)};
}

std::vector<float> component(const OutputImages& images, int channel) {
  const std::size_t pixels = static_cast<std::size_t>(images.width()) * static_cast<std::size_t>(images.height());
  std::vector<float> values(pixels);
  for (std::size_t i = 0; i < pixels; ++i) {
    values[i] = images.stokes()[2 * i + static_cast<std::size_t>(channel)];
  }
  return values;
}

}  // namespace

std::set<Output> Products::needed_outputs() const {
  std::set<Output> needed = outputs;
  if (!pictures.empty()) {
    needed.merge(outputs_for_pictures());
  }
  return needed;
}

std::vector<std::string> product_names() {
  std::vector<std::string> names;
  names.reserve(output_table.size() + picture_names.size());
  for (const OutputDescription& description : output_table) {
    names.emplace_back(description.name);
  }
  for (const auto& [name, kind] : picture_names) {
    names.emplace_back(name);
  }
  return names;
}

Products parse_products(const std::string& text) {
  Products products;
  std::istringstream stream(text);
  std::string name;
  while (std::getline(stream, name, ',')) {
    if (name == "all") {
      add_all(products);
    } else if (!add_product(name, products)) {
      throw UsageError("--outputs knows no \"" + name + "\"; " + choice());
    }
  }
  if (products.outputs.empty() && products.pictures.empty()) {
    throw UsageError("--outputs is empty; " + choice());
  }
  if (!products.pictures.empty() && !can_draw()) {
    throw UsageError(
        "--outputs " + text +
        " asks for pictures to look at, and what draws them is not installed (on Debian: nerova-polarize-pictures).");
  }
  return products;
}

std::string product_name(const OutputFile& file) {
  if (const auto* output = std::get_if<Output>(&file.content)) {
    return describe(*output).name;
  }
  for (const auto& [name, kind] : picture_names) {
    if (kind == std::get<PictureKind>(file.content)) {
      return name;
    }
  }
  return "";
}

std::vector<OutputFile> output_files(const Products& products, FileFormat format, AzimuthStyle style) {
  std::vector<OutputFile> files;
  for (const Output output : products.outputs) {
    const OutputDescription& description = describe(output);
    const std::string name = std::string("_") + description.name;
    if (output == Output::stokes && format != FileFormat::npy) {
      // Viewers take one channel.
      files.push_back({output, name + "_s1.tiff", 0});
      files.push_back({output, name + "_s2.tiff", 1});
    } else if (description.element == OutputElement::float32 && format != FileFormat::npy) {
      files.push_back({output, name + ".tiff"});  // PNG has no floating-point numbers
    } else {
      files.push_back({output, name + extension_of(format)});
    }
  }
  for (const PictureKind kind : products.pictures) {
    files.push_back({kind, ending_of(kind, style)});
  }
  return files;
}

void refuse_existing(const std::filesystem::path& path, const std::string& remedy) {
  if (is_taken(path)) {
    throw Failure(path.u8string() + " is there already; " + remedy + ".");
  }
}

void commit_unless_interrupted(FileSet& files) {
  if (Interruption::is_requested()) {
    throw Failure("interrupted; nothing is written.");
  }
  files.commit();
}

Bytes encode_drawing(const Picture& picture, const std::vector<TextEntry>& texts) {
  return encode_png({Element::uint8, picture.width, picture.height, 3, picture.pixels.data()}, texts,
                    Compression::small);
}

void write_output_file(FileSet& set, const std::filesystem::path& path, const OutputFile& file,
                       const std::vector<TextEntry>& texts, const SensorTransformer& transformer,
                       SensorPictures& pictures) {
  if (std::holds_alternative<PictureKind>(file.content)) {
    set.write(path, encode_drawing(pictures.draw(file), texts));
    return;
  }
  const Output output = std::get<Output>(file.content);
  std::vector<ImageView> planes;
  for (std::size_t i = 0; i < transformer.plane_count(); ++i) {
    if (file.plane == all_planes || file.plane == static_cast<int>(i)) {
      planes.push_back(view_of(output, transformer.plane(i).outputs()));
    }
  }
  std::vector<float> single;
  if (file.channel >= 0) {
    single = component(transformer.plane(static_cast<std::size_t>(file.plane)).outputs(), file.channel);
    planes.front().channels = 1;
    planes.front().data = single.data();
  }
  const std::string extension = path.extension().u8string();
  if (extension == ".npy") {
    write_array(set, path, planes, texts);
  } else {
    const ImageView& image = planes.front();
    set.write(path, extension == ".png" ? encode_png(image, texts) : encode_tiff(image, tiff_tags(texts)));
  }
}

}  // namespace nerova_zel
