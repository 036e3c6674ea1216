#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "frames/headerless_frame.h"
#include "picture_file.h"

namespace nerova_zel {

/** Digits of a frame's number in the names of its outputs, at least. */
constexpr std::size_t least_frame_digits = 6;

/** A file of frames, or standard input. */
struct FrameInput {
  /** "-" for standard input. */
  std::string path;
  /** How many frames, a last one that is cut short included; unknown for standard input. */
  std::optional<std::uint64_t> frames = 1;
  /** What the names of its outputs begin with, "run" or "below/run". */
  std::string stem;
  /** Which of them are wanted, by number. */
  FrameRange range;
  /** A file of several pages, or nothing. */
  std::shared_ptr<const PictureFile> pictures;

  bool is_standard_input() const { return path == "-"; }
  /** Whether it is a stream, whose frames are told apart by numbers from 0. */
  bool is_numbered() const { return frames != std::uint64_t{1}; }

  /** How many of its frames are wanted; unknown for standard input without an end. */
  std::optional<std::uint64_t> wanted_frames() const;

  /** What to call it when talking to the user. */
  std::string name() const;
  /** What to call a frame when talking to the user: "run.raw" or "run.raw frame 12". */
  std::string frame_name(std::uint64_t number) const;
  /** What the names of a frame's outputs begin with: "run" or "run_000012". */
  std::string output_stem(std::uint64_t number) const;
};

/**
 * What the arguments name, in their order: "-" is standard input, see expand_argument for the others. A file that is
 * named twice counts once. A file that is missing or broken is an input all the same: its own turn will tell.
 * `headerless` is set when files have no header; `recursive` takes the folders below a folder, too, whose names become
 * part of the stems. Throws Failure, also for a file that ends before `range` begins.
 */
std::vector<FrameInput> find_inputs(const std::vector<std::string>& arguments,
                                    const std::optional<HeaderlessLayout>& headerless, bool recursive,
                                    const FrameRange& range);

}  // namespace nerova_zel
