#include "file_texts.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "platform/files.h"

namespace nerova_zel {

namespace {

constexpr const char* software = "Software";
constexpr const char* description = "ImageDescription";
constexpr std::uint32_t most_bytes = 1U << 20U;  // a longer text is none of ours

/** A file, of which numbers and texts are read here and there; false where it ends too early. */
class Reader {
 public:
  Reader(const std::filesystem::path& path) : file_(native_path(path), std::ios::binary) {}

  bool bytes(std::size_t count, std::string& text) {
    text.resize(count);
    return static_cast<bool>(file_.read(text.data(), static_cast<std::streamsize>(count)));
  }

  bool number(std::size_t size, bool high_byte_first, std::uint32_t& value) {
    std::string text;
    if (!bytes(size, text)) {
      return false;
    }
    value = 0;
    for (std::size_t i = 0; i < size; ++i) {
      const std::size_t at = high_byte_first ? i : size - 1 - i;
      value = value << 8U | static_cast<unsigned char>(text[at]);
    }
    return true;
  }

  bool skip(std::uint32_t count) { return static_cast<bool>(file_.seekg(count, std::ios::cur)); }
  bool go_to(std::uint32_t offset) { return static_cast<bool>(file_.seekg(offset)); }
  std::uint32_t position() { return static_cast<std::uint32_t>(file_.tellg()); }

 private:
  std::ifstream file_;
};

/** A chunk tEXt "key 0 text", or iTXt "key 0 0 0 language 0 translated key 0 text" that is not compressed. */
void add_png_text(const std::string& type, const std::string& data, std::vector<TextEntry>& texts) {
  const std::size_t key_end = data.find('\0');
  std::size_t start = key_end;
  if (type == "iTXt" && key_end != std::string::npos && data.compare(key_end, 3, std::string(3, '\0')) == 0) {
    start = data.find('\0', key_end + 3);
    start = start == std::string::npos ? start : data.find('\0', start + 1);
  }
  if (start != std::string::npos) {
    texts.push_back({data.substr(0, key_end), data.substr(start + 1)});
  }
}

std::vector<TextEntry> read_png_texts(const std::filesystem::path& path) {
  Reader file(path);
  std::vector<TextEntry> texts;
  std::string type;
  std::string data;
  std::uint32_t length = 0;
  constexpr std::uint32_t checksum = 4;
  if (!file.bytes(8, data) || data.compare(0, 4, "\x89PNG") != 0) {
    return texts;
  }
  while (file.number(4, true, length) && file.bytes(4, type) && type != "IDAT" && length < 1U << 31U) {
    if ((type == "tEXt" || type == "iTXt") && length <= most_bytes) {
      if (!file.bytes(length, data)) {
        break;
      }
      add_png_text(type, data, texts);
      length = 0;
    }
    if (!file.skip(length + checksum)) {
      break;
    }
  }
  return texts;
}

/** The directory of the first page, of a file that is not a BigTIFF. */
std::vector<TextEntry> read_tiff_texts(const std::filesystem::path& path) {
  constexpr std::uint32_t ascii = 2;
  Reader file(path);
  std::vector<TextEntry> texts;
  std::string order;
  std::uint32_t value = 0;
  std::uint32_t entries = 0;
  if (!file.bytes(2, order) || (order != "II" && order != "MM")) {
    return texts;
  }
  const bool high_first = order == "MM";
  if (!file.number(2, high_first, value) || value != 42 || !file.number(4, high_first, value) || !file.go_to(value) ||
      !file.number(2, high_first, entries)) {
    return texts;
  }
  const std::uint32_t start = file.position();
  for (std::uint32_t i = 0; i < entries; ++i) {
    constexpr std::uint32_t entry_bytes = 12;
    std::uint32_t tag = 0;
    std::uint32_t type = 0;
    std::uint32_t count = 0;
    std::string text;
    if (!file.go_to(start + i * entry_bytes) || !file.number(2, high_first, tag) || !file.number(2, high_first, type) ||
        !file.number(4, high_first, count)) {
      break;
    }
    const char* const key = tag == 270 ? description : software;
    const bool wanted = (tag == 270 || tag == 305) && type == ascii && count <= most_bytes;
    if (!wanted || find_text(texts, key)) {
      continue;
    }
    const bool elsewhere = count > 4;
    if ((elsewhere && (!file.number(4, high_first, value) || !file.go_to(value))) || !file.bytes(count, text)) {
      break;
    }
    texts.push_back({key, text.substr(0, text.find('\0'))});
  }
  return texts;
}

std::vector<TextEntry> read_json_texts(const std::filesystem::path& path) {
  std::ifstream file(native_path(path), std::ios::binary);
  std::vector<TextEntry> texts;
  const nlohmann::ordered_json document = nlohmann::ordered_json::parse(file, nullptr, false);
  if (document.is_object()) {
    for (const auto& [key, value] : document.items()) {
      texts.push_back({key, value.is_string() ? value.get<std::string>() : value.dump()});
    }
  }
  return texts;
}

}  // namespace

std::optional<std::string> find_text(const std::vector<TextEntry>& texts, const std::string& key) {
  for (const TextEntry& entry : texts) {
    if (entry.key == key) {
      return entry.text;
    }
  }
  for (const TextEntry& entry : texts) {
    std::istringstream lines(entry.key == description ? entry.text : "");
    for (std::string line; std::getline(lines, line);) {
      if (line.rfind(key + ": ", 0) == 0) {
        return line.substr(key.size() + 2);
      }
    }
  }
  return std::nullopt;
}

TiffTags tiff_tags(const std::vector<TextEntry>& texts) {
  TiffTags tags;
  for (const TextEntry& entry : texts) {
    if (entry.key == software) {
      tags.software = entry.text;
    } else {
      tags.description += (tags.description.empty() ? "" : "\n") + entry.key + ": " + entry.text;
    }
  }
  return tags;
}

std::string texts_to_json(const std::vector<TextEntry>& texts) {
  nlohmann::ordered_json document = nlohmann::ordered_json::object();
  for (const TextEntry& entry : texts) {
    document[entry.key] = entry.text;
  }
  // File names need not be UTF-8.
  return document.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

std::filesystem::path texts_file_of_array(const std::filesystem::path& array) {
  std::filesystem::path texts = array;
  return texts += ".json";
}

std::vector<TextEntry> read_texts(const std::filesystem::path& path) {
  std::string extension = path.extension().u8string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  if (extension == ".png") {
    return read_png_texts(path);
  }
  if (extension == ".tif" || extension == ".tiff") {
    return read_tiff_texts(path);
  }
  if (extension == ".npy") {
    return read_json_texts(texts_file_of_array(path));
  }
  const bool is_beside_array = extension == ".json" && path.stem().extension() == ".npy";
  return is_beside_array ? read_json_texts(path) : std::vector<TextEntry>();
}

}  // namespace nerova_zel
