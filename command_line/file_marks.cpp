#include "file_marks.h"

#include "file_texts.h"

namespace nerova_zel {

namespace {

constexpr const char* software_key = "Software";
constexpr const char* output_key = "Output";
constexpr const char* program = "nerova-polarize";

}  // namespace

std::string software_text() { return std::string(program) + " " NEROVA_VERSION; }

std::vector<TextEntry> output_texts(const std::string& name, const std::string& description) {
  return {{software_key, software_text()}, {output_key, name}, {"Description", description}};
}

std::string output_in_file(const std::filesystem::path& path) {
  const std::vector<TextEntry> texts = read_texts(path);
  const bool is_ours = find_text(texts, software_key).value_or("").rfind(program, 0) == 0;
  return is_ours ? find_text(texts, output_key).value_or("") : "";
}

}  // namespace nerova_zel
