#pragma once

#include "frames/mosaic_layout.h"
#include "frames/raw_frame.h"
#include "nerova_zel/imaging.h"
#include "nerova_zel/polarization_processor.hpp"
#include "processor/bands.h"

namespace nerova_zel {

/** Throws ArgumentError for any other angle than those that name a layout. */
MosaicLayout layout_of(std::int32_t degrees);

/** Throws ArgumentError where a member is out of its range, or the frame is NULL. */
Frame frame_of(const nv_imaging_frame* frame);

/** A copy of its pixels. */
RawFrame raw_frame_of(const nv_imaging_frame* frame);

/** Calls the processor library; throws ProcessorError. */
TransformCall transform_call(nv_polarization_processor* processor);

}  // namespace nerova_zel
