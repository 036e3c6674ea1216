#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "headerless_frame.h"

namespace nerova_zel {

/** A file of frames, or standard input. */
struct FrameInput {
  /** "-" for standard input. */
  std::string path;
  /** How many frames, a last one that is cut short included; unknown for standard input. */
  std::optional<std::uint64_t> frames = 1;
  /** What the names of its outputs begin with. */
  std::string stem;

  bool is_standard_input() const { return path == "-"; }
  /** Whether it is a stream, whose frames are told apart by numbers from 0. */
  bool is_numbered() const { return frames != std::uint64_t{1}; }

  /** What to call a frame when talking to the user: "run.raw" or "run.raw frame 12". */
  std::string frame_name(std::uint64_t number) const;
  /** What the names of a frame's outputs begin with: "run" or "run_000012". */
  std::string output_stem(std::uint64_t number) const;
};

/**
 * What the arguments name, in their order: files as they are, folders and patterns (* and ? in the last part of a path,
 * where no file has that very name) as the frames in them by name, "-" as standard input. A file that is named twice
 * counts once. A file that is missing or broken is an input all the same: its own turn will tell. `headerless` is set
 * when files have no header. Throws Failure.
 */
std::vector<FrameInput> find_inputs(const std::vector<std::string>& arguments,
                                    const std::optional<HeaderlessLayout>& headerless);

/**
 * Throws Failure if outputs of two inputs would have one name, or an output that of an input. `endings` are what the
 * names of outputs in `directory` end in ("_power.png").
 */
void check_output_names(const std::vector<FrameInput>& inputs, const std::string& directory,
                        const std::vector<std::string>& endings);

}  // namespace nerova_zel
