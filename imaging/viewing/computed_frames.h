#pragma once

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "processor/sensor_transformer.h"
#include "viewing/image_cut.h"
#include "viewing/kept_items.h"

namespace nerova_zel {

/** A calibration that frames can be looked at with. */
struct ViewedCalibration {
  std::string name;
  std::optional<CameraCalibration> grey;              ///< of a frame without colours
  std::optional<PerPlane<CameraCalibration>> colour;  ///< of one with
};

/** A frame, and how its images are computed. */
struct FrameView {
  std::size_t source = 0;
  std::uint64_t frame = 0;
  int layout = 90;
  Origin origin{};
  std::optional<int> bit_depth;
  std::size_t calibration = 0;
  /** Of a frame with colours; a plane is a frame of its own. */
  std::size_t plane = 0;
};

/** What is known of a frame that was computed. */
struct FrameFacts {
  std::string name;
  int width = 0;
  int height = 0;
  int bit_depth = 0;
  int full_scale = 0;
  PixelCounts counts;
  /** With colours that of the plane, which may lie on a sensor of half the size. */
  Origin origin{};
  std::vector<std::string> notes;
};

/** Where frames come from. Thread-safe. */
class FrameProvider {
 public:
  FrameProvider() = default;
  virtual ~FrameProvider() = default;
  FrameProvider(const FrameProvider&) = delete;
  FrameProvider& operator=(const FrameProvider&) = delete;

  /** Reads a frame; throws any exception, which passes through whoever asked. */
  virtual RawFrame read(std::size_t source, std::uint64_t frame) = 0;
  /**
   * Reads rows first_row to end_row - 1 only, where that is less work than the whole frame: then a frame of so many
   * rows, else nothing. Throws as read.
   */
  virtual std::optional<RawFrame> read_rows(std::size_t source, std::uint64_t frame, int first_row, int end_row) = 0;
  /** Another number when what read gives may have changed. */
  virtual std::uint64_t version(std::size_t source, std::uint64_t frame) = 0;
  /** What failures call it. */
  virtual std::string name(std::size_t source, std::uint64_t frame) const = 0;
  /** What is to be said of a frame that was just transformed. */
  virtual std::vector<std::string> notes(const std::string& name, const SensorTransformer& transformer) const = 0;
};

/** The images of frames for who looks at one after another in many ways: computed when asked for, and kept for a time.
 */
class ComputedFrames {
 public:
  struct Options {
    /** What a view does not say; without a region. */
    TransformSettings settings;
    std::optional<ColourSettings> colour;
    /** At least one. */
    std::vector<ViewedCalibration> calibrations;
    /** As for Library. */
    std::string library;
    /** Of frames and images that are kept. */
    std::size_t most_bytes = std::size_t{1} << 30U;
  };

  /** The provider must outlive it. Throws Failure. */
  ComputedFrames(Options options, FrameProvider& provider);

  const Options& options() const { return options_; }
  Library& library() { return libraries_.front()->first(); }

  struct Images {
    FrameFacts facts;
    /** The frame's own pixels, with the significant bits lowest. */
    std::shared_ptr<const KeptImage> frame;
    std::map<Output, std::shared_ptr<const KeptImage>> outputs;
  };

  /**
   * The frame as the view has it, with those outputs. Thread-safe; one frame is computed at a time. Throws what the
   * provider throws, and Failure.
   */
  Images get(const FrameView& view, const std::set<Output>& outputs);

  /** The frame's pixels as they were read. Thread-safe; throws what the provider throws. */
  std::shared_ptr<const RawFrame> read(std::size_t source, std::uint64_t frame);

  /**
   * A cut of each output, with the same bits: of images that are kept, else computed for the cut alone where that is
   * less work than the whole frame, and then not kept. `known` is what get gave for the view without outputs.
   * Thread-safe; throws as get.
   */
  std::map<Output, CutBytes> cut_outputs(const FrameView& view, const Images& known, const std::set<Output>& outputs,
                                         const Cut& cut);

  /** What belongs to one pixel. */
  struct Pixel {
    /** Of the 2 x 2 that begin there: top-left, top-right, bottom-left, bottom-right, mirrored at the edges. */
    std::array<std::uint16_t, 4> samples;
    float s0, s1, s2, angle;
    std::uint16_t dolp;
  };

  /**
   * One pixel, with the same bits, computed from as few rows as can be read: `size` is the frame's where that is known
   * before it is read. Nothing is kept. Thread-safe; throws as get, and Failure for a pixel beyond the frame.
   */
  Pixel pixel(const FrameView& view, int x, int y, const std::optional<FrameSize>& size);

  /** A transformer that has transformed the region of the frame, as if the camera had read out no more. Thread-safe;
   * throws what the provider throws, and Failure. */
  void with_region(const FrameView& view, const Region& region, const std::set<Output>& outputs,
                   const std::function<void(const FrameTransformer&)>& use);

 private:
  TransformSettings settings_of(const FrameView& view) const;
  std::optional<ColourSettings> colour_of(const FrameView& view) const;
  bool find(const FrameView& view, const std::string& frame_name, const std::set<Output>& outputs, Images& images);
  OutputImages compute_known(const FrameView& view, const Images& known, const std::set<Output>& outputs) const;
  std::map<Output, CutBytes> cut_strips(const FrameView& view, const Images& known, const std::set<Output>& outputs,
                                        const Cut& cut) const;
  OutputImages compute_rows(const FrameView& view, RawFrame& rows, int first_row, int count,
                            const std::set<Output>& outputs) const;

  const Options options_;
  FrameProvider& provider_;
  std::vector<std::unique_ptr<SensorLibraries>> libraries_;  ///< by calibration
  KeptItems kept_;
  std::mutex computing_;
  std::mutex reading_;
  std::map<std::string, std::weak_ptr<std::mutex>> being_read_;
};

}  // namespace nerova_zel
