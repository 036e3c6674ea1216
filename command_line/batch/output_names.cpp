#include "batch/output_names.h"

#include <filesystem>
#include <map>

#include "usage_error.h"

namespace nerova_zel {

namespace {

namespace fs = std::filesystem;

/** "run" of "run_000012"; empty for what is no output stem of a stream. */
std::string stream_of(const std::string& output_stem) {
  const std::size_t end = output_stem.find_last_not_of("0123456789");
  const bool numbered =
      end != std::string::npos && output_stem[end] == '_' && output_stem.size() - end > least_frame_digits;
  return numbered ? output_stem.substr(0, end) : std::string();
}

/** Whose outputs begin with what. */
class OutputStems {
 public:
  /** The other input that has a claim on the same names, if any. */
  const FrameInput* claim(const FrameInput& input) {
    const auto [place, is_new] = (input.is_numbered() ? streams_ : singles_).emplace(input.stem, &input);
    return is_new ? nullptr : place->second;
  }

  /** The input that has outputs which begin with `output_stem`, if any. */
  const FrameInput* owner(const std::string& output_stem) const {
    const auto single = singles_.find(output_stem);
    if (single != singles_.end()) {
      return single->second;
    }
    return stream_owner(output_stem);
  }

  const FrameInput* stream_owner(const std::string& output_stem) const {
    const auto stream = streams_.find(stream_of(output_stem));
    return stream == streams_.end() ? nullptr : stream->second;
  }

 private:
  std::map<std::string, const FrameInput*> singles_;
  std::map<std::string, const FrameInput*> streams_;
};

}  // namespace

void check_output_names(const std::vector<FrameInput>& inputs, const std::string& directory,
                        const std::vector<std::string>& endings) {
  OutputStems stems;
  const auto refuse = [](const FrameInput& one, const FrameInput& other) {
    throw UsageError("the outputs of " + one.name() + " and " + other.name() +
                     " would have the same names; transform them into different folders (--output).");
  };
  for (const FrameInput& input : inputs) {
    if (const FrameInput* other = stems.claim(input)) {
      refuse(*other, input);
    }
  }
  std::error_code error;
  const fs::path canonical_directory = fs::weakly_canonical(fs::u8path(directory), error);
  for (const FrameInput& input : inputs) {
    const FrameInput* stream = input.is_numbered() ? nullptr : stems.stream_owner(input.stem);
    if (stream != nullptr) {
      refuse(*stream, input);
    }
    const fs::path path = fs::weakly_canonical(fs::u8path(input.path), error);
    const std::string name = path.lexically_relative(canonical_directory).generic_u8string();
    if (input.is_standard_input() || name.rfind("..", 0) == 0) {
      continue;
    }
    for (const std::string& ending : endings) {
      if (name.size() <= ending.size() || name.compare(name.size() - ending.size(), ending.size(), ending) != 0) {
        continue;
      }
      if (const FrameInput* owner = stems.owner(name.substr(0, name.size() - ending.size()))) {
        throw UsageError("an output of " + owner->name() + " would overwrite the frame " + input.path +
                         "; choose another folder with --output.");
      }
    }
  }
}

}  // namespace nerova_zel
