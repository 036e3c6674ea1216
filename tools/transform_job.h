#pragma once

#include <string>

#include "frame_job.h"
#include "frame_transformer.h"
#include "transform_request.h"

namespace nerova_zel {

/** Writes the outputs of frames. */
class TransformJob : public FrameJob {
 public:
  /** Both are shared and must outlive it; the request's directory must exist. */
  TransformJob(const TransformRequest& request, const Library& library)
      : request_(request), transformer_(request, library, request.outputs) {}

  Bytes& bytes() override { return transformer_.bytes(); }

 private:
  FrameReport work(const FrameTicket& ticket) override;
  bool is_finished(const FrameTicket& ticket) const;
  void write(const FrameTicket& ticket);
  FrameReport describe(const std::string& name, const FrameTransformer::Timing& timing) const;

  const TransformRequest& request_;
  FrameTransformer transformer_;
};

}  // namespace nerova_zel
