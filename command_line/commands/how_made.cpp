#include "commands/how_made.h"

#include <algorithm>
#include <ctime>
#include <nlohmann/json.hpp>

#include "file_marks.h"
#include "file_texts.h"
#include "formatted.h"
#include "platform/files.h"

namespace nerova_zel {

namespace {

/** A text of one line in UTF-8: what is neither stands as "?". */
std::string printable(std::string text) {
  bool is_unicode = true;
  try {
    nlohmann::json(text).dump();
  } catch (const nlohmann::json::type_error&) {
    is_unicode = false;
  }
  std::replace_if(
      text.begin(), text.end(), [&](unsigned char c) { return c < ' ' || c == 127 || (c > 127 && !is_unicode); }, '?');
  return text;
}

std::string frame_options(const TransformRequest& request) {
  std::string text =
      formatted("layout %d, origin %d,%d", request.layout.angle_at(0, 0), request.origin.x, request.origin.y);
  text += colour_text(request.colour);
  if (request.region) {
    const Region& region = *request.region;
    text += formatted(", region %d,%d,%d,%d", region.x, region.y, region.size.width, region.size.height);
  }
  if (request.headerless) {
    const HeaderlessLayout& raw = *request.headerless;
    text +=
        formatted(", raw %dx%d %s", raw.size.width, raw.size.height, raw.format ? name_of(*raw.format) : "by length");
    text += formatted(", header %llu, stride %zu", static_cast<unsigned long long>(raw.header), raw.stride);
  }
  text += ", bit depth " + (request.depth.bit_depth ? std::to_string(*request.depth.bit_depth) : "by file");
  text += request.depth.left_aligned ? ", left-aligned" : "";
  text += ", output maximum " + std::to_string(request.output_maximum);
  text += request.power_headroom ? ", power headroom" : "";
  text += request.sampling == Sampling::superpixel ? ", superpixels"
          : request.sampling == Sampling::bilinear ? ", bilinear"
                                                   : "";
  return text + ", calibration " + (!request.calibration_mark.empty() ? request.calibration_mark : "none");
}

std::string picture_options(const SensorPictures::Style& style) {
  std::string text = formatted(", style %s, degree scale %g, power scale %g", name_of(style.azimuth), style.ends.degree,
                               style.ends.power);
  if (style.balance) {
    text += formatted(", white balance %g,%g,%g", style.balance->red, style.balance->green, style.balance->blue);
  }
  return text;
}

std::string description_of(const OutputDescription& output, const TransformRequest& request) {
  const std::string unit = output.unit;
  if (output.element == OutputElement::uint16) {
    const bool headroom = output.output == Output::power && request.power_headroom;
    return output.quantity + std::string("; 0 is ") + output.zero + formatted(" and %d is ", request.output_maximum) +
           (headroom ? "twice " : "") + output.maximum;
  }
  return output.quantity + (unit == "1" ? std::string() : ", in units of a " + unit);
}

/** Whether an array is older than its texts: a program that was killed between the two left texts of an earlier array.
 */
bool has_own_texts(const std::filesystem::path& path) {
  if (path.extension() != ".npy") {
    return true;
  }
  const auto texts = file_facts(texts_file_of_array(path));
  const auto array = file_facts(path);
  return texts && array && texts->changed >= array->changed;
}

std::tm utc_of(std::time_t seconds) {
  std::tm time{};
#if defined(_WIN32)
  gmtime_s(&time, &seconds);
#else
  gmtime_r(&seconds, &time);
#endif
  return time;
}

/** Of what colours a file is. */
std::string planes_text(const std::optional<ColourSettings>& colour, const OutputFile& file) {
  if (!colour) {
    return "";
  }
  if (file.plane != all_planes) {
    return std::string("colour ") + colour->name(static_cast<std::size_t>(file.plane)) + ": ";
  }
  std::string text = "colours ";
  for (std::size_t i = 0; i < colour->plane_count(); ++i) {
    text += (i == 0 ? "" : ", ") + std::string(colour->name(i));
  }
  return text + ", one after another: ";
}

}  // namespace

std::string source_text(const FrameTicket& ticket) {
  const std::string name = std::filesystem::u8path(ticket.name()).filename().u8string();
  const auto facts =
      ticket.input->is_standard_input() ? std::nullopt : file_facts(std::filesystem::u8path(ticket.input->path));
  if (!facts) {
    return printable(name);
  }
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(facts->changed);
  const std::tm time = utc_of(static_cast<std::time_t>(seconds.count()));
  char date[40] = "";
  std::strftime(date, sizeof(date), "%Y-%m-%d %H:%M:%S", &time);
  return printable(name) + formatted(", a file of %llu bytes of %s.%09lld UTC",
                                     static_cast<unsigned long long>(facts->size), date,
                                     static_cast<long long>((facts->changed - seconds).count()));
}

std::vector<TextEntry> how_made(const TransformRequest& request, const std::string& source, const OutputFile& file) {
  std::string options = frame_options(request);
  std::string description = "picture to look at";
  if (product_name(file).rfind("azimuth", 0) == 0) {
    description += "; hues are angles from the image's horizontal axis: red 0, green 60, blue 120 degrees";
  }
  if (const auto* output = std::get_if<Output>(&file.content)) {
    description = planes_text(request.colour, file) + description_of(describe(*output), request);
    if (file.channel >= 0) {
      description += formatted("; here S%d / P", file.channel + 1);
    }
  } else {
    options += picture_options(request.picture_style);
  }
  std::vector<TextEntry> texts = output_texts(product_name(file), description);
  texts.push_back({"Source", source});
  texts.push_back({"Options", options});
  return texts;
}

bool was_made_so(const std::filesystem::path& path, const std::vector<TextEntry>& texts) {
  if (!has_own_texts(path)) {
    return false;
  }
  const std::vector<TextEntry> found = read_texts(path);
  return std::all_of(texts.begin(), texts.end(),
                     [&](const TextEntry& entry) { return find_text(found, entry.key) == entry.text; });
}

std::string calibration_mark(const Bytes& file) {
  std::uint64_t sum = 0xCBF29CE484222325U;  // FNV-1a
  for (const unsigned char byte : file) {
    sum = (sum ^ byte) * 0x100000001B3U;
  }
  return formatted("%016llx", static_cast<unsigned long long>(sum));
}

}  // namespace nerova_zel
