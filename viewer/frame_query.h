#pragma once

#include "query.h"
#include "viewer.h"

namespace nerova_zel {

/** What all requests about a frame are made of. */
class FrameQuery {
 public:
  /** Throws BadRequest, also for a source or frame that there is not. */
  FrameQuery(const Query& query, const ViewSettings& settings, ViewedFrames& frames);

  const FrameView& view() const { return view_; }
  const ViewedSource& source() const { return source_; }

  /** The region of the query, or the whole frame. Throws BadRequest for one that reaches beyond the frame. */
  static Region region(const Query& query, int width, int height);

 private:
  FrameView view_;
  ViewedSource source_;
};

/** The view that the page begins with. */
FrameView default_view(const ViewSettings& settings);

}  // namespace nerova_zel
