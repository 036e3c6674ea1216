#include "c_interface/frame_of.h"

#include "c_interface/guarded_call.h"

namespace nerova_zel {

MosaicLayout layout_of(std::int32_t degrees) {
  require(degrees == 0 || degrees == 45 || degrees == 90 || degrees == 135, "the layout must be 0, 45, 90 or 135");
  return MosaicLayout(degrees);
}

Frame frame_of(const nv_imaging_frame* frame) {
  require(frame != nullptr && frame->pixels != nullptr, "there is no frame");
  require(frame->width >= 2 && frame->height >= 2, "a frame must be at least 2 x 2 pixels");
  require(frame->origin_x >= 0 && frame->origin_y >= 0, "the origin must be 0 or more");
  require(frame->bit_depth >= 1 && frame->bit_depth <= 16, "the bit depth must be 1 to 16");
  Frame result;
  result.pixels = frame->pixels;
  result.width = frame->width;
  result.height = frame->height;
  result.origin_x = frame->origin_x;
  result.origin_y = frame->origin_y;
  result.phase = static_cast<Phase>(layout_of(frame->layout).phase());
  result.bit_depth = frame->bit_depth;
  return result;
}

RawFrame raw_frame_of(const nv_imaging_frame* frame) {
  frame_of(frame);
  const std::size_t count = static_cast<std::size_t>(frame->width) * static_cast<std::size_t>(frame->height);
  return {frame->width, frame->height, frame->bit_depth, 16, {frame->pixels, frame->pixels + count}};
}

TransformCall transform_call(nv_polarization_processor* processor) {
  return [processor](const Frame& frame, const Outputs& outputs) {
    const std::int32_t code = nv_polarization_processor_transform(
        processor, static_cast<std::int32_t>(frame.phase), frame.pixels.data(), frame.origin_x, frame.origin_y,
        frame.width, frame.height, frame.bit_depth, outputs.output_maximum, outputs.normalized_stokes.data(),
        outputs.total_power.data(), outputs.horizontal_vertical.data(), outputs.diagonal.data(), outputs.azimuth.data(),
        outputs.degree_of_linear_polarization.data());
    if (code != NV_POLARIZATION_PROCESSOR_SUCCESS) {
      throw ProcessorError(code);
    }
  };
}

}  // namespace nerova_zel
