#pragma once

#include <mutex>
#include <vector>

#include "batch/frame_inputs.h"
#include "commands/frame_options.h"
#include "viewer.h"

namespace nerova_zel {

/** The files of a command line, to look at. Nothing of them is read before it is asked for. */
class ViewedInputs : public ViewedFrames {
 public:
  /** The request must outlive it. Throws as find_inputs does. */
  explicit ViewedInputs(const FrameRequest& request);

  std::vector<ViewedSource> sources() override;
  std::uint64_t revision() override;
  RawFrame read(std::size_t source, std::uint64_t frame) override;
  std::string name(std::size_t source, std::uint64_t frame) const override;
  std::vector<std::string> notes(const std::string& name, const SensorTransformer& transformer) const override;
  std::string describe_failure() const override;

 private:
  const FrameRequest& request_;
  mutable std::mutex mutex_;
  std::vector<FrameInput> inputs_;
};

}  // namespace nerova_zel
