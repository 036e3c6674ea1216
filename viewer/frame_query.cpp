#include "frame_query.h"

#include <algorithm>

namespace nerova_zel {

namespace {

constexpr std::int64_t farthest_origin = 1'000'000;
constexpr std::int64_t largest_side = std::int64_t{1} << 28;

}  // namespace

FrameView default_view(const ViewSettings& settings) {
  FrameView view;
  view.layout = settings.frames.settings.layout.angle_at(0, 0);
  view.origin = settings.frames.settings.origin;
  view.calibration = settings.calibration;
  return view;
}

FrameQuery::FrameQuery(const Query& query, const ViewSettings& settings, ViewedFrames& frames)
    : view_(default_view(settings)) {
  const std::vector<ViewedSource> sources = frames.sources();
  const auto last_of = [](std::size_t count) { return static_cast<std::int64_t>(count) - 1; };
  view_.source = static_cast<std::size_t>(query.number("source", 0, last_of(sources.size())).value_or(0));
  source_ = sources[view_.source];
  const auto first = static_cast<std::int64_t>(source_.first);
  const std::int64_t end = first + static_cast<std::int64_t>(source_.frames);
  if (end == first) {
    throw BadRequest(source_.name + " has no frame yet.");
  }
  view_.frame = static_cast<std::uint64_t>(query.number("frame", first, end - 1).value_or(first));
  if (const auto layout = query.number("layout", 0, 135)) {
    if (std::find(mosaic_layouts.begin(), mosaic_layouts.end(), *layout) == mosaic_layouts.end()) {
      throw BadRequest("layout is 0, 45, 90 or 135.");
    }
    view_.layout = static_cast<int>(*layout);
  }
  if (const auto origin = query.numbers("origin", 2, 0, farthest_origin)) {
    view_.origin = {static_cast<int>((*origin)[0]), static_cast<int>((*origin)[1])};
  }
  if (const auto depth = query.number("bit_depth", 0, 16).value_or(0); depth > 0) {
    view_.bit_depth = static_cast<int>(depth);
  }
  view_.calibration =
      static_cast<std::size_t>(query.number("calibration", 0, last_of(settings.frames.calibrations.size()))
                                   .value_or(static_cast<std::int64_t>(view_.calibration)));
  const std::size_t planes = settings.frames.colour ? settings.frames.colour->plane_count() : 1;
  view_.plane = static_cast<std::size_t>(query.number("plane", 0, last_of(planes)).value_or(0));
}

Region FrameQuery::region(const Query& query, int width, int height) {
  const auto numbers = query.numbers("region", 4, 0, largest_side);
  if (!numbers) {
    return {0, 0, {width, height}};
  }
  const auto& [x, y, w, h] = std::tie((*numbers)[0], (*numbers)[1], (*numbers)[2], (*numbers)[3]);
  if (w < 1 || h < 1 || x + w > width || y + h > height) {
    throw BadRequest("The region is not within the frame of " + std::to_string(width) + " x " + std::to_string(height) +
                     " pixels.");
  }
  return {static_cast<int>(x), static_cast<int>(y), {static_cast<int>(w), static_cast<int>(h)}};
}

}  // namespace nerova_zel
