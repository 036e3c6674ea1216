#include "commands/recorded_frames.h"

#include <filesystem>

#include "failure.h"
#include "frame_files.h"
#include "input_bytes.h"
#include "messages.h"
#include "platform/files.h"

namespace nerova_zel {

namespace {

namespace fs = std::filesystem;

std::string description_of(const std::string& file) { return file + recording_ending; }

bool is_recording(const std::string& file) {
  const auto facts = lower_case_extension(file) == ".raw" ? file_facts(fs::u8path(description_of(file))) : std::nullopt;
  return facts && facts->is_file;
}

Recording read_recording(const std::string& file) {
  const Bytes bytes = read_file(description_of(file), "the description of a recording");
  Recording recording = parse_recording({bytes.begin(), bytes.end()}, description_of(file));
  const std::size_t pixels =
      static_cast<std::size_t>(recording.size.width) * static_cast<std::size_t>(recording.size.height);
  const std::uint64_t described = recording.frames * byte_count(recording.format, pixels);
  const std::optional<FileFacts> facts = file_facts(fs::u8path(file));
  if (facts && facts->size != described) {
    note(file + " has " + std::to_string(facts->size) + " bytes; the frames that its description counts take " +
         std::to_string(described) + ".");
  }
  return recording;
}

bool are_alike(const Recording& a, const Recording& b) {
  return a.format == b.format && a.size.width == b.size.width && a.size.height == b.size.height &&
         a.origin.x == b.origin.x && a.origin.y == b.origin.y && a.layout.phase() == b.layout.phase() &&
         a.colour == b.colour;
}

}  // namespace

std::optional<Recording> find_recording(const std::vector<std::string>& files) {
  std::optional<Recording> first;
  const std::string* other = nullptr;
  for (const std::string& file : files) {
    if (!is_recording(file)) {
      other = &file;
      continue;
    }
    const Recording recording = read_recording(file);
    if (first && !are_alike(*first, recording)) {
      throw Failure(file + " is a recording of another pixel format, size, origin or layout than " + files.front() +
                    "; one batch has frames of one kind.");
    }
    first = recording;
  }
  if (first && other != nullptr) {
    throw Failure(*other +
                  " is no recording with a description beside it, as others are that were named; one batch has "
                  "frames of one kind.");
  }
  return first;
}

}  // namespace nerova_zel
